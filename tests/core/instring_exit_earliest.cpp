// SPDX-License-Identifier: BSD-3-Clause

// A static object of the library's own priority, linked before the library: it interns before any
// initialiser of the library has run.

#include "tests/core/instring_exit_log.h"

[[gnu::init_priority(101)]] static NamedObject earliest("earliest object", "e");
