// SPDX-License-Identifier: BSD-3-Clause

// The other source with static objects, whose names partly are those of the first.

#include "tests/core/instring_exit_log.h"

namespace {

[[gnu::init_priority(102)]] NamedObject early("early object of the second source", "aa");
NamedObject ordinary("object of the second source", "a");

} // namespace
