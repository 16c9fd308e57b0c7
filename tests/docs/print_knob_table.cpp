// SPDX-License-Identifier: BSD-3-Clause

// Prints the table for scripts/knob-table, which puts it into docs/node.md.
#include "tests/docs/knob_table.h"
#include "tools/failure.h"

#include <iostream>

int main() {
    return velmora::exit_status_of([] { std::cout << velmora::knob_table() << std::flush; });
}
