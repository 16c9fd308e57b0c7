// SPDX-License-Identifier: BSD-3-Clause

// The plug-in as a file: what it shows to the host's process and what it needs there.
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

// Lines that a program writes to standard output; none and a failure when it cannot be run.
static std::vector<std::string> lines_of(const std::string& command) {
    std::vector<std::string> lines;
    FILE* const output = popen(command.c_str(), "r");
    if (!output) {
        ADD_FAILURE() << command;
        return lines;
    }
    std::string line;
    for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) {
        if (c != '\n') {
            line += char(c);
            continue;
        }
        lines.push_back(line);
        line.clear();
    }
    EXPECT_EQ(pclose(output), 0) << command;
    return lines;
}

static const std::string plugin = "'" VELMORA_PLUGIN_FOLDER "/VelmoraNK.so'";

// Two plug-ins of one process may hold other versions of the same names.
TEST(NodePlugin, ExportsItsDoorsAlone) {
    std::vector<std::string> names;
    for (const std::string& line : lines_of("LC_ALL=C nm -D --defined-only " + plugin))
        names.push_back(line.substr(line.rfind(' ') + 1));
    EXPECT_EQ(names, (std::vector<std::string>{"velmora_cameras", "velmora_draw_plainly",
                                               "velmora_kernels", "velmora_last_counts",
                                               "velmora_render_data"}));
}

TEST(NodePlugin, AsksTheHostForItsInterface) {
    const std::vector<std::string> undefined =
        lines_of("LC_ALL=C nm -D --undefined-only " + plugin);
    int of_host = 0;
    for (const std::string& line : undefined)
        of_host += line.find("2DD5Image") != std::string::npos; // DD::Image, as linkers spell it
    EXPECT_GT(of_host, 20);
}

// What an op is made with is a class of the global namespace in every version of the host.
TEST(NodePlugin, IsHandedTheHostsGlobalNode) {
    std::set<std::string> constructors;
    for (const std::string& line : lines_of("LC_ALL=C nm -D -C --undefined-only " + plugin))
        if (line.find(" DD::Image::Iop::Iop(") != std::string::npos ||
            line.find(" DD::Image::Op::Description::Description(") != std::string::npos)
            constructors.insert(line.substr(line.find("DD::")));
    EXPECT_EQ(constructors.count("DD::Image::Iop::Iop(Node*)"), 1u)
        << testing::PrintToString(constructors);
}

TEST(NodePlugin, NeedsTheHostAndTheLanguagesLibraries) {
    std::set<std::string> needed;
    for (const std::string& line : lines_of("LC_ALL=C readelf -d " + plugin)) {
        const std::size_t open = line.find('['), close = line.find(']');
        if (line.find("(NEEDED)") != std::string::npos && close != std::string::npos)
            needed.insert(line.substr(open + 1, close - open - 1));
    }
    EXPECT_EQ(needed.count("libDDImage.so"), 1u);
    const std::set<std::string> allowed = {
        "libDDImage.so", "libstdc++.so.6",       "libm.so.6", "libgcc_s.so.1",
        "libc.so.6",     "ld-linux-x86-64.so.2", // the C library's other half: thread-local data
    };
    for (const std::string& library : needed)
        EXPECT_EQ(allowed.count(library), 1u) << library;
}
