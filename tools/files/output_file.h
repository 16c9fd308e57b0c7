// SPDX-License-Identifier: BSD-3-Clause

// Files that the tools write: checked before the work, and appearing whole or not at all.
//
// Errors:    WorkFailure(path, reason), where the reason is the system's, such as "No space left on
//            device"; UsageFailure for an output that would replace an input.
#pragma once

#include <csignal>
#include <string>
#include <vector>

namespace velmora {

// Throws where writing `path` would fail: a folder that is missing or not accessible; a folder,
// device or pipe at `path`; a name too long for the temporary file's suffix; an obstacle at the
// temporary name; one of the `inputs` at either name.
void check_output(const std::string& path, const std::vector<std::string>& inputs);

// Writes `bytes` as write_whole_file does. A symbolic link is replaced, not followed; a device, pipe
// or folder is refused. Where nothing may be written, or another process is writing `path`, the file
// that was there is unchanged.
void write_file(const std::string& path, const std::string& bytes);

// Blocks SIGINT, SIGTERM, SIGHUP and SIGQUIT while it lives, so that a file being written is
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
