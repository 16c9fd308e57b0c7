// SPDX-License-Identifier: BSD-3-Clause
#include "tests/message_of.h"
#include "tests/special_values.h"
#include "tests/stars/picture.h"
#include "tests/stars/sky.h"

#include <cstring>
#include <memory>
#include <unistd.h>

using namespace stars_test;
using namespace velmora_test::doubles;

namespace {

std::unique_ptr<StarInput> open_bytes(const ScratchFolder& folder, const std::string& bytes) {
    const std::string path = folder.write("sky", bytes);
    return std::unique_ptr<StarInput>(op_stars_file_input(path.c_str()));
}

// Draws everything that `input` holds into `picture`, as the node does.
bool render(StarInput& input, Picture& picture, bool threed = false) {
    StarRendererData data = plain_data(picture.fb.width);
    data.threed = threed;
    data.parallax = -20; // so that distances, if they count, move stars
    const Array<camera> cams = cameras({make_camera(turn_about_y(10))});
    bool drew = false;
    StarRenderer(data, picture.fb, input, cams).render_all(drew);
    input.reset();
    return drew;
}

int open_descriptors() {
    int n = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        n += !entry.path().empty();
    return n;
}

// Hands out two headers, one per version.
class TwoHeaders : public StarInput {
public:
    const star* next() override {
        return reinterpret_cast<const star*>(step++ == 0 ? &second[0] : &first[0]);
    }
    void reset() override { step = 0; }

private:
    int step = 0;
    alignas(star) char first[33] = "VELMORA1........................";
    alignas(star) char second[33] = "VELMORA2........................";
};

} // namespace

TEST(StarFile, HasItsFieldsAtTheirOffsets) {
    const unsigned char record[32] = {
        0,    0,    0,    0,    0, 0x80, 0x46, 0x40, // 0   ra 45
        0,    0,    0,    0,    0, 0,    0x24, 0xc0, // 8   dec -10
        0,    0,    0xc0, 0x3f,                      // 16  flux 1.5
        0x01, 0x02, 0xfe, 0x77,                      // 20  red, green, blue, reserved
        0,    0,    0,    0,    0, 0,    0xf4, 0x3f, // 24  distance 1.25
    };
    const ScratchFolder folder;
    const auto input =
        open_bytes(folder, header_bytes() + std::string(reinterpret_cast<const char*>(record), 32));
    input->next();
    const star* s = input->next();
    EXPECT_EQ(s->ra, 45);
    EXPECT_EQ(s->dec, -10);
    EXPECT_EQ(s->flux, 1.5f);
    EXPECT_EQ(s->red, 1);
    EXPECT_EQ(s->green, 2);
    EXPECT_EQ(s->blue, 254);
    EXPECT_EQ(s->distance, 1.25);
}

TEST(StarFile, KeepsCountAndVersionBehindTheTableOfOperations) {
    CountingInput input({});
    StarInput& base = input;
    const char* start = reinterpret_cast<const char*>(&base);
    EXPECT_EQ(reinterpret_cast<const char*>(&base.count) - start, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&base.version2) - start, 12);
    static_assert(sizeof(base.count) == 4 && sizeof(base.version2) == 1, "widths");
}

// The functions of the table: both destructors, then next and reset.
TEST(StarFile, HoldsItsOperationsInOrder) {
    class Told : public CountingInput {
    public:
        explicit Told(bool& gone) : CountingInput({star_ahead()}), gone(gone) {}
        ~Told() override { gone = true; }

    private:
        bool& gone;
    };
    bool gone = false;
    auto* counting = new Told(gone);
    StarInput* input = counting;
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(input), sizeof slots);
    typedef const star* (*Next)(StarInput*);
    typedef void (*Action)(StarInput*);
    const star* const header = reinterpret_cast<Next>(slots[2])(input);
    EXPECT_EQ(counting->taken, 1);
    EXPECT_EQ(reinterpret_cast<Next>(slots[2])(input), header + 1);
    reinterpret_cast<Action>(slots[3])(input);
    EXPECT_EQ(counting->resets, 1);
    EXPECT_EQ(input->next(), header);
    EXPECT_FALSE(gone);
    reinterpret_cast<Action>(slots[1])(input); // destroys and frees
    EXPECT_TRUE(gone);
}

TEST(StarFile, StartsWithoutRecordsAndInVersionOne) {
    const TwoHeaders input;
    EXPECT_EQ(input.count, 0u);
    EXPECT_EQ(input.version2, 0);
}

TEST(StarFile, CountsWholeRecordsHeaderIncluded) {
    static const struct {
        size_t bytes;
        u32 count;
    } table[] = {{32, 1}, {40, 1}, {63, 1}, {64, 2}, {65, 2}, {95, 2}, {96, 3}, {32 * 1000, 1000}};
    for (const auto& row : table) {
        const ScratchFolder folder;
        std::string bytes = header_bytes();
        bytes.resize(row.bytes, 'x');
        EXPECT_EQ(open_bytes(folder, bytes)->count, row.count) << row.bytes << " bytes";
    }
}

TEST(StarFile, WithAHeaderAloneDrawsNothing) {
    for (size_t bytes : {32, 40, 63}) {
        const ScratchFolder folder;
        std::string content = header_bytes();
        content.resize(bytes, '\x3f'); // as the start of a star these would be finite numbers
        const auto input = open_bytes(folder, content);
        Picture picture(32, 32);
        EXPECT_FALSE(render(*input, picture)) << bytes;
        EXPECT_TRUE(picture.is_black()) << bytes;
    }
}

TEST(StarFile, HandsOutRecordsInFileOrder) {
    const ScratchFolder folder;
    const auto input =
        open_bytes(folder, sky_bytes("VELMORA1", {make_star(1, 0, 1), make_star(2, 0, 1)}));
    ASSERT_TRUE(input->is_valid());
    EXPECT_EQ(input->next()->ra, 1);
    EXPECT_EQ(input->next()->ra, 2);
}

TEST(StarFile, ConsumesOneRecordToCheckTheMagic) {
    for (const char* magic : {"VELMORA1", "VELMORA2", "VELMORA3"}) {
        CountingInput input({make_star(7, 0, 1)}, magic);
        input.is_valid();
        EXPECT_EQ(input.taken, 1) << magic;
        EXPECT_EQ(input.next()->ra, 7) << magic;
    }
}

TEST(StarFile, TellsItsVersionByTheMagicAlone) {
    static const struct {
        const char* magic;
        bool valid;
        int version2;
    } table[] = {
        {"VELMORA1", true, 0},   {"VELMORA2", true, 1},  {"VELMORA3", false, 0},
        {"VELMORA0", false, 0},  {"velmora1", false, 0}, {"VELMORA\0", false, 0},
        {"XELMORA1", false, 0},  {"VELMORB2", false, 0}, {"VELMORA ", false, 0},
        {"\0ELMORA1", false, 0},
    };
    for (const auto& row : table) {
        const ScratchFolder folder;
        const auto input = open_bytes(folder, header_bytes(row.magic));
        EXPECT_EQ(input->version2, 0) << "before the check";
        EXPECT_EQ(input->is_valid(), row.valid) << row.magic;
        EXPECT_EQ(input->version2, row.version2) << row.magic;
    }
}

TEST(StarFile, NeverReadsTheReservedBytes) {
    const ScratchFolder folder;
    Picture zeros(32, 32), ones(32, 32);
    for (Picture* picture : {&zeros, &ones}) {
        const char fill = picture == &zeros ? '\0' : '\xff';
        std::string bytes = sky_bytes("VELMORA2", {make_star(80, 3, 1, 200, 100, 50, 2)});
        bytes.replace(8, 24, std::string(24, fill));
        bytes[32 + 23] = fill;
        EXPECT_TRUE(render(*open_bytes(folder, bytes), *picture, true));
    }
    EXPECT_TRUE(same_bits(zeros, ones));
}

TEST(StarFile, OnceInVersionTwoStaysThere) {
    TwoHeaders input;
    EXPECT_TRUE(input.is_valid());
    EXPECT_EQ(input.version2, 1);
    EXPECT_TRUE(input.is_valid()); // "VELMORA1" this time
    EXPECT_EQ(input.version2, 1);
    input.reset();
    EXPECT_EQ(input.version2, 1);
}

TEST(StarFile, GoesBackToTheHeader) {
    const ScratchFolder folder;
    const auto input = open_bytes(folder, sky_bytes("VELMORA1", {make_star(1, 0, 1)}));
    const star* header = input->next();
    const star* first = input->next();
    EXPECT_EQ(first, header + 1);
    input->reset();
    EXPECT_EQ(input->next(), header);
    EXPECT_EQ(input->next(), first);
}

TEST(StarFile, RendersTheSameBitsAfterReset) {
    const ScratchFolder folder;
    const auto input = open_bytes(
        folder, sky_bytes("VELMORA2", {make_star(80, 3, 1, 255, 200, 90, 3), make_star(83, 1, 2),
                                       make_star(81, 2, 0.5f, 3, 90, 200, 0.7)}));
    Picture first(40, 40), second(40, 40);
    EXPECT_TRUE(render(*input, first, true));
    EXPECT_TRUE(render(*input, second, true));
    EXPECT_TRUE(same_bits(first, second));
}

TEST(StarFile, OfVersionOneHasNoDistances) {
    for (bool threed : {false, true}) {
        const ScratchFolder folder;
        Picture without(40, 40), with(40, 40);
        EXPECT_TRUE(render(
            *open_bytes(folder, sky_bytes("VELMORA1", {make_star(80, 3, 1), make_star(83, 1, 2)})),
            without, threed));
        for (double distance : {0.5, 1e-300, -3.0, infinity, not_a_number}) {
            Picture picture(40, 40);
            const std::vector<star> stars = {make_star(80, 3, 1, 255, 255, 255, distance),
                                             make_star(83, 1, 2, 255, 255, 255, distance)};
            EXPECT_TRUE(render(*open_bytes(folder, sky_bytes("VELMORA1", stars)), picture, threed));
            EXPECT_TRUE(same_bits(without, picture)) << distance << (threed ? " in 3d" : "");
        }
    }
}

TEST(StarFile, ThatIsNotThereSaysSo) {
    const ScratchFolder folder;
    const std::string path = folder.file("missing");
    const int before = open_descriptors();
    const std::string message = message_of([&] { delete op_stars_file_input(path.c_str()); });
    const std::string start = "opening file \"" + path + "\": No such file or directory in <";
    EXPECT_EQ(message.substr(0, start.size()), start);
    EXPECT_EQ(open_descriptors(), before);
}

// A reader that waited for a writer would wait for ever.
TEST(StarFile, ThatIsNoRegularFileIsRefusedAtOnce) {
    const ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    OSAPI::make_named_pipe(pipe.c_str());
    const int before = open_descriptors();
    for (const std::string& path : {pipe, folder.folder("folder"), std::string("/dev/zero")}) {
        alarm(20);
        EXPECT_EQ(message_without_place_of([&] { delete op_stars_file_input(path.c_str()); }),
                  "star database file \"" + path + "\" is not a regular file");
        alarm(0);
    }
    EXPECT_EQ(open_descriptors(), before);
}

// Who writes to a pipe must not find a reader that goes away at once.
TEST(StarFile, ThatIsAPipeIsNotOpened) {
    const ScratchFolder folder;
    const std::string pipe = folder.file("pipe");
    OSAPI::make_named_pipe(pipe.c_str());
    const OSAPI::FileDescriptor reader(
        OSAPI::open(pipe.c_str(), OSAPI::OPEN_READ | OSAPI::OPEN_NOWAIT));
    const OSAPI::FileDescriptor writer(OSAPI::open(pipe.c_str(), OSAPI::OPEN_WRITE));
    OSAPI::write(writer.fd, "x", 1);
    EXPECT_THROW(delete op_stars_file_input(pipe.c_str()), StrXception);
    char byte = 0;
    EXPECT_EQ(OSAPI::read(reader.fd, &byte, 1), 1) << "nobody has taken it";
}

// Sparse files: no byte of them is on the disk.
TEST(StarFile, OfMoreRecordsThanItCanCountIsRefused) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", header_bytes());
    const off_t most = off_t(0xffffffff) * 32;
    ASSERT_EQ(truncate(path.c_str(), most + 31), 0);
    const std::unique_ptr<StarInput> input(op_stars_file_input(path.c_str()));
    EXPECT_EQ(input->count, 0xffffffffu);
    for (const off_t more : {off_t(1), off_t(2), off_t(0x100000000)}) {
        ASSERT_EQ(truncate(path.c_str(), most + 32 * more), 0);
        EXPECT_EQ(message_without_place_of([&] { delete op_stars_file_input(path.c_str()); }),
                  "star database file \"" + path + "\" has " +
                      std::to_string(0xffffffff + u64(more)) +
                      " records, and at most 4294967295 can be read");
    }
}

TEST(StarFile, ShorterThanItsMagicIsRefused) {
    const ScratchFolder folder;
    const int before = open_descriptors();
    for (size_t bytes = 0; bytes < 8; bytes++) {
        const std::string path = folder.write("short", std::string("VELMORA1").substr(0, bytes));
        EXPECT_THROW(delete op_stars_file_input(path.c_str()), StrXception) << bytes;
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(StarFile, ThatEndsWithinItsHeaderHasNoRecords) {
    const ScratchFolder folder;
    for (size_t bytes : {8, 9, 31}) {
        const auto input = open_bytes(folder, header_bytes().substr(0, bytes));
        EXPECT_EQ(input->count, 0u);
        Picture picture(8, 8);
        EXPECT_FALSE(render(*input, picture));
        EXPECT_TRUE(picture.is_black());
    }
}

TEST(StarFile, IsNotLookedAtWhenOpened) {
    const ScratchFolder folder;
    const auto input = open_bytes(folder, std::string(64, 'z'));
    EXPECT_EQ(input->count, 2u);
    EXPECT_FALSE(input->is_valid());
}

TEST(StarFile, ClosesWhatItOpened) {
    const ScratchFolder folder;
    const std::string path = folder.write("sky", header_bytes());
    const int before = open_descriptors();
    for (int i = 0; i < 10; i++)
        delete op_stars_file_input(path.c_str());
    EXPECT_EQ(open_descriptors(), before);
}
