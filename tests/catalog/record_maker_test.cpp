// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/record_maker.h"

#include <gtest/gtest.h>
#include <optional>

namespace velmora {

TEST(Distance, IsAThousandOverTheParallax) {
    EXPECT_EQ(distance_of_parallax(100, 1), 10);
    EXPECT_EQ(distance_of_parallax(0.5, 0.01), 2000);
    EXPECT_EQ(distance_of_parallax(100, std::nullopt), 10);
}

TEST(Distance, IsUnknownWithoutAGoodParallax) {
    EXPECT_EQ(distance_of_parallax(std::nullopt, std::nullopt), 0);
    EXPECT_EQ(distance_of_parallax(std::nullopt, 1), 0);
    EXPECT_EQ(distance_of_parallax(0, 0), 0);
    EXPECT_EQ(distance_of_parallax(-3, 0.1), 0);
    EXPECT_EQ(distance_of_parallax(1e-320, 0), 0); // 1000 / 1e-320 is infinite
}

TEST(Distance, EndsAtAFifthOfError) {
    EXPECT_EQ(distance_of_parallax(16, 3.125), 62.5);
    EXPECT_EQ(distance_of_parallax(10, 2), 0);
    EXPECT_EQ(distance_of_parallax(10, 50), 0);
}

TEST(StarRecord, CarriesWhatTheTableSays) {
    const star record = record_of({1, 10.5, -20.25, 2.5, 0.65, 16.0, 0.5, "x"});
    EXPECT_EQ(record.ra, 10.5);
    EXPECT_EQ(record.dec, -20.25);
    EXPECT_EQ(record.flux, 0.1f);
    EXPECT_EQ(record.red, 255);
    EXPECT_NEAR(record.green, 241, 1);
    EXPECT_NEAR(record.blue, 234, 1);
    EXPECT_EQ(record.reserved, 0);
    EXPECT_EQ(record.distance, 62.5);
}

TEST(StarRecord, IsWhiteAndInfinitelyFarWithoutColorAndParallax) {
    const star record = record_of({1, 0, 0, 0, std::nullopt, std::nullopt, std::nullopt, ""});
    EXPECT_EQ(record.flux, 1.0f);
    EXPECT_EQ(record.red, 255);
    EXPECT_EQ(record.green, 255);
    EXPECT_EQ(record.blue, 255);
    EXPECT_EQ(record.distance, 0);
}

TEST(StarRecord, HasAFluxAtTheEndsOfTheMagnitudes) {
    EXPECT_EQ(record_of({1, 0, 0, 90, {}, {}, {}, ""}).flux, 1e-36f);
    EXPECT_EQ(record_of({1, 0, 0, -90, {}, {}, {}, ""}).flux, 1e36f);
}

} // namespace velmora
