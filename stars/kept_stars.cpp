// SPDX-License-Identifier: BSD-3-Clause
#include "stars/kept_stars.h"

#include <cmath>

namespace velmora {

KeptStars::KeptStars(StarInput& input, const StarRendererData& data)
    : input(input), data(data), reader(input) {}

const star& KeptStars::next() {
    const star& s = *reader.next(1, input.count - next_star).first;
    records_read++;
    return s;
}

// The faintest flux that a threshold keeps, so that floats can be compared with floats. A NaN
// threshold keeps all, and so does the NaN that this gives for it.
static float faintest_kept(double threshold) {
    const float nearest = float(threshold);
    return double(nearest) < threshold ? nextafterf(nearest, INFINITY) : nearest;
}

// Copies the kept ones of `count` records until the block is full. Returns how many were looked at.
static u32 copy_kept(const star* records, u32 count, float faintest, star* block, int& len,
                     int room) {
    u32 i = 0;
    int n = len;
    for (; i < count && n < room; i++) {
        block[n] = records[i]; // overwritten by the next when it is not kept
        n += !(records[i].flux < faintest);
    }
    len = n;
    return i;
}

void KeptStars::fill(star* block, int& len, int room) {
    const float faintest = faintest_kept(data.lum_threshold);
    while (!at_end() && len < room) {
        const u32 left = input.count - next_star;
        const RecordReader::Records records = reader.next(left, left);
        const int before = len;
        const u32 taken = copy_kept(records.first, records.count, faintest, block, len, room);
        reader.give_back(records.count - taken);
        records_read += taken;
        records_kept += u64(len - before);
        next_star += taken;
    }
}

} // namespace velmora
