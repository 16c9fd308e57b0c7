#include "tools/files/star_database.h"

#include "catalog/database_file.h"
#include "stars/starfile.h"
#include "tools/files/catalog_failure.h"

#include <filesystem>

namespace velmora {

std::size_t stars_in(const std::string& path) {
    return working_on(path, [&] {
        check_star_database(path);
        return std::size_t(std::filesystem::file_size(path)) / sizeof(star) - 1;
    });
}

} // namespace velmora
