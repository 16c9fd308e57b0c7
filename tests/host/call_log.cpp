// SPDX-License-Identifier: BSD-3-Clause
#include "tests/host/call_log.h"

#include <mutex>
#include <utility>

static std::mutex lock;
static std::vector<std::string> calls;

void log_call(const std::string& call) {
    const std::lock_guard<std::mutex> guard(lock);
    calls.push_back(call);
}

std::vector<std::string> taken_calls() {
    const std::lock_guard<std::mutex> guard(lock);
    return std::exchange(calls, {});
}
