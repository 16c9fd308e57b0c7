#include "tools/star_file.h"

#include "tools/failure.h"

#include <filesystem>

namespace velmora {

std::string default_star_file() {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    const std::filesystem::path prefix = program.parent_path().parent_path();
    return (prefix / "share" / "velmora" / "stars.velmora").string();
}

std::unique_ptr<StarInput> open_star_file(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        throw WorkFailure(path, "is a directory, not a star database");
    if (std::filesystem::is_regular_file(path, ignored)) {
        const auto size = std::filesystem::file_size(path, ignored);
        if (!ignored && size < sizeof(star))
            throw WorkFailure(path, "is too short for a star database: " + std::to_string(size) +
                                        " bytes, the header alone takes 32");
    }

    std::unique_ptr<StarInput> input;
    try {
        input.reset(op_stars_file_input(path.c_str()));
    } catch (const Xception& failure) {
        throw WorkFailure("star database", reason_of(failure));
    }
    if (!input->is_valid())
        throw WorkFailure(path,
                          "is not a star database: it begins with neither VELMORA1 nor VELMORA2");
    input->reset();
    return input;
}

} // namespace velmora
