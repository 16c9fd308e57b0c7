// SPDX-License-Identifier: BSD-3-Clause
#include "tests/packaging/installed.h"

// The files below a folder, by their names from there, sorted.
static std::vector<std::string> files_below(const std::string& root) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        if (!entry.is_directory())
            files.push_back(entry.path().lexically_relative(root).string());
    std::sort(files.begin(), files.end());
    return files;
}

class InstalledFolder : public Installed {};

TEST_F(InstalledFolder, HoldsWhatItShouldAndNothingElse) {
    std::vector<std::string> expected = {
        "bin/velmora",
        "examples/dome.nk",
        "examples/orion.nk",
        "examples/pan.nk",
        "icons/VelmoraNK.png",
        "icons/VelmoraNK.svg",
        "icons/VelmoraNK_16.png",
        "icons/VelmoraNK_32.png",
        "icons/VelmoraNK_64.png",
        "init.py",
        "lib/libDDImage.so",
        "menu.py",
        "plugin/VelmoraNK.so",
        "share/velmora/LICENSE.d3-celestial",
        "share/velmora/stars.velmora",
    };
    for (const std::string& page : files_below(VELMORA_SOURCE "/docs"))
        expected.push_back("docs/" + page);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(files_below(folder.file("velmora")), expected);
}

// A picture of the bundled stars through the installed program, plug-in and host.
static std::string view(const std::string& raw) {
    return "render --look-at 83.5,-1 --fov 36 --vaperture 13.824 --format 96x54 --raw '" + raw +
           "'";
}

TEST_F(InstalledFolder, RendersWhatTheBuildRenders) {
    velmora(view(folder.file("installed.raw")));
    ASSERT_TRUE(runs(VELMORA_BUILD "/bin/velmora " + view(folder.file("built.raw"))));
    const std::string picture = folder.read("installed.raw");
    EXPECT_EQ(picture.size(), 96u * 54 * 16);
    EXPECT_NE(picture.find_first_not_of('\0'), std::string::npos);
    EXPECT_TRUE(picture == folder.read("built.raw"));
}

TEST_F(InstalledFolder, RendersTheSameOnceMoved) {
    velmora(view(folder.file("before.raw")));
    folder.folder("another place");
    std::filesystem::rename(home, folder.file("another place/sky"));
    EXPECT_TRUE(runs("'" + folder.file("another place/sky/bin/velmora") + "' " +
                     view(folder.file("after.raw"))));
    EXPECT_EQ(folder.read("said"), "");
    EXPECT_TRUE(folder.read("before.raw") == folder.read("after.raw"));
}

// Size and kind from the PNG header: big-endian width and height after its name.
TEST_F(InstalledFolder, HasIconsOfTheirSizes) {
    const std::pair<const char*, int> icons[] = {
        {"VelmoraNK_16.png", 16},
        {"VelmoraNK.png", 24},
        {"VelmoraNK_32.png", 32},
        {"VelmoraNK_64.png", 64},
    };
    for (const auto& [name, size] : icons) {
        const std::string bytes = folder.read("velmora/icons/" + std::string(name));
        ASSERT_GT(bytes.size(), 24u) << name;
        EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n") << name;
        const std::string side = {0, 0, 0, char(size)};
        EXPECT_EQ(bytes.substr(16, 8), side + side) << name;
    }
}
