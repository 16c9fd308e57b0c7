// SPDX-License-Identifier: BSD-3-Clause

// The example scripts give the same pictures as the options that they document, bit for bit.
#include "tests/packaging/installed.h"

class Examples : public Installed {
protected:
    const std::string look = "--knob brightness=40 --knob bias=0.8 --knob saturation=1.3 "
                             "--knob lum_max=4 ";

    // Renders both at a small size; they must print nothing and light some pixels.
    void expect_same(const std::string& example, const std::string& options,
                     const std::vector<std::string>& frames) const {
        const std::string more = " -F " + frames.front() + "-" + frames.back() + " ";
        const auto raw = [&](const std::string& name) { return folder.file(name + ".%d.raw"); };
        velmora("render '" + home + "/examples/" + example + ".nk'" + size(example) + more +
                "--raw '" + raw("script") + "'");
        velmora("render " + options + size(example) + more + "--raw '" + raw("options") + "'");
        for (const std::string& frame : frames) {
            const std::string picture = folder.read("script." + frame + ".raw");
            EXPECT_NE(picture.find_first_not_of('\0'), std::string::npos) << example << frame;
            EXPECT_TRUE(picture == folder.read("options." + frame + ".raw")) << example << frame;
        }
    }

    static std::string size(const std::string& example) {
        return example == "dome" ? " --format 96x96" : " --format 192x108";
    }
};

TEST_F(Examples, OrionIsAStillView) {
    expect_same("orion",
                look + "--knob lum_threshold=0.0006 --knob star_size=2 --knob blur_segs=0 "
                       "--rotate=-1,-6.5,0 --focal 38 --vaperture 13.824",
                {"1"});
}

TEST_F(Examples, PanFollowsACameraFile) {
    folder.write("pan.chan", "1 0 0 0   -1 -6.5 0\n"
                             "2 0 0 0 -1.2 -6.3 0\n"
                             "3 0 0 0 -1.8 -5.5 0.2\n"
                             "4 0 0 0   -3   -4 0.6\n"
                             "5 0 0 0   -5   -2 1.2\n"
                             "6 0 0 0   -8    1 2\n"
                             "7 0 0 0  -12    4 3\n"
                             "8 0 0 0  -16    7 4\n"
                             "9 0 0 0  -20   10 5\n");
    expect_same("pan",
                look +
                    "--knob lum_threshold=0.0006 --knob star_size=2 --knob blur_segs=8 "
                    "--knob shutter=0.5 --focal 30 --vaperture 13.824 --camera '" +
                    folder.file("pan.chan") + "'",
                {"1", "2", "3", "4", "5", "6", "7", "8"});
}

TEST_F(Examples, DomeIsHalfOfTheSkyWithoutACamera) {
    expect_same("dome",
                look + "--knob lum_threshold=0.0005 --knob star_size=1.4 --knob blur_segs=0 "
                       "--knob 'projection=Azimuthal Equidistant' --no-camera --rotate 20,185,0",
                {"1"});
}

// Each finds the database relative to itself, however it is named.
TEST_F(Examples, FindTheirStarsFromEveryFolder) {
    const auto render = [&](const std::string& from, const std::string& script) {
        const std::string raw = folder.file("sky.raw");
        EXPECT_TRUE(runs("cd '" + folder.file(from) + "' && '" + home + "/bin/velmora' render " +
                         script + " --format 192x108 --raw '" + raw + "'"))
            << folder.read("said");
        return folder.read("sky.raw");
    };
    const std::string beside = render("velmora/examples", "orion.nk");
    EXPECT_NE(beside.find_first_not_of('\0'), std::string::npos);
    EXPECT_TRUE(render("velmora", "examples/orion.nk") == beside);
    EXPECT_TRUE(render("velmora/docs", "../examples/orion.nk") == beside);
    EXPECT_TRUE(render("", "'" + home + "/examples/orion.nk'") == beside);
    std::filesystem::create_directory_symlink(home, folder.file("an [odd] $place"));
    EXPECT_TRUE(render("", "'an [odd] $place/examples/orion.nk'") == beside);
}

// Without options: their own frames and sizes, and the pan's last frame still in motion.
TEST_F(Examples, RenderAsTheyStand) {
    const std::pair<const char*, std::vector<std::string>> examples[] = {
        {"orion", {"0001"}},
        {"pan", {"0008"}},
        {"dome", {"0001"}},
    };
    for (const auto& [name, frames] : examples) {
        velmora("render '" + home + "/examples/" + name + ".nk' -F " + frames.back() + " -o '" +
                folder.file(name) + ".####.png'");
        EXPECT_GT(folder.read(std::string(name) + "." + frames.back() + ".png").size(), 100000u)
            << name;
    }
}
