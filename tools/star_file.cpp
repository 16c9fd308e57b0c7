#include "tools/star_file.h"

#include "catalog/database_file.h"
#include "tools/catalog_failure.h"

#include <filesystem>

namespace velmora {

std::string default_star_file() {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    const std::filesystem::path prefix = program.parent_path().parent_path();
    return (prefix / "share" / "velmora" / "stars.velmora").string();
}

std::unique_ptr<StarInput> open_star_file(const std::string& path) {
    return working_on(path, [&] {
        check_star_database(path);
        return std::unique_ptr<StarInput>(op_stars_file_input(path.c_str()));
    });
}

} // namespace velmora
