// The system calls as the library makes them in this program: every call is written down, and any
// of them can be made to fail. The linker's --wrap puts it in front of libc's.
#pragma once

#include <map>
#include <string>
#include <vector>

class SystemCalls {
public:
    SystemCalls();  // starts to write calls down
    ~SystemCalls(); // stops

    SystemCalls(const SystemCalls&) = delete;
    SystemCalls& operator=(const SystemCalls&) = delete;

    // The `nth` call of `name` from now on, counted from 1, does nothing and returns `result` with
    // errno `error`.
    void answer(const std::string& name, int nth, long result, int error);

    // As answer with -1, the usual failure.
    void fail(const std::string& name, int error, int nth = 1) { answer(name, nth, -1, error); }

    // Calls so far, each as "name(arguments)".
    std::vector<std::string> made;

    // How often `name` was called.
    int count(const std::string& name) const;

    // Ranges mapped and not unmapped since the start.
    int mappings;

    // Writes a call down; true when it is answered by `result` and errno.
    bool answers(const std::string& name, const std::string& arguments, long& result);

private:
    struct Answer {
        long result;
        int error;
    };
    std::map<std::string, int> calls;
    std::map<std::pair<std::string, int>, Answer> answered;
};
