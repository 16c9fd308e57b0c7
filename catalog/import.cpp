// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/import.h"

#include "catalog/reader.h"
#include "catalog/readers/formats.h"
#include "catalog/record_maker.h"

#include <memory>

namespace velmora {

void import_catalog(const std::string& path, ImportedStars& stars) {
    // The reader decides the format; from here on every catalogue is the same.
    const std::unique_ptr<StarReader> reader = open_catalog(path);
    CatalogStar row;
    while (reader->next(row)) {
        const star record = record_of(row);
        stars.records.push_back(record);
        stars.known_distances += record.distance > 0;
        stars.known_colors += row.bv.has_value();
    }
}

} // namespace velmora
