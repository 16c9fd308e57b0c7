// SPDX-License-Identifier: BSD-3-Clause

// A mapped database that somebody cuts or replaces while it is open: no signal, and the loss is told.
#include "tests/message_of.h"
#include "tests/stars/kernels.h"
#include "tests/stars/render.h"

#include <memory>
#include <sys/time.h>
#include <unistd.h>

using namespace stars_test;
using velmora::SinceOpened;

namespace {

const int records_in_page = 4096 / int(sizeof(star));
const char* const lost = "star database file got shorter while it was read";

std::vector<star> scattered(int count) {
    std::vector<star> stars;
    for (int i = 0; i < count; i++)
        stars.push_back(make_star(60 + 60.0 * i / count, 40 * std::sin(i), 1, 200, 255, i % 256));
    return stars;
}

std::vector<velmora::KernelLevel> all_levels() {
    std::vector<velmora::KernelLevel> levels = fast_levels();
    levels.push_back(velmora::KernelLevel::plain);
    return levels;
}

// A database of `count` stars, open.
struct Open {
    const ScratchFolder folder;
    const std::string path;
    MMAPStarFile file;

    explicit Open(int count)
        : path(folder.write("sky", sky_bytes("VELMORA1", scattered(count)))), file(path.c_str()) {}

    void cut(off_t bytes) const { ASSERT_EQ(truncate(path.c_str(), bytes), 0); }

    off_t size() const { return off_t(file.mapping.size); }
};

// What drawing it says; the picture keeps what was drawn until then.
std::string drawn(StarInput& input, Picture& picture, bool star_by_star = false) {
    const StarRendererData data = plain_data(picture.fb.width);
    const Array<camera> cams = cameras({make_camera()});
    return message_without_place_of([&] {
        StarRenderer renderer(data, picture.fb, input, cams);
        bool drew = false;
        if (!star_by_star)
            renderer.render_all(drew);
        else
            while (renderer.render_star(drew)) {
            }
    });
}

} // namespace

TEST(LostRecords, AreToldOfByTheRenderer) {
    for (const velmora::KernelLevel level : all_levels()) {
        const WithKernels kernels(level);
        for (const bool star_by_star : {false, true}) {
            Open open(5000);
            open.cut(0);
            Picture picture(64, 64);
            EXPECT_EQ(drawn(open.file, picture, star_by_star), lost);
            EXPECT_TRUE(picture.is_black());
        }
    }
}

// The header was there; the rest goes as it is drawn.
TEST(LostRecords, AreDrawnUpToTheFirstLostPage) {
    for (const velmora::KernelLevel level : all_levels()) {
        const WithKernels kernels(level);
        for (const int pages : {1, 2, 39}) {
            for (const bool star_by_star : {false, true}) {
                Open open(5000);
                open.cut(4096 * pages);
                Picture picture(64, 64), expected(64, 64);
                EXPECT_EQ(drawn(open.file, picture, star_by_star), lost);
                std::vector<star> left = scattered(5000);
                left.resize(std::size_t(pages * records_in_page - 1));
                render(plain_data(64), left, expected);
                EXPECT_TRUE(same_bits(picture, expected)) << pages << " pages";
            }
        }
    }
}

// From one block of records to the next no star is lost or repeated.
TEST(LostRecords, AreNoneInABlockMoreOrLess) {
    for (const int stars : {16382, 16383, 16384, 16385, 32767, 32768, 40000}) {
        Open open(stars);
        Picture picture(32, 32), one_by_one(32, 32), expected(32, 32);
        EXPECT_EQ(drawn(open.file, picture), "(no StrXception)");
        EXPECT_EQ(open.file.cursor - static_cast<const star*>(open.file.mapping.data), stars + 1);
        open.file.reset();
        EXPECT_EQ(drawn(open.file, one_by_one, true), "(no StrXception)");
        render(plain_data(32), scattered(stars), expected);
        EXPECT_TRUE(same_bits(picture, expected)) << stars;
        EXPECT_TRUE(same_bits(one_by_one, expected)) << stars;
    }
}

TEST(LostRecords, AreToldOfByTheCheckOfTheMagic) {
    Open open(200);
    open.cut(0);
    EXPECT_THROW(open.file.is_valid(), velmora::StarsLost);
}

// Who derives a reader hands out records of its own.
TEST(LostRecords, AreNotLookedForInOtherReaders) {
    class Fewer : public MMAPStarFile {
    public:
        using MMAPStarFile::MMAPStarFile;
        const star* next() override {
            taken++;
            return MMAPStarFile::next();
        }
        int taken = 0;
    };
    const ScratchFolder folder;
    const std::string path = folder.write("sky", sky_bytes("VELMORA1", scattered(300)));
    Fewer input(path.c_str());
    Picture picture(16, 16);
    EXPECT_EQ(drawn(input, picture), "(no StrXception)");
    EXPECT_EQ(input.taken, 301);
}

// ---- what has become of the file ---------------------------------------------------------------

TEST(SinceOpened, IsUnchangedUntilSomethingHappens) {
    const Open open(50);
    EXPECT_EQ(open.file.since_opened(), SinceOpened::unchanged);
    std::filesystem::remove(open.path);
    EXPECT_EQ(open.file.since_opened(), SinceOpened::unchanged) << "the mapping keeps it";
}

TEST(SinceOpened, IsChangedAfterACutWithinTheLastPage) {
    const Open open(50);
    open.cut(open.size() - 32);
    EXPECT_EQ(open.file.since_opened(), SinceOpened::changed);
}

TEST(SinceOpened, IsChangedAfterBytesOfTheSameLength) {
    const Open open(50);
    const std::string bytes = open.folder.read("sky");
    open.folder.write("sky", bytes);
    const timeval times[2] = {{1, 0}, {1, 0}}; // some systems' clocks tick slowly
    ASSERT_EQ(utimes(open.path.c_str(), times), 0);
    EXPECT_EQ(open.file.since_opened(), SinceOpened::changed);
}

TEST(SinceOpened, IsReplacedWhenAnotherFileHasTheName) {
    const Open open(50);
    OSAPI::rename(open.folder.write("new", open.folder.read("sky")).c_str(), open.path.c_str());
    EXPECT_EQ(open.file.since_opened(), SinceOpened::replaced);
}
