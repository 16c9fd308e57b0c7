// SPDX-License-Identifier: BSD-3-Clause

// Renders of one star, in a database of its own.
#pragma once

#include "catalog/database_writer.h"
#include "tests/tools/program.h"

// One white star of flux 2 where an unrotated camera looks: right ascension 90, declination 0.
class OneStar : public Program {
protected:
    void SetUp() override {
        const star ahead = {90, 0, 2, 255, 255, 255, 0, 10};
        velmora::write_star_database(folder.file("sky.velmora"), {ahead});
    }

    // A small still picture with square pixels.
    static std::string small(const std::string& more) {
        return "render --star-file sky.velmora --format 64x36 --vaperture 13.824 " + more;
    }
};
