// SPDX-License-Identifier: BSD-3-Clause

// Builds against an installation: the same node source, compiled and installed for it.
#include "tests/packaging/installed.h"
#include "tests/packaging/nuke_installation.h"

class NukeBuild : public Installed {
protected:
    // Configures a build of the plug-in for a version.
    void configure(int major, int minor) const {
        const std::string root = make_nuke_installation(folder, "nuke", major, minor);
        ASSERT_TRUE(runs(CMAKE " -S " VELMORA_SOURCE " -B '" + folder.file("build") +
                         "' -G Ninja -DCMAKE_CXX_COMPILER=" COMPILER
                         " -DCMAKE_BUILD_TYPE=Release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON"
                         " -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DNUKE_ROOT='" +
                         root + "' -DVELMORA_TOOLS=OFF -DVELMORA_TESTS=OFF -DVELMORA_BENCH=OFF"))
            << folder.read("said");
    }

    // How many sources are compiled, and how many of them with `option`.
    std::pair<int, int> compiled_with(const std::string& option) const {
        const std::string commands = folder.read("build/compile_commands.json");
        const auto count = [&](const std::string& text) {
            int times = 0;
            for (std::size_t at = commands.find(text); at != std::string::npos;
                 at = commands.find(text, at + 1))
                times++;
            return times;
        };
        return {count("\"command\": "), count(option + " ")};
    }
};

// The host and the plug-in must agree on what a std::string is.
TEST_F(NukeBuild, HasTheOldStringsUpTo14) {
    configure(14, 1);
    const auto [sources, with_old_strings] = compiled_with("-D_GLIBCXX_USE_CXX11_ABI=0");
    EXPECT_GT(sources, 20);
    EXPECT_EQ(with_old_strings, sources);
}

TEST_F(NukeBuild, HasTheNewStringsFrom15On) {
    configure(15, 0);
    const auto [sources, with_new_strings] = compiled_with("-D_GLIBCXX_USE_CXX11_ABI=1");
    EXPECT_GT(sources, 20);
    EXPECT_EQ(with_new_strings, sources);
}

TEST_F(NukeBuild, MakesAPluginThatRendersTheSame) {
    configure(16, 1); // whose cameras speak most differently from the stand-in's

    // Next to the command line, and in a folder of its own.
    ASSERT_TRUE(runs(CMAKE " --build '" + folder.file("build") + "' -j 2")) << folder.read("said");
    for (const std::string& prefix : {home, folder.file("alone")})
        ASSERT_TRUE(
            runs(CMAKE " --install '" + folder.file("build") + "' --prefix '" + prefix + "'"))
            << folder.read("said");
    const std::string plugin = folder.file("alone/plugin/nuke16.1/VelmoraNK.so");
    for (const char* file : {"init.py", "menu.py", "icons/VelmoraNK.png"})
        EXPECT_TRUE(std::filesystem::exists(folder.file("alone/" + std::string(file)))) << file;
    EXPECT_FALSE(std::filesystem::exists(folder.file("alone/plugin/VelmoraNK.so")));

    // It requires the host's library by name and has no search path of its own.
    ASSERT_TRUE(runs("readelf --dynamic --wide '" + plugin + "'"));
    const std::string dynamic = folder.read("said");
    EXPECT_NE(dynamic.find("(NEEDED)             Shared library: [libDDImage.so]"),
              std::string::npos)
        << dynamic;
    EXPECT_EQ(dynamic.find("PATH)"), std::string::npos) << dynamic;

    const auto render = [&](const std::string& raw) {
        velmora("render --camera '" VELMORA_SOURCE "/docs/examples/pan.chan' --vaperture 13.824 "
                "--knob blur_segs=4 --format 96x54 --raw '" +
                folder.file(raw) + "'");
    };
    render("stand-in.raw");
    std::filesystem::copy(home + "/plugin/nuke16.1/VelmoraNK.so", home + "/plugin/VelmoraNK.so",
                          std::filesystem::copy_options::overwrite_existing);
    render("nuke.raw");
    EXPECT_NE(folder.read("nuke.raw").find_first_not_of('\0'), std::string::npos);
    EXPECT_TRUE(folder.read("nuke.raw") == folder.read("stand-in.raw"));
}
