// SPDX-License-Identifier: BSD-3-Clause

// The pictures that a new user sees first.
#include "tests/tools/program.h"

class Demo : public Program {};

TEST_F(Demo, RendersItsThreePictures) {
    const std::string command = VELMORA_SOURCE "/scripts/demo-pictures " VELMORA_PROGRAM " '" +
                                folder.file("out") + "' >/dev/null 2>'" + folder.file("err") + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(folder.read("err"), "");
    for (const char* name : {"orion", "hemisphere", "pan"}) {
        EXPECT_GT(folder.read("out/" + std::string(name) + ".exr").size(), 1000000u) << name;
        EXPECT_GT(folder.read("out/" + std::string(name) + ".png").size(), 100000u) << name;
    }
}
