// SPDX-License-Identifier: BSD-3-Clause

// The system calls as the library makes them in this program: every call is written down, and any
// of them can be made to fail. The linker's --wrap puts it in front of libc's.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

class SystemCalls {
public:
    SystemCalls();  // starts to write calls down
    ~SystemCalls(); // stops

    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // The `nth` call of `name` from now on, counted from 1, does nothing and returns `result` with
    // errno `error`, having put the bytes of `output` where it was to put something. Calls that
    // return a pointer return null.
    void answer(const std::string& name, int nth, long result, int error,
                const std::string& output = "");

    // As answer with -1, the usual failure.
    void fail(const std::string& name, int error, int nth = 1) { answer(name, nth, -1, error); }

    // From now on no call of `name` (read, pread, write, pwrite) moves more than `most` bytes.
    void shorten(const std::string& name, std::size_t most) { shortened[name] = most; }

    // Kills the process, as kill -9 does, before the `nth` call from now on, whatever its name.
    void kill_before(int nth) { calls_to_live = nth; }

    // Calls so far, each as "name(arguments)".
    std::vector<std::string> made;

    // How often `name` was called.
    int count(const std::string& name) const;

    // The names of the calls so far, each followed by a space.
    std::string names() const;

    // Ranges mapped and not unmapped since the start.
    int mappings;

    // For the calls: writes one down; true when it is answered by `result`, errno and `output`.
    bool answers(const std::string& name, const std::string& arguments, long& result,
                 void* output = nullptr, std::size_t room = 0);

    // For the calls: how many of `n` bytes one may move.
    std::size_t moved(const std::string& name, std::size_t n) const;

private:
    struct Answer {
        long result;
        int error;
        std::string output;
    };
    std::map<std::string, int> calls;
    std::map<std::pair<std::string, int>, Answer> answered;
    std::map<std::string, std::size_t> shortened;
    int calls_to_live;
};
