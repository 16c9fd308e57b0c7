// SPDX-License-Identifier: BSD-3-Clause

// The intern table while a process starts and ends, seen from outside: a small program whose static
// objects intern names, linked in several orders.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace {

// What the program writes to standard output, and its exit status when it is not 0. Freed memory is
// overwritten, so that reading it shows; the texts stay on purpose, which is no leak to report.
std::string output_of(const std::string& name) {
    const std::string command =
        "MALLOC_PERTURB_=85 ASAN_OPTIONS=detect_leaks=0 " INSTRING_EXIT_FOLDER "/" + name;
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    if (!pipe)
        return "(cannot be run)";
    std::string output;
    for (int c; (c = fgetc(pipe)) != EOF;)
        output += char(c);
    const int status = pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        output += "(status " + std::to_string(status) + ")\n";
    return output;
}

// main's part: the counter starts at 0, and objects go in the reverse of the order they were made.
const std::string main_part = "first gensym is G0\n"
                              "second gensym is G1\n"
                              "local static of main reads p\n"
                              "exit handler of main\n";

// After the last static object: the gensyms' nodes, then the buckets' from the last to the first,
// and no text. a is in bucket 242, b in 162, aa and bf in 88, c in 82, p in 77, z in 45: 17138 and
// 17314 modulo 256, and so on. A record that is not its own list node stays, as all texts do.
const std::string table_part = "freed first gensym\n"
                               "freed second gensym\n"
                               "freed a\n"
                               "freed b\n"
                               "freed aa\n"
                               "freed bf\n"
                               "freed the node of c\n"
                               "freed p\n"
                               "freed z\n";

const std::string with_first_source_first = main_part +
                                            "object of the second source reads a\n"
                                            "object of the first source reads bf\n"
                                            "early object of the second source reads aa\n"
                                            "early object of the first source reads aa\n"
                                            "last object interns z\n" +
                                            table_part;

const std::string with_second_source_first = main_part +
                                             "object of the first source reads bf\n"
                                             "object of the second source reads a\n"
                                             "early object of the first source reads aa\n"
                                             "last object interns z\n"
                                             "early object of the second source reads aa\n" +
                                             table_part;

// e is in bucket 178: 17842 modulo 256.
const std::string with_earliest = main_part + "earliest object reads e\n"
                                              "freed first gensym\n"
                                              "freed second gensym\n"
                                              "freed e\n"
                                              "freed b\n"
                                              "freed the node of c\n"
                                              "freed p\n";

// The chains that InString::dump prints when a is in bucket 242 and c in 82.
std::string dump_of_a_and_c() {
    std::string dump;
    for (int i = 0; i < 256; i++)
        dump += "chain " + std::to_string(i) + ": " +
                (i == 242  ? " a"
                 : i == 82 ? " c"
                           : "") +
                "\n";
    return dump;
}

} // namespace

TEST(InStringLifecycle, IsMadeBeforeStaticObjectsAndFreedAfterThem) {
    EXPECT_EQ(output_of("instring_exit_first_second"), with_first_source_first);
}

TEST(InStringLifecycle, DoesNotDependOnTheOrderOfLinking) {
    EXPECT_EQ(output_of("instring_exit_second_first"), with_second_source_first);
}

TEST(InStringLifecycle, DoesNotDependOnTheLibrarysPlaceInTheLink) {
    EXPECT_EQ(output_of("instring_exit_library_first"), with_first_source_first);
}

TEST(InStringLifecycle, IsThereBeforeOtherInitialisersOfItsPriority) {
    EXPECT_EQ(output_of("instring_exit_earliest"), with_earliest);
}

// After the plug-in's exit handlers the table is empty and takes names again.
TEST(InStringLifecycle, SurvivesCallsFromAHostThatEndsAfterIt) {
    for (const std::string plugin : INSTRING_LATE_PLUGINS) {
        SCOPED_TRACE(plugin);
        EXPECT_EQ(output_of("instring_late_host " INSTRING_EXIT_FOLDER "/" + plugin),
                  dump_of_a_and_c() + "exit\n" + dump_of_a_and_c());
    }
}
