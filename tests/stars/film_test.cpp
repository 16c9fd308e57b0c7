// SPDX-License-Identifier: BSD-3-Clause
#include "stars/film.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(Film, HalvesTheAperturesIntoAFilmWindow) {
    StarRendererData data = {};
    set_film_window(data, 24.576, 18.672);
    EXPECT_EQ(data.left, -12.288);
    EXPECT_EQ(data.right, 12.288);
    EXPECT_EQ(data.bottom, -9.336);
    EXPECT_EQ(data.top, 9.336);
}

TEST(Film, GivesViewsWithoutCameraAWindowOfTheImagesShape) {
    static const struct {
        int width, height;
        double a;
    } table[] = {{1920, 1080, 1920.0 / 1080.0}, {100, 200, 0.5}, {64, 64, 1}};
    for (const auto& row : table) {
        StarRendererData data = {};
        set_default_film_window(data, row.width, row.height);
        EXPECT_EQ(data.left, -row.a);
        EXPECT_EQ(data.right, row.a);
        EXPECT_EQ(data.bottom, -1);
        EXPECT_EQ(data.top, 1);
    }
}

TEST(Film, ComparesTheImagesShapeWithTheFilmWindows) {
    static const struct {
        double left, right, bottom, top;
        int width, height;
        double stretch; // (width / height) / (|right - left| / |bottom - top|)
    } table[] = {
        {-2, 2, -1, 1, 64, 32, 1},
        {-1, 1, -1, 1, 64, 32, 2},
        {1, -1, -2, 2, 64, 64, 2},
        {-12.288, 12.288, -9.336, 9.336, 1920, 1080, (1920.0 / 1080.0) / (24.576 / 18.672)},
    };
    for (const auto& row : table) {
        StarRendererData data = {};
        data.left = row.left;
        data.right = row.right;
        data.bottom = row.bottom;
        data.top = row.top;
        EXPECT_EQ(film_stretch(data, row.width, row.height), row.stretch);
    }
}
