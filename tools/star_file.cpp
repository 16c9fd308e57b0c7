#include "tools/star_file.h"

#include "catalog/database_file.h"
#include "stars/starfile.h"
#include "tools/catalog_failure.h"

namespace velmora {

std::filesystem::path program_prefix() {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
    return program.parent_path().parent_path();
}

std::string default_star_file() {
    return (program_prefix() / "share" / "velmora" / "stars.velmora").string();
}

std::size_t stars_in(const std::string& path) {
    return working_on(path, [&] {
        check_star_database(path);
        return std::size_t(std::filesystem::file_size(path)) / sizeof(star) - 1;
    });
}

} // namespace velmora
