// SPDX-License-Identifier: BSD-3-Clause

// Where the program writes, and what may be in the way there.
#include "tests/tools/one_star.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace velmora;

class RenderOutputs : public OneStar {};

// An unfinished output has a name too: what is read must not have it.
TEST_F(RenderOutputs, AreNeverWrittenOverAnInputBeforeTheyAreWhole) {
    folder.write("shot.raw.inprogress", "1 0 0 0 0 0 0\n");
    const Ran ran = run(small("--camera shot.raw.inprogress --raw shot.raw"));
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.err, "velmora: shot.raw.inprogress: is read by the same command, and would be "
                       "overwritten while shot.raw is being written\n");
    EXPECT_EQ(folder.read("shot.raw.inprogress"), "1 0 0 0 0 0 0\n");

    folder.write("stars.velmora.inprogress", "hip,ra,dec,vmag,bv,plx,e_plx,name\n");
    const Ran imported = run("catalog import stars.velmora.inprogress -o stars.velmora");
    EXPECT_EQ(imported.status, 2);
    EXPECT_EQ(imported.err,
              "velmora: stars.velmora.inprogress: is read by the same command, and would be "
              "overwritten while stars.velmora is being written\n");
}

TEST_F(RenderOutputs, AreNeverWrittenOverEachOtherBeforeTheyAreWhole) {
    const struct {
        const char* outputs;
        std::string name;
    } cases[] = {
        {"-o a.exr --raw a.exr.inprogress", "a.exr"},
        {"-o a.exr.inprogress.png --raw a.exr.inprogress -o a.exr", "a.exr"},
        {"-o ./b.png --raw b.png.inprogress", "./b.png"},
    };
    for (const auto& [outputs, name] : cases) {
        const Ran ran = run(small(outputs));
        EXPECT_EQ(ran.status, 2);
        EXPECT_EQ(ran.err, "velmora: output '" + name + "': is written to " + name +
                               ".inprogress first, which is another output\n");
    }
}

// A link is replaced, so that it and what it leads to are two outputs.
TEST_F(RenderOutputs, MayBeALinkAndWhatItLeadsTo) {
    std::filesystem::create_symlink("a.raw", folder.file("b.raw.png"));
    folder.write("a.raw", "old");
    EXPECT_EQ(run(small("--raw a.raw -o b.raw.png")).err, "");
    EXPECT_TRUE(std::filesystem::is_regular_file(
        std::filesystem::symlink_status(folder.file("b.raw.png"))));
}

// Root goes everywhere, so its privileges are taken away for the run.
TEST_F(RenderOutputs, SayThatTheirFolderMayNotBeUsed) {
    std::filesystem::permissions(folder.folder("locked"), std::filesystem::perms::none);
    const Ran ran = run(small("-o locked/a.exr -o locked/b.exr"),
                        geteuid() == 0 ? "setpriv --bounding-set=-all --inh-caps=-all" : "");
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: locked/a.exr: Permission denied\n");
    std::filesystem::permissions(folder.file("locked"), std::filesystem::perms::owner_all);
}

// A loop of links is found in the folder of any user.
TEST_F(RenderOutputs, SayWhyTheirFolderCannotBeFound) {
    std::filesystem::create_symlink("loop", folder.file("loop"));
    const Ran ran = run(small("-o loop/a.exr -o loop/b.exr"));
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: loop/a.exr: Too many levels of symbolic links\n");
}

// Nothing is rendered for names that cannot be written: with the suffix, 255 bytes are too short.
TEST_F(RenderOutputs, AreRefusedForTooLongANameBeforeAnyIsWritten) {
    const std::string name = std::string(241, 'n') + ".exr";
    const Ran ran = run(small("--raw first.raw -o " + name));
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: " + name + ".inprogress: File name too long\n");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"sky.velmora"});
}

TEST_F(RenderOutputs, AreRefusedWhileAnotherProcessWritesThem) {
    const int fd = open(folder.file("a.exr.inprogress").c_str(), O_WRONLY | O_CREAT, 0644);
    ASSERT_EQ(flock(fd, LOCK_EX), 0);
    const Ran ran = run(small("-o a.exr"));
    close(fd);
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.err, "velmora: a.exr: is being written by another process\n");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"a.exr.inprogress", "sky.velmora"}));
    EXPECT_EQ(run(small("-o a.exr")).status, 0) << "nobody writes it any more";
}

TEST_F(RenderOutputs, KeepTheModeOfTheFilesBefore) {
    folder.write("a.exr", "old");
    ASSERT_EQ(chmod(folder.file("a.exr").c_str(), 0640), 0);
    EXPECT_EQ(run(small("-o a.exr")).status, 0);
    struct stat status = {};
    ASSERT_EQ(stat(folder.file("a.exr").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode_t(0640));
}

TEST_F(RenderOutputs, AreAllCountedUnderACallerThatIgnoresItsChildren) {
    const Ran ran = run(small("-F 1-3 --jobs 2 -o %d.png"), "trap '' CHLD; ");
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(ran.status, 0);
}
