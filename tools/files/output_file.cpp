// SPDX-License-Identifier: BSD-3-Clause
#include "tools/files/output_file.h"

#include "osapi/temporary_file.h"
#include "osapi/whole_file.h"
#include "tools/failure.h"

#include <filesystem>

namespace velmora {

namespace fs = std::filesystem;

// Renaming would replace a device by a plain file, so only plain files are replaced.
static void refuse_special(const std::string& path) {
    std::error_code error;
    if (fs::symlink_status(path, error).type() == fs::file_type::none)
        throw WorkFailure(path, error.message());
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status))
        throw WorkFailure(path, "Is a directory");
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw WorkFailure(path, "not a regular file");
}

// Another writer's lock, or something that is no temporary file of ours.
static void refuse_taken_temporary(const std::string& path) {
    const std::string obstacle = obstacle_to_temporary_of(path);
    if (!obstacle.empty())
        throw WorkFailure(temporary_name_of(path), obstacle);
}

// Neither the file nor the temporary one may be an input.
static void refuse_input(const std::string& path, const std::string& input) {
    std::error_code ignored;
    if (fs::equivalent(path, input, ignored))
        throw UsageFailure(path, "is read by the same command, and would be overwritten");
    if (fs::equivalent(temporary_name_of(path), input, ignored))
        throw UsageFailure(temporary_name_of(path),
                           "is read by the same command, and would be overwritten while " + path +
                               " is being written");
}

void check_output(const std::string& path, const std::vector<std::string>& inputs) {
    // An input would be lost, whatever else there is.
    for (const std::string& input : inputs)
        refuse_input(path, input);
    refuse_special(path);
    std::error_code ignored;
    const fs::path folder = fs::path(path).parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ignored))
        throw WorkFailure(path, "there is no folder " + folder.string());
    refuse_taken_temporary(path);
}

void write_file(const std::string& path, const std::string& bytes) {
    refuse_special(path);
    refuse_taken_temporary(path);
    const SignalsHeld held;
    try {
        write_whole_file(path.c_str(),
                         [&](OSAPI::fd_t fd) { OSAPI::write(fd, bytes.data(), bytes.size()); });
    } catch (const Xception& exception) {
        throw WorkFailure(path, system_reason_of(exception));
    }
}

SignalsHeld::SignalsHeld() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before);
}

SignalsHeld::~SignalsHeld() {
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

} // namespace velmora
