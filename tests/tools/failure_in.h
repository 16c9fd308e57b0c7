// SPDX-License-Identifier: BSD-3-Clause

// What a command would say about an action that must fail.
#pragma once

#include "tools/failure.h"

#include <string>

// "usage: " or "work: " and the message of the Failure that `action` throws.
template <class Action>
std::string failure_in(Action action) {
    try {
        action();
    } catch (const velmora::UsageFailure& failure) {
        return std::string("usage: ") + failure.what();
    } catch (const velmora::Failure& failure) {
        return std::string("work: ") + failure.what();
    }
    return "(no failure)";
}
