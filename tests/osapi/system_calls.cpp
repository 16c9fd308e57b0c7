// SPDX-License-Identifier: BSD-3-Clause
#include "tests/osapi/system_calls.h"
#include "tests/osapi/wrapped_calls.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

SystemCalls* active_system_calls = nullptr;

SystemCalls::SystemCalls() : mappings(0), calls_to_live(0) {
    active_system_calls = this;
}

SystemCalls::~SystemCalls() {
    active_system_calls = nullptr;
}

void SystemCalls::answer(const std::string& name, int nth, long result, int error,
                         const std::string& output) {
    answered[{name, calls[name] + nth}] = {result, error, output};
}

int SystemCalls::count(const std::string& name) const {
    const auto found = calls.find(name);
    return found == calls.end() ? 0 : found->second;
}

std::string SystemCalls::names() const {
    std::string names;
    for (const std::string& call : made)
        names += call.substr(0, call.find('(')) + ' ';
    return names;
}

bool SystemCalls::answers(const std::string& name, const std::string& arguments, long& result,
                          void* output, std::size_t room) {
    if (calls_to_live > 0 && --calls_to_live == 0)
        raise(SIGKILL);
    made.push_back(name + "(" + arguments + ")");
    const auto found = answered.find({name, ++calls[name]});
    if (found == answered.end())
        return false;
    const Answer& answer = found->second;
    if (!answer.output.empty())
        std::memcpy(output, answer.output.data(), std::min(room, answer.output.size()));
    result = answer.result;
    errno = answer.error;
    return true;
}

std::size_t SystemCalls::moved(const std::string& name, std::size_t n) const {
    const auto found = shortened.find(name);
    return found == shortened.end() ? n : std::min(n, found->second);
}
