// SPDX-License-Identifier: BSD-3-Clause
#include "tools/files/star_database.h"

#include "catalog/database_file.h"
#include "tools/files/catalog_failure.h"

namespace velmora {

std::size_t stars_in(const std::string& path) {
    return working_on(path, [&] { return std::size_t(stars_in_database(path)); });
}

} // namespace velmora
