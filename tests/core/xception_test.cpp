// SPDX-License-Identifier: BSD-3-Clause
#define XSOURCE "xception_test"

#include "core/xception.h"

#include "tests/core/observed.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

// ---- Functions with signatures to be named in messages ---------------------------------------

int thrown_at; // the line where the last of these threw

int check_positive(int value);
int check_positive(int value) {
    thrown_at = __LINE__ + 1;
    XASSERT(value > 0);
    return value;
}

void refuse(const char* what, int offset);
void refuse(const char* what, int offset) {
    thrown_at = __LINE__ + 1;
    XTHROW("%s refused at offset %d", what, offset);
}

void refuse_without_arguments();
void refuse_without_arguments() {
    thrown_at = __LINE__ + 1;
    XTHROW("refused");
}

template <class real>
class Scale {
public:
    real of(const Scale& other) const;
};

template <class real>
real Scale<real>::of(const Scale&) const {
    XASSERT(sizeof(real) == 0);
    return 0;
}

// ---- The classes -----------------------------------------------------------------------------

TEST(Xception, IsAnAbstractBaseWithoutData) {
    EXPECT_TRUE(std::is_abstract<Xception>::value);
    EXPECT_TRUE(std::has_virtual_destructor<Xception>::value);
    EXPECT_EQ(sizeof(Xception), sizeof(void*));
    EXPECT_TRUE((std::is_base_of<Xception, AssertXception>::value));
    EXPECT_TRUE((std::is_base_of<Xception, StrXception>::value));
    EXPECT_FALSE((std::is_base_of<AssertXception, StrXception>::value));
}

// Both destructors, then print.
TEST(Xception, VirtualTableHoldsTheDestructorThenPrint) {
    class Watched : public Xception {
    public:
        explicit Watched(std::string& calls) : calls(calls) {}
        ~Watched() override { calls += " destroyed"; }
        void print() const override { calls += "printed"; }

    private:
        std::string& calls;
    };
    std::string calls;
    const Xception* x = new Watched(calls);
    void* const* slots;
    std::memcpy(&slots, static_cast<const void*>(x), sizeof slots);
    typedef void (*Print)(const Xception*);
    reinterpret_cast<Print>(slots[2])(x);
    EXPECT_EQ(calls, "printed");
    reinterpret_cast<Print>(slots[1])(x); // destroys and frees
    EXPECT_EQ(calls, "printed destroyed");
}

TEST(AssertXception, KeepsItsFourValuesInOrder) {
    const char expr[] = "a < b", file[] = "stars", function[] = "void f()";
    const AssertXception x(expr, file, function, 42);
    EXPECT_EQ(x.expr, expr); // the pointers themselves, not copies
    EXPECT_EQ(x.file, file);
    EXPECT_EQ(x.function, function);
    EXPECT_EQ(x.line, 42);

    const char* base = reinterpret_cast<const char*>(&x);
    EXPECT_EQ(reinterpret_cast<const char*>(&x.expr) - base, 8);
    EXPECT_EQ(reinterpret_cast<const char*>(&x.file) - base, 16);
    EXPECT_EQ(reinterpret_cast<const char*>(&x.function) - base, 24);
    EXPECT_EQ(reinterpret_cast<const char*>(&x.line) - base, 32);
    EXPECT_EQ(sizeof(x.line), 4u);
}

TEST(StrXception, HoldsAStringAndNothingElse) {
    EXPECT_EQ(sizeof(StrXception), sizeof(void*) + sizeof(String));
    EXPECT_TRUE((std::is_same<decltype(StrXception::message), String>::value));
}

// ---- Messages --------------------------------------------------------------------------------

TEST(StrXception, MessageEndsInItsLocation) {
    const StrXception x("stars", "void op_stars_projection()", 290, "unknown projection");
    EXPECT_STREQ(x.message.str, "unknown projection in <void op_stars_projection()> (stars:290)");
}

TEST(StrXception, MessageIsFormatted) {
    const StrXception x("osapi-unix", "f", 7, "opening file \"%s\": %s (%d)", "a b", "why", -1);
    EXPECT_STREQ(x.message.str, "opening file \"a b\": why (-1) in <f> (osapi-unix:7)");
}

TEST(StrXception, NothingIsFormattedTwice) {
    const StrXception x("100%s", "f<%d>()", -3, "%s", "%n and %s");
    EXPECT_STREQ(x.message.str, "%n and %s in <f<%d>()> (100%s:-3)");
}

TEST(StrXception, MessagesHaveAnyLength) {
    const std::string text(100000, 'x'), signature(5000, 'f');
    const StrXception x("stars", signature.c_str(), 1, "%s", text.c_str());
    EXPECT_EQ(x.message.str, text + " in <" + signature + "> (stars:1)");
}

TEST(StrXception, AnEmptyTextLeavesTheLocation) {
    const StrXception x("stars", "f", 1, "%s", "");
    EXPECT_STREQ(x.message.str, " in <f> (stars:1)");
}

TEST(StrXception, CopiesOwnTheirMessages) {
    StrXception x("stars", "f", 1, "text");
    const StrXception copy(x);
    x.message.clear();
    EXPECT_STREQ(copy.message.str, "text in <f> (stars:1)");
}

// ---- Printing --------------------------------------------------------------------------------

TEST(Xception, DisplayErrorWritesTitleAndText) {
    EXPECT_EQ(stderr_of([] { Xception::display_error("Title", "text 100% %s"); }),
              "Title: text 100% %s\n");
    EXPECT_EQ(stderr_of([] { Xception::display_error("", ""); }), ": \n");
}

TEST(StrXception, PrintsItsMessageAsAnError) {
    const StrXception x("stars", "f", 290, "unknown projection %d%%", 5);
    EXPECT_EQ(stderr_of([&] { x.print(); }), "Error: unknown projection 5% in <f> (stars:290)\n");
}

TEST(StrXception, PrintsNothingAfterTheTitleWithoutAMessage) {
    StrXception x("stars", "f", 290, "unknown projection");
    x.message.clear();
    EXPECT_EQ(stderr_of([&] { x.print(); }), "Error: \n");
}

TEST(StrXception, PrintsLongMessagesWhole) {
    const std::string text(100000, 'x');
    const StrXception x("stars", "f", 1, "%s", text.c_str());
    EXPECT_EQ(stderr_of([&] { x.print(); }), "Error: " + text + " in <f> (stars:1)\n");
}

TEST(AssertXception, PrintsExpressionFunctionFileAndLine) {
    const AssertXception x("spec.format != ImageSpec::INVALID_FORMAT", "image",
                           "Kess::Image::Image(const Kess::ImageSpec&)", 269);
    EXPECT_EQ(stderr_of([&] { x.print(); }),
              "Assertion Failed: 'spec.format != ImageSpec::INVALID_FORMAT' in "
              "<Kess::Image::Image(const Kess::ImageSpec&)> (image:269)\n");
}

TEST(AssertXception, PrintsPercentSignsAsTheyAre) {
    const AssertXception x("a %s b", "f", "100%d", 1);
    EXPECT_EQ(stderr_of([&] { x.print(); }), "Assertion Failed: 'a %s b' in <100%d> (f:1)\n");
}

TEST(AssertXception, PrintsTheFirst4095CharactersOfLongTexts) {
    for (std::size_t length : {4000u, 4094u, 4095u, 4096u, 4097u, 10000u}) {
        const std::string frame = "'e' in <> (f:1)";
        const std::string function(length - frame.size(), 'F');
        const std::string whole = "'e' in <" + function + "> (f:1)";
        ASSERT_EQ(whole.size(), length);
        const AssertXception x("e", "f", function.c_str(), 1);
        EXPECT_EQ(stderr_of([&] { x.print(); }),
                  "Assertion Failed: " + whole.substr(0, 4095) + "\n")
            << length;
    }
}

TEST(Xception, PrintIsCalledThroughTheBase) {
    const AssertXception assertion("e", "f", "g", 1);
    const StrXception text("f", "g", 1, "t");
    EXPECT_EQ(stderr_of([&] {
                  for (const Xception* x : {static_cast<const Xception*>(&assertion),
                                            static_cast<const Xception*>(&text)})
                      x->print();
              }),
              "Assertion Failed: 'e' in <g> (f:1)\nError: t in <g> (f:1)\n");
}

// ---- Warnings --------------------------------------------------------------------------------

TEST(Xception, WarningNamesItsFunction) {
    EXPECT_EQ(stderr_of([] {
                  Xception::warning(
                      "Matrix4<real> Matrix4<real>::inverse() const [with real = float]",
                      "matrix appears to be singular; inverse may not be reliable");
              }),
              "warning: matrix appears to be singular; inverse may not be reliable in "
              "<Matrix4<real> Matrix4<real>::inverse() const [with real = float]>\n");
}

TEST(Xception, WarningFormatsItsText) {
    EXPECT_EQ(stderr_of([] { Xception::warning("100%s", "%s is %d%%", "it", 5); }),
              "warning: it is 5% in <100%s>\n");
    EXPECT_EQ(stderr_of([] { Xception::warning("f", "%s", ""); }), "warning:  in <f>\n");
}

TEST(Xception, WarningsHaveAnyLength) {
    const std::string text(100000, 'x');
    EXPECT_EQ(stderr_of([&] { Xception::warning("f", "%s", text.c_str()); }),
              "warning: " + text + " in <f>\n");
}

namespace {

// What each write to standard error carried while `action` ran.
template <class Action>
std::vector<std::string> stderr_writes_of(Action action) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
    const int saved = dup(2);
    dup2(ends[1], 2);
    action();
    dup2(saved, 2);
    close(saved);
    close(ends[1]);

    std::vector<std::string> writes;
    char piece[1000];
    for (ssize_t n; (n = recv(ends[0], piece, sizeof piece, MSG_DONTWAIT)) > 0;)
        writes.push_back(std::string(piece, n));
    close(ends[0]);
    return writes;
}

typedef std::vector<std::string> Writes;

} // namespace

TEST(Xception, WarningMakesThreeWrites) {
    EXPECT_EQ(stderr_writes_of([] { Xception::warning("void f()", "%d pieces", 3); }),
              Writes({"warning: ", "3 pieces", " in <void f()>\n"}));
}

TEST(Xception, DisplayErrorMakesOneWrite) {
    EXPECT_EQ(stderr_writes_of([] { Xception::display_error("Error", "text"); }),
              Writes({"Error: text\n"}));
}

// ---- The macros ------------------------------------------------------------------------------

TEST(XAssert, PassesWhenTheConditionHolds) {
    EXPECT_EQ(check_positive(1), 1);
    int evaluated = 0;
    XASSERT(++evaluated == 1);
    EXPECT_EQ(evaluated, 1);
}

TEST(XAssert, ThrowsTheExpressionAndItsPlace) {
    try {
        check_positive(0);
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, "value > 0");
        EXPECT_STREQ(x.file, "xception_test");
        EXPECT_STREQ(x.function, "int check_positive(int)");
        EXPECT_EQ(x.line, thrown_at);
    }
}

TEST(XAssert, IsCaughtAsTheBase) {
    try {
        check_positive(-1);
        FAIL();
    } catch (Xception& x) {
        EXPECT_EQ(stderr_of([&] { x.print(); }),
                  "Assertion Failed: 'value > 0' in <int check_positive(int)> (xception_test:" +
                      std::to_string(thrown_at) + ")\n");
    }
}

TEST(XAssert, SpellsTemplateArgumentsOut) {
    try {
        Scale<float>().of(Scale<float>());
        FAIL();
    } catch (AssertXception& x) {
#ifdef __clang__
        EXPECT_STREQ(x.function, "real Scale<float>::of(const Scale<real> &) const [real = float]");
#else
        EXPECT_STREQ(x.function, "real Scale<real>::of(const Scale<real>&) const "
                                 "[with real = float]");
#endif
        EXPECT_STREQ(x.expr, "sizeof(real) == 0");
    }
}

#define TEN 10
TEST(XAssert, KeepsTheExpressionAsWritten) {
    try {
        XASSERT(TEN < sizeof("a"));
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, "TEN < sizeof(\"a\")");
    }
}

TEST(XAssert, IsOneStatement) {
    int branch = 0;
    if (branch == 0)
        XASSERT(branch == 0);
    else
        branch = 2;
    EXPECT_EQ(branch, 0);
}

TEST(XThrow, FormatsTheMessageAndItsPlace) {
    const std::string message = message_of([] { refuse("a name", 3); });
    EXPECT_EQ(message, "a name refused at offset 3 in <void refuse(const char*, int)> "
                       "(xception_test:" +
                           std::to_string(thrown_at) + ")");
}

TEST(XThrow, NeedsNoArguments) {
    const std::string message = message_of([] { refuse_without_arguments(); });
    EXPECT_EQ(message, "refused in <void refuse_without_arguments()> (xception_test:" +
                           std::to_string(thrown_at) + ")");
}

TEST(XThrow, IsCaughtAsTheBase) {
    EXPECT_THROW(refuse_without_arguments(), Xception);
    EXPECT_THROW(refuse_without_arguments(), StrXception);
}

TEST(XThrow, TakesALocationOutright) {
    EXPECT_EQ(message_of([] { XTHROW_AT("void g()", 290, "%d", 5); }),
              "5 in <void g()> (xception_test:290)");
    try {
        XASSERT_AT(false, "m(0,3) == 0", "void g()", 133);
        FAIL();
    } catch (AssertXception& x) {
        EXPECT_STREQ(x.expr, "m(0,3) == 0");
        EXPECT_STREQ(x.function, "void g()");
        EXPECT_EQ(x.line, 133);
    }
}
