// Files that the tools write: checked before the work, and appearing whole or not at all.
//
// Errors:    WorkFailure(path, reason), where the reason is the system's, such as "No space left on
//            device"; UsageFailure for an output that would replace an input.
#pragma once

#include <csignal>
#include <string>
#include <vector>

namespace velmora {

// Finds out what would make writing `path` fail: no folder for it or one that may not be used, a
// folder, device or pipe in its place, a name too long for the suffix of the temporary file,
// something in that file's place, or that one of the `inputs` has either name.
void check_output(const std::string& path, const std::vector<std::string>& inputs);

// Writes `bytes` as write_whole_file does. A symbolic link is replaced, not followed; a device, pipe
// or folder is refused. Where nothing may be written, or another process is writing `path`, the file
// that was there is unchanged.
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
