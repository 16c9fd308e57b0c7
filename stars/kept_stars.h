// SPDX-License-Identifier: BSD-3-Clause

// Walks the stars of an input and hands on those that the luminance threshold keeps.
//
// Ownership: input and parameters are borrowed; records belong to this object or the input.
// Errors:    StarsLost when the next record is lost; the input stays where it was.
// Threads:   one walk belongs to one thread.
#pragma once

#include "stars/record_reader.h"
#include "stars/render_data.h"

namespace velmora {

class KeptStars {
public:
    // REQUIRES: the input's header has been taken, or is before the first next().
    KeptStars(StarInput& input, const StarRendererData& data);

    // Whether as many stars are done as the input has.
    bool at_end() const { return next_star >= input.count; }

    // Takes the next record, kept or not, valid until the next call. It counts as done by done()
    // only: a star whose drawing throws is made up for by one more. REQUIRES: !at_end().
    const star& next();
    void done() { next_star++; }

    // Whether the threshold keeps a star, by its flux in the file, which is then counted. A NaN is
    // kept.
    bool keep(const star& s) {
        const bool kept = !(data.lum_threshold > double(s.flux));
        records_kept += kept;
        return kept;
    }

    // Copies kept records to block[len], block[len + 1], …, until the block has `room` or the input
    // is at its end. `len` counts those copied before an exception, too.
    void fill(star* block, int& len, int room);

    u64 read() const { return records_read; } // taken from the input
    u64 kept() const { return records_kept; } // by the threshold

private:
    StarInput& input;
    const StarRendererData& data;
    RecordReader reader;
    u32 next_star = 1; // record 0 is the header
    u64 records_read = 0, records_kept = 0;
};

} // namespace velmora
