// SPDX-License-Identifier: BSD-3-Clause
#include "stars/shutter.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(Shutter, SamplesTheCameraOncePerSegmentEnd) {
    static const struct {
        int segments, samples;
    } table[] = {{-7, 1},    {-1, 1},          {0, 1},      {1, 2},          {3, 4},
                 {100, 101}, {100000, 100001}, {100001, 1}, {2147483646, 1}, {2147483647, 1}};
    for (const auto& row : table)
        EXPECT_EQ(camera_samples(row.segments), row.samples) << row.segments;
}

TEST(Shutter, SpreadsTheSamplesOverTheShutter) {
    // frame + n * shutter / segments + offset
    static const struct {
        double frame;
        int n, segments;
        double shutter, offset, time;
    } table[] = {
        {12, 0, 1, 0.5, 0, 12},      {12, 1, 1, 0.5, 0, 12.5},       {12, 0, 3, 0.75, -0.25, 11.75},
        {12, 1, 3, 0.75, -0.25, 12}, {12, 2, 3, 0.75, -0.25, 12.25}, {12, 3, 3, 0.75, -0.25, 12.5},
        {1, 0, 3, 0.75, 8, 9},       {1, 3, 3, -1.5, 0, -0.5},
    };
    for (const auto& row : table)
        EXPECT_EQ(sample_time(row.frame, row.n, row.segments, row.shutter, row.offset), row.time)
            << row.n << " of " << row.segments;
}

TEST(Shutter, TakesTheTermsOfASampleTimeInTheirOrder) {
    int other_parts = 0, other_sums = 0; // where another grouping has other last bits
    for (double frame : {0.1, 1001.0})
        for (int segments : {3, 7, 10, 11})
            for (int n = 0; n <= segments; n++) {
                const double shutter = 0.7, offset = -0.35;
                const double part = double(n) * shutter / double(segments);
                const double begun = frame + part;
                const double time = sample_time(frame, n, segments, shutter, offset);
                EXPECT_EQ(time, begun + offset) << n << " of " << segments;
                other_parts += time != frame + n * (shutter / segments) + offset;
                other_sums += time != frame + (part + offset);
            }
    EXPECT_GT(other_parts, 0);
    EXPECT_GT(other_sums, 0);
}

TEST(Shutter, SamplesTheFrameItselfWithoutSegments) {
    for (int segments : {0, -1, -100})
        EXPECT_EQ(sample_time(24, 0, segments, 0.5, 0.25), 24) << "no offset, no shutter";
}
