#include "tools/output_file.h"

#include "osapi/whole_file.h"
#include "tools/failure.h"

#include <filesystem>

namespace velmora {

// Renaming would put a plain file in the place of a device, so what is there must be one already.
static void refuse_special(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status))
        throw WorkFailure(path, "Is a directory");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw WorkFailure(path, "not a regular file");
}

// Without the call and its arguments, which name a file that the user did not.
static std::string system_reason(const Xception& exception) {
    const std::string reason = reason_of(exception);
    const std::size_t colon = reason.rfind(": ");
    return colon == std::string::npos ? reason : reason.substr(colon + 2);
}

void write_file(const std::string& path, const std::string& bytes) {
    refuse_special(path);
    try {
        write_whole_file(path.c_str(),
                         [&](OSAPI::fd_t fd) { OSAPI::write(fd, bytes.data(), bytes.size()); });
    } catch (const Xception& exception) {
        throw WorkFailure(path, system_reason(exception));
    }
}

} // namespace velmora
