// SPDX-License-Identifier: BSD-3-Clause

// A plug-in whose static objects throw while it is loaded.
#include <DDImage/Op.h>
#include <stdexcept>

static int set_up() {
    throw std::runtime_error("no licence for the moon");
}

extern const int from_set_up;
const int from_set_up = set_up();
