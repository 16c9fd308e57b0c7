// SPDX-License-Identifier: BSD-3-Clause
#include "osapi/failure.h"
#include "osapi/osapi.h"

#include <csignal>

namespace OSAPI {

// SIG_ERR is not a disposition: it marks that none has been saved.
Signal::Signal(int signum) : old_action(new struct ::sigaction()), signum(signum) {
    old_action->sa_handler = SIG_ERR;
}

Signal::~Signal() {
    if (old_action->sa_handler != SIG_ERR)
        sigaction(signum, old_action, nullptr);
    delete old_action;
}

void Signal::install(const struct ::sigaction* action) {
    if (sigaction(signum, action, old_action) == -1)
        XTHROW_ERRNO("sigaction(%d)", signum);
}

// An action that blocks the signal itself, and no other, while the handler runs.
static struct ::sigaction action_of(int signum, void (*handler)(int), bool restart) {
    struct ::sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaddset(&action.sa_mask, signum);
    action.sa_flags = restart ? SA_RESTART : 0;
    return action;
}

SignalIgnore::SignalIgnore(int signum) : Signal(signum) {
    const struct ::sigaction action = action_of(signum, SIG_IGN, true);
    install(&action);
}

SignalDefault::SignalDefault(int signum) : Signal(signum) {
    const struct ::sigaction action = action_of(signum, SIG_DFL, true);
    install(&action);
}

SignalHandler::SignalHandler(int signum, void (*handler)(int), bool restart) : Signal(signum) {
    const struct ::sigaction action = action_of(signum, handler, restart);
    install(&action);
}

} // namespace OSAPI
