// Takes records off a star input, as many at a time as it has side by side.
//
// Somebody may shorten a mapped file at any moment, and touching a page that is lost then ends the
// process. Records of a mapped file are therefore copied a block at a time by the system, which
// only fails. Looking first whether the pages are still there is faster and no help: they can go
// before the block has been walked (bench/README.md has the figures).
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

    // Gives the last `n` of those back, to be taken again.
    void give_back(u32 n);

private:
    StarInput& input;
    MMAPStarFile* const file; // the same when it is a mapped file, else null
    const u32 room;           // of the block, in records
    const std::unique_ptr<star[]> block;
    const star* copied_from = nullptr; // in the mapping
    u32 copied = 0;

    void copy_block(u32 left);
};

} // namespace velmora
