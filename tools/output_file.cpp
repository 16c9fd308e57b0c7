#include "tools/output_file.h"

#include "osapi/whole_file.h"
#include "tools/failure.h"

#include <filesystem>

namespace velmora {

namespace fs = std::filesystem;

// Renaming would put a plain file in the place of a device, so what is there must be one already.
static void refuse_special(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status))
        throw WorkFailure(path, "Is a directory");
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw WorkFailure(path, "not a regular file");
}

// The unfinished file gets its bytes only if nothing else has its name: a link would lead them
// away.
static void refuse_taken_temporary(const std::string& path) {
    const std::string temporary = path + ".inprogress";
    std::error_code error;
    const fs::file_status status = fs::symlink_status(temporary, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw WorkFailure(temporary, "is in the way, and is not a regular file");
}

void check_output(const std::string& path, const std::vector<std::string>& inputs) {
    std::error_code ignored;
    for (const std::string& input : inputs)
        if (fs::equivalent(path, input, ignored))
            throw UsageFailure(path, "is read by the same command, and would be overwritten");
    refuse_special(path);
    refuse_taken_temporary(path);
    const fs::path folder = fs::path(path).parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ignored))
        throw WorkFailure(path, "there is no folder " + folder.string());
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
