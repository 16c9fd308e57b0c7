// The intern table while a process starts and ends, seen from outside: a small program whose static
// objects intern names, linked in several orders.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace {

// What the program writes to standard output, and its exit status when it is not 0.
std::string output_of(const std::string& name) {
    FILE* pipe = popen((INSTRING_EXIT_FOLDER "/" + name + " 2>/dev/null").c_str(), "r");
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

// Behind the last static object: the gensyms' nodes, then the buckets' from the last to the first,
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

} // namespace

TEST(InStringLifecycle, StandsBeforeStaticObjectsAndGoesBehindThem) {
    EXPECT_EQ(output_of("instring_exit_first_second"), with_first_source_first);
}

TEST(InStringLifecycle, DoesNotDependOnTheOrderOfLinking) {
    EXPECT_EQ(output_of("instring_exit_second_first"), with_second_source_first);
}

TEST(InStringLifecycle, DoesNotDependOnTheLibrarysPlaceInTheLink) {
    EXPECT_EQ(output_of("instring_exit_library_first"), with_first_source_first);
}
