#include "tools/text_file.h"

#include "osapi/osapi.h"
#include "tools/failure.h"

#include <filesystem>

namespace velmora {

static const uword largest_file = uword(1) << 30;
static const int block_size = 65536;

// A pipe would be waited for, and a device may have no end.
static void check_is_regular(const std::string& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_directory(status) &&
        !std::filesystem::is_regular_file(status))
        throw WorkFailure(path, "is not a regular file");
}

std::string read_text_file(const std::string& path) {
    check_is_regular(path);
    try {
        OSAPI::DiskFile file;
        file.init(OSAPI::open(path.c_str(), OSAPI::OPEN_READ));
        if (OSAPI::getsize(file.fd) > largest_file)
            throw WorkFailure(path, "is larger than 1 GiB");
        OSAPI::FileInput input(file);
        BufferedInput buffered(input, block_size);
        std::string text;
        char block[block_size / 4];
        for (int count; (count = buffered.read(block, sizeof block)) > 0;)
            text.append(block, std::size_t(count));
        return text;
    } catch (const Xception& exception) {
        throw WorkFailure(path, system_reason_of(exception));
    }
}

} // namespace velmora
