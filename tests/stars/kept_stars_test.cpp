// SPDX-License-Identifier: BSD-3-Clause
#include "stars/kept_stars.h"
#include "tests/special_values.h"
#include "tests/stars/sky.h"

using namespace stars_test;
using namespace velmora;
using namespace velmora_test::floats;

namespace {

std::vector<star> stars_of(const std::vector<float>& fluxes) {
    std::vector<star> stars;
    for (float flux : fluxes)
        stars.push_back(make_star(0, 0, flux));
    return stars;
}

// What fill() hands on of these fluxes, block by block.
std::vector<std::vector<float>> filled(const std::vector<float>& fluxes, double threshold,
                                       int room) {
    CountingInput input(stars_of(fluxes));
    input.is_valid();
    StarRendererData data = plain_data(10);
    data.lum_threshold = threshold;
    KeptStars kept(input, data);
    std::vector<std::vector<float>> blocks;
    while (!kept.at_end()) {
        std::vector<star> block(size_t(room), make_star(0, 0, -1));
        int len = 0;
        kept.fill(block.data(), len, room);
        blocks.emplace_back();
        for (int i = 0; i < len; i++)
            blocks.back().push_back(block[size_t(i)].flux);
    }
    EXPECT_EQ(kept.read(), fluxes.size());
    return blocks;
}

} // namespace

TEST(KeptStars, AreThoseNotBelowTheThresholdInFileOrder) {
    typedef std::vector<std::vector<float>> Blocks;
    EXPECT_EQ(filled({3, 1, 2, 0.5f, 2}, 2, 8), (Blocks{{3, 2, 2}}));
    EXPECT_EQ(filled({3, 1, 2, 0.5f, 2, 7}, 2, 2), (Blocks{{3, 2}, {2, 7}}));
    EXPECT_EQ(filled({1, 1, 1}, 2, 2), (Blocks{{}}));
    EXPECT_EQ(filled({}, 2, 2), (Blocks{}));
}

TEST(KeptStars, CompareTheFluxWithTheThresholdInDouble) {
    // The float below 0.1, and that above: 0.1 lies between them.
    const float above = 0.1f, below = std::nextafter(above, 0.0f);
    ASSERT_GT(double(above), 0.1);
    EXPECT_EQ(filled({below, above}, 0.1, 4).at(0), (std::vector<float>{above}));
    // Just above a float, which is then left out.
    EXPECT_EQ(filled({1, std::nextafter(1.0f, 2.0f)}, 1 + 1e-12, 4).at(0),
              (std::vector<float>{std::nextafter(1.0f, 2.0f)}));
}

TEST(KeptStars, KeepWhatIsNotANumberAndAllForAThresholdThatIsNot) {
    EXPECT_EQ(filled({1, not_a_number, 3}, 2, 4).at(0).size(), 2u);
    EXPECT_EQ(filled({1, -infinity, 3}, double(not_a_number), 4).at(0).size(), 3u);
    EXPECT_EQ(filled({1, 1e38f, infinity}, 1e300, 4).at(0), (std::vector<float>{infinity}));
}

TEST(KeptStars, AreCountedWhicheverWayTheyAreTaken) {
    CountingInput input(stars_of({3, 1, 2, 4, 0}));
    input.is_valid();
    StarRendererData data = plain_data(10);
    data.lum_threshold = 2;
    KeptStars kept(input, data);
    EXPECT_TRUE(kept.keep(kept.next()));
    kept.done();
    EXPECT_FALSE(kept.keep(kept.next()));
    kept.done();
    EXPECT_EQ(kept.read(), 2u);
    EXPECT_EQ(kept.kept(), 1u);
    star block[4];
    int len = 1; // after what the block has already
    kept.fill(block, len, 4);
    EXPECT_EQ(len, 3);
    EXPECT_EQ(block[1].flux, 2);
    EXPECT_EQ(block[2].flux, 4);
    EXPECT_EQ(kept.read(), 5u);
    EXPECT_EQ(kept.kept(), 3u);
    EXPECT_TRUE(kept.at_end());
}
