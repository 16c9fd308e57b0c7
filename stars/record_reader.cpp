// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "stars"

#include "stars/record_reader.h"

#include <algorithm>
#include <typeinfo>

namespace velmora {

// Records that share the cost of a system call: 512 KiB of them, which the nearer caches hold.
static const u32 block_size = 16384;

// Derived classes may hand out other records than the mapping's, so the type must be exact.
static MMAPStarFile* mapped_file(StarInput& input) {
    return typeid(input) == typeid(MMAPStarFile) ? static_cast<MMAPStarFile*>(&input) : nullptr;
}

RecordReader::RecordReader(StarInput& input)
    : input(input), file(mapped_file(input)), room(file ? std::min(input.count, block_size) : 0),
      block(new star[room]) {}

RecordReader::Records RecordReader::next(u32 most, u32 left) {
    if (!file)
        return {input.next(), 1};
    if (file->cursor < copied_from || file->cursor >= copied_from + copied)
        copy_block(left);
    const u32 at = u32(file->cursor - copied_from);
    const u32 count = std::min(most, copied - at);
    file->cursor += count;
    return {block.get() + at, count};
}

void RecordReader::give_back(u32 n) {
    if (file)
        file->cursor -= n;
}

// Copies the next records. Those before a lost page are still handed out.
void RecordReader::copy_block(u32 left) {
    const uword wanted = std::min(left, room);
    copied_from = file->cursor;
    copied = 0;
    copied =
        u32(OSAPI::copy_can_fail(block.get(), copied_from, wanted * sizeof(star)) / sizeof(star));
    if (copied == 0)
        throw StarsLost(__PRETTY_FUNCTION__, __LINE__);
}

} // namespace velmora
