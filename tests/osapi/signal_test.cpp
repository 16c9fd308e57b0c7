// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/osapi.h"

#include "tests/message_of.h"
#include "tests/osapi/place.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

using OSAPI::Signal;
using OSAPI::SignalDefault;
using OSAPI::SignalHandler;
using OSAPI::SignalIgnore;

namespace {

volatile sig_atomic_t last = 0;

void note_one(int) {
    last = 1;
}

void note_two(int) {
    last = 2;
}

struct sigaction disposition(int signum) {
    struct sigaction now;
    sigaction(signum, nullptr, &now);
    return now;
}

// Not among what the caller chose; the C library sets it.
const int restorer = 0x04000000;

const std::string in_install = in("void OSAPI::Signal::install(const sigaction*)");

TEST(Signal, HoldsTheOldActionThenTheSignal) {
    const Signal held(SIGUSR1);
    const char* base = reinterpret_cast<const char*>(&held);
    EXPECT_EQ(reinterpret_cast<const char*>(&held.old_action) - base, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&held.signum) - base, 8);
    EXPECT_EQ(held.signum, SIGUSR1);
    EXPECT_NE(held.old_action, nullptr);
    EXPECT_EQ(sizeof(SignalIgnore), sizeof(Signal));
    EXPECT_EQ(sizeof(SignalDefault), sizeof(Signal));
    EXPECT_EQ(sizeof(SignalHandler), sizeof(Signal));
    EXPECT_TRUE((std::is_base_of<Signal, SignalIgnore>::value));
    EXPECT_TRUE((std::is_base_of<Signal, SignalDefault>::value));
    EXPECT_TRUE((std::is_base_of<Signal, SignalHandler>::value));
    EXPECT_FALSE(std::is_polymorphic<Signal>::value);
    EXPECT_FALSE(std::is_copy_constructible<Signal>::value);
}

TEST(Signal, InstallsNothingByItselfAndThenRestoresNothing) {
    const SignalHandler outer(SIGUSR1, note_one, true);
    { const Signal idle(SIGUSR1); }
    EXPECT_EQ(disposition(SIGUSR1).sa_handler, note_one);
}

TEST(Signal, InstallsAnyActionAndRestoresTheOneBefore) {
    const SignalHandler outer(SIGUSR1, note_one, true);
    {
        Signal inner(SIGUSR1);
        struct sigaction action = {};
        action.sa_handler = note_two;
        action.sa_flags = SA_RESETHAND;
        inner.install(&action);
        EXPECT_EQ(inner.old_action->sa_handler, note_one);
        EXPECT_EQ(disposition(SIGUSR1).sa_handler, note_two);
        raise(SIGUSR1);
        EXPECT_EQ(last, 2);
    }
    raise(SIGUSR1);
    EXPECT_EQ(last, 1);
}

TEST(Signal, ThrowsForWhatCannotBeInstalled) {
    for (const int signum : {SIGKILL, SIGSTOP, 1000, 0, -1}) {
        const std::string message =
            "sigaction(" + std::to_string(signum) + "): Invalid argument" + in_install;
        EXPECT_EQ(message_without_line_of([&] { SignalIgnore guard(signum); }), message);
        EXPECT_EQ(message_without_line_of([&] { SignalHandler guard(signum, note_one, false); }),
                  message);
        EXPECT_EQ(message_without_line_of([&] { SignalDefault guard(signum); }), message);
    }
}

TEST(SignalGuards, InstallTheirHandlerAndRestartCallsAsTheySay) {
    const struct {
        std::shared_ptr<Signal> guard;
        int signum;
        void (*handler)(int);
        int flags;
    } cases[] = {
        {std::make_shared<SignalIgnore>(SIGUSR1), SIGUSR1, SIG_IGN, SA_RESTART},
        {std::make_shared<SignalDefault>(SIGUSR2), SIGUSR2, SIG_DFL, SA_RESTART},
        {std::make_shared<SignalHandler>(SIGHUP, note_one, true), SIGHUP, note_one, SA_RESTART},
        {std::make_shared<SignalHandler>(SIGWINCH, note_two, false), SIGWINCH, note_two, 0},
    };
    for (const auto& c : cases) {
        const struct sigaction now = disposition(c.signum);
        EXPECT_EQ(now.sa_handler, c.handler) << c.signum;
        EXPECT_EQ(now.sa_flags & ~restorer, c.flags) << c.signum;
    }
}

TEST(SignalGuards, WorkWhileTheyLive) {
    const SignalHandler outer(SIGUSR1, note_one, true);
    last = 0;
    {
        const SignalIgnore ignored(SIGUSR1);
        raise(SIGUSR1);
        EXPECT_EQ(last, 0);
        {
            const SignalHandler inner(SIGUSR1, note_two, false);
            raise(SIGUSR1);
            EXPECT_EQ(last, 2);
        }
        last = 0;
        raise(SIGUSR1);
        EXPECT_EQ(last, 0);
        {
            const SignalDefault standard(SIGUSR1);
            EXPECT_EQ(disposition(SIGUSR1).sa_handler, SIG_DFL);
        }
        EXPECT_EQ(disposition(SIGUSR1).sa_handler, SIG_IGN);
    }
    raise(SIGUSR1);
    EXPECT_EQ(last, 1);
}

TEST(SignalGuards, RestoreWhenAnExceptionPasses) {
    const SignalHandler outer(SIGUSR1, note_one, true);
    EXPECT_THROW(
        {
            const SignalIgnore ignored(SIGUSR1);
            throw std::runtime_error("on the way");
        },
        std::runtime_error);
    EXPECT_EQ(disposition(SIGUSR1).sa_handler, note_one);
}

// Each puts back what it found, so the order of their going is the caller's to keep.
TEST(SignalGuards, GoneInTheWrongOrderLeaveTheWrongDisposition) {
    const SignalHandler outermost(SIGUSR1, SIG_IGN, true);
    auto first = std::make_unique<SignalHandler>(SIGUSR1, note_one, true);
    auto second = std::make_unique<SignalHandler>(SIGUSR1, note_two, true);
    first.reset();
    EXPECT_EQ(disposition(SIGUSR1).sa_handler, SIG_IGN);
    second.reset();
    EXPECT_EQ(disposition(SIGUSR1).sa_handler, note_one);
}

} // namespace
