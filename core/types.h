// SPDX-License-Identifier: BSD-3-Clause

// Integer types of fixed width and of the machine's word size, used by every core header.
#pragma once

#include <cstdint>

typedef std::int32_t s32;
typedef std::uint32_t u32;
typedef std::int64_t s64;
typedef std::uint64_t u64;

// The machine word: wide enough for a size in memory or a pointer difference.
typedef long sword;
typedef unsigned long uword;

static_assert(sizeof(sword) == sizeof(void*) && sizeof(uword) == sizeof(void*),
              "the machine word holds a pointer");
