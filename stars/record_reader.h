// SPDX-License-Identifier: BSD-3-Clause

// Takes records from a star input, many at a time where it has them in memory.
//
// Another process may shorten a mapped file at any moment, and touching a lost page then ends this
// one. Records of a mapped file are therefore copied a block at a time by a system call, which fails
// instead. Checking first that the pages are there would be faster but is no protection: they can go
// before the block has been read (bench/README.md has the figures).
//
// Ownership: the input is borrowed; records belong to the reader or the input.
// Errors:    StarsLost when the next record is lost; the input stays where it was.
// Threads:   one reader belongs to one thread.
#pragma once

#include "stars/starfile.h"

#include <memory>

namespace velmora {

class RecordReader {
public:
    explicit RecordReader(StarInput& input);

    struct Records {
        const star* first;
        u32 count;
    };

    // Takes the next records, 1 to `most` of them; `left`, at least as many, is how many the input
    // still has. They stay valid until the next call.
    Records next(u32 most, u32 left);

    // Gives the last `n` of those back, to be taken again. REQUIRES: n is 0 unless next() gave more
    // than one.
    void give_back(u32 n);

private:
    StarInput& input;
    MMAPStarFile* const file; // the input if it is a mapped file, else null
    const u32 room;           // of the block, in records
    const std::unique_ptr<star[]> block;
    const star* copied_from = nullptr; // in the mapping
    u32 copied = 0;

    void copy_block(u32 left);
};

} // namespace velmora
