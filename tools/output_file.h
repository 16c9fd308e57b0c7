// Files that the tools write: checked before the work, and appearing whole or not at all.
//
// Errors:    WorkFailure(path, reason), where the reason is the system's, such as "No space left on
//            device"; UsageFailure for an output that would replace an input.
#pragma once

#include <csignal>
#include <string>
#include <vector>

namespace velmora {

// Finds out what would make writing `path` fail: no folder for it, a folder, device or pipe in its
// place, or that it is one of the `inputs`.
void check_output(const std::string& path, const std::vector<std::string>& inputs);

// Writes `bytes` beside `path`, waits until they are on the medium, and renames. A symbolic link is
// replaced, not followed; a device, pipe or folder is refused. On failure the file that stood there
// before still does, and nothing else is left behind.
void write_file(const std::string& path, const std::string& bytes);

// While it lives, the signals by which users end a program wait: a file that is being written is
// finished or cleaned up first.
class SignalsHeld {
public:
    SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld();

private:
    sigset_t before;
};

} // namespace velmora
