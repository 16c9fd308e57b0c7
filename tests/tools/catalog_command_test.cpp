// SPDX-License-Identifier: BSD-3-Clause
#include "tests/catalog/gzip.h"
#include "tests/scratch_folder.h"
#include "tools/commands/commands.h"
#include "tools/commands/help.h"
#include "tools/failure.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

namespace velmora {

typedef std::vector<std::string> Words;

struct Outcome {
    int status;
    std::string out, err;
};

// Runs "velmora catalog `words`".
static Outcome run(Words words) {
    words.insert(words.begin(), "catalog");
    std::reverse(words.begin(), words.end()); // the order in which the parser takes them
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Outcome outcome;
    outcome.status = exit_status_of([&words] {
        CLI::App program("", "velmora");
        add_catalog_command(program);
        try {
            program.parse(words);
        } catch (const CLI::ParseError& error) {
            throw UsageFailure("arguments", error.what());
        }
    });
    outcome.out = testing::internal::GetCapturedStdout();
    outcome.err = testing::internal::GetCapturedStderr();
    return outcome;
}

static void expect_failure(const Words& words, int status, const std::string& line) {
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "velmora: " + line + "\n");
}

static std::string help_of(const Words& words) {
    CLI::App program("", "velmora");
    program.formatter(std::make_shared<ExamplesFirst>());
    add_catalog_command(program);
    CLI::App* command = program.get_subcommand("catalog");
    for (const std::string& word : words)
        command = command->get_subcommand(word);
    return command->help();
}

static const std::string header = "hip,ra,dec,vmag,bv,plx,e_plx,name\n";
static const std::string sirius = "32349,101.28716,-16.71612,-1.44,0.009,379.21,1.58,Sirius\n";
static const std::string vega = "91262,279.23475,38.78369,0.03,-0.001,130.23,0.36,Vega\n";
static const std::string pale = "1,0.00091,1.08901,9.1,,,,\n";

class CatalogCommand : public testing::Test {
protected:
    ScratchFolder folder;
    const std::string sky = folder.file("sky.velmora");
};

TEST_F(CatalogCommand, ImportsATableAndTellsWhatItWrote) {
    const std::string source = folder.write("s.csv", header + pale + sirius + vega);
    const Outcome outcome = run({"import", source, "-o", sky});
    EXPECT_EQ(outcome.status, EXIT_DONE);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "velmora: " + sky +
                  ": stars written: 3, with known distance: 2, with known colour: 2\n");
    EXPECT_EQ(folder.read("sky.velmora").size(), 4u * 32);
    EXPECT_EQ(folder.names(), (Words{"s.csv", "sky.velmora"}));
}

TEST_F(CatalogCommand, ImportsSeveralSourcesAsIfTheyWereOne) {
    const std::string a = folder.write("a.csv", header + pale + vega);
    const std::string b = folder.write("b.csv", gzip(header + sirius));
    const std::string both = folder.write("both.csv", header + pale + vega + sirius);
    EXPECT_EQ(run({"import", a, b, "-o", sky}).status, EXIT_DONE);
    EXPECT_EQ(run({"import", both, "--out", folder.file("other")}).status, EXIT_DONE);
    EXPECT_EQ(folder.read("sky.velmora"), folder.read("other"));
}

TEST_F(CatalogCommand, TellsWhatADatabaseHolds) {
    const std::string source = folder.write("s.csv", header + pale + sirius + vega);
    ASSERT_EQ(run({"import", source, "-o", sky}).status, EXIT_DONE);
    const Outcome outcome = run({"info", sky});
    EXPECT_EQ(outcome.status, EXIT_DONE);
    EXPECT_EQ(outcome.err, "");
    // 10^-3.64 and 10^0.576; 1000 / 379.21 and 1000 / 130.23.
    EXPECT_EQ(outcome.out, sky + "\n"
                                 "version    2\n"
                                 "stars      3\n"
                                 "ra         0.00091 to 279.235\n"
                                 "dec        -16.7161 to 38.7837\n"
                                 "flux       0.000229087 to 3.76704\n"
                                 "distance   2.63706 to 7.67872, known for 2\n"
                                 "order      brightest first\n"
                                 "magnitude        stars\n"
                                 "  -2 to -1            1\n"
                                 "   0 to 1             1\n"
                                 "   9 to 10            1\n"
                                 "odd        distance unknown: 1, first in record 3\n");
}

TEST_F(CatalogCommand, RefusesSourcesThatItCannotRead) {
    const std::string none = folder.file("none");
    expect_failure({"import", none, "-o", sky}, EXIT_FAILED, none + ": No such file or directory");
    const std::string dir = folder.file("");
    expect_failure({"import", dir, "-o", sky}, EXIT_FAILED, dir + ": is a directory, not a file");
    const std::string empty = folder.write("e", "");
    expect_failure({"import", empty, "-o", sky}, EXIT_FAILED, empty + ": the file is empty");
    const std::string cut = folder.write("c", gzip(header + vega).substr(0, 40));
    expect_failure({"import", cut, "-o", sky}, EXIT_FAILED, cut + ": the gzip data end too early");
    EXPECT_EQ(folder.names(), (Words{"c", "e"}));
}

TEST_F(CatalogCommand, RefusesFilesOfAnUnknownKind) {
    for (const std::string& bytes :
         {std::string("id,hip,hd\n"), std::string(10000, '\0'), std::string("VELMORA2")}) {
        const std::string source = folder.write("s", bytes);
        expect_failure({"import", source, "-o", sky}, EXIT_FAILED,
                       source +
                           ": the kind of file is unknown; supported are star tables, which begin "
                           "with the line \"hip,ra,dec,vmag,bv,plx,e_plx,name\"");
    }
    EXPECT_EQ(folder.names(), Words{"s"});
}

TEST_F(CatalogCommand, NamesTheLineThatIsWrongAndWritesNothing) {
    const std::string good = folder.write("good.csv", header + vega);
    const std::string bad = folder.write("bad.csv", header + vega + "2,400,3,4,,,,\n");
    expect_failure({"import", good, bad, "-o", sky}, EXIT_FAILED,
                   bad + ", line 3: ra '400' lies outside [0, 360)");
    EXPECT_EQ(folder.names(), (Words{"bad.csv", "good.csv"}));
}

TEST_F(CatalogCommand, RefusesOutputsThatItCannotWrite) {
    const std::string source = folder.write("s.csv", header + vega);
    const std::string dir = folder.file("");
    expect_failure({"import", source, "-o", dir}, EXIT_FAILED, dir + ": Is a directory");
    const std::string lost = folder.file("none/sky");
    expect_failure({"import", source, "-o", lost}, EXIT_FAILED,
                   lost + ": there is no folder " + folder.file("none"));
    const std::string inside = source + "/sky";
    expect_failure({"import", source, "-o", inside}, EXIT_FAILED,
                   inside + ": there is no folder " + source);
    expect_failure({"import", source, "-o", "/dev/null"}, EXIT_FAILED,
                   "/dev/null: not a regular file");
    EXPECT_EQ(folder.names(), Words{"s.csv"});
}

TEST_F(CatalogCommand, TellsWhyTheSystemRefusesTheOutput) {
    const std::string source = folder.write("s.csv", header + vega);
    std::filesystem::create_directory(sky + ".inprogress");
    expect_failure({"import", source, "-o", sky}, EXIT_FAILED,
                   sky + ".inprogress: is in the way, and is not a regular file");
}

TEST_F(CatalogCommand, NeverWritesOverItsSources) {
    const std::string source = folder.write("s.csv", header + vega);
    expect_failure({"import", source, "-o", source}, EXIT_USAGE,
                   source + ": is read by the same command, and would be overwritten");
    const std::string same = folder.file("./s.csv");
    expect_failure({"import", source, "-o", same}, EXIT_USAGE,
                   same + ": is read by the same command, and would be overwritten");
    EXPECT_EQ(folder.read("s.csv"), header + vega);
}

TEST_F(CatalogCommand, RefusesDatabasesThatAreNone) {
    const std::string none = folder.file("none");
    expect_failure({"info", none}, EXIT_FAILED, none + ": No such file or directory");
    const std::string brief = folder.write("b", "VELMORA2");
    expect_failure({"info", brief}, EXIT_FAILED,
                   brief +
                       ": is too short for a star database: 8 bytes, the header alone takes 32");
}

TEST_F(CatalogCommand, NeedsItsArguments) {
    expect_failure({}, EXIT_USAGE, "catalog: name a command: import or info");
    expect_failure({"import", "-o", "x"}, EXIT_USAGE, "arguments: SOURCE is required");
    expect_failure({"import", "x"}, EXIT_USAGE, "arguments: --out is required");
    expect_failure({"info"}, EXIT_USAGE, "arguments: FILE is required");
    expect_failure({"import", "", "-o", "x"}, EXIT_USAGE, "SOURCE: the file name is empty");
    expect_failure({"import", "x", "-o", ""}, EXIT_USAGE, "-o: the file name is empty");
    expect_failure({"info", ""}, EXIT_USAGE, "FILE: the file name is empty");
}

TEST_F(CatalogCommand, ShowsExamplesBeforeTheUsage) {
    for (const Words& words : {Words{}, Words{"import"}, Words{"info"}}) {
        const std::string help = help_of(words);
        ASSERT_NE(help.find("\nExamples:\n  velmora catalog "), std::string::npos);
        ASSERT_NE(help.find("\nUsage: "), std::string::npos);
        EXPECT_LT(help.find("\nExamples:"), help.find("\nUsage: "));
    }
}

} // namespace velmora
