// SPDX-License-Identifier: BSD-3-Clause

// The explain command's work: which records of the star database put light into one pixel.
#pragma once

#include "tools/comp/comp.h"

#include <string>
#include <vector>

namespace velmora {

struct ExplainOptions {
    std::string frame; // empty for frame 1, or for the first of the script's range
    std::string pixel; // X,Y as the host's viewer counts: x from the left, y from the bottom
    std::string save;  // a database to write with just those records; empty for none
    CompOptions comp;
    bool reference = false; // draw with the plain reading

    // The other arguments, as words of the render command that draws the same frame.
    std::vector<std::string> render_words;
};

// Prints the records, their sum and, for a database that is saved, the command that renders it.
// Throws WorkFailure when the sum is not the rendered pixel, bit for bit.
void explain(const ExplainOptions& options);

} // namespace velmora
