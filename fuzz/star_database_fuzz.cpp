// SPDX-License-Identifier: BSD-3-Clause

// Any bytes read as a star database: the inspector's figures add up, and the renderer's reader
// sees the same stars.
#include "catalog/catalog_error.h"
#include "catalog/database_info.h"
#include "catalog/database_record.h"
#include "core/xception.h"
#include "fuzz/law.h"
#include "fuzz/memory_file.h"

#include <optional>

using namespace velmora;

static std::optional<DatabaseInfo> inspect(const std::string& path) {
    try {
        return inspect_star_database(path);
    } catch (const CatalogError&) {
        return std::nullopt;
    }
}

static void check_counts(const DatabaseInfo& info, size_t size) {
    require(info.version == 1 || info.version == 2, "there are two versions");
    require((info.stars + 1) * record_size + info.trailing_bytes == size, "every byte is counted");
    require(info.known_distances <= info.stars, "no more distances than stars");

    u64 in_table = 0;
    for (const auto& magnitude : info.magnitudes)
        in_table += magnitude.second;
    require(in_table + info.dark.count <= info.stars, "a star is dark or has a magnitude");

    for (const Oddity& oddity : {info.out_of_order, info.nan, info.infinite, info.ra_outside,
                                 info.dec_outside, info.dark, info.distance_unknown}) {
        require(oddity.count <= info.stars, "no more odd stars than stars");
        require((oddity.first > 0) == (oddity.count > 0), "an oddity has a first star");
        require(oddity.count == 0 || oddity.first + oddity.count <= info.stars + 1,
                "the odd stars stand from the first of them on");
    }
    const std::string text = describe(info);
    require(!text.empty() && text.back() == '\n', "a description is whole lines");
}

static void check_reader(const DatabaseInfo& info, const std::string& path) {
    MMAPStarFile file(path.c_str());
    require(file.is_valid(), "the renderer takes what the inspector takes");
    require(file.version2 == (info.version == 2), "both see the same version");
    require(file.count == info.stars + 1, "both see as many records");
    u64 dark = 0;
    for (u64 number = 1; number <= info.stars; number++)
        dark += file.next()->flux <= 0;
    require(dark == info.dark.count, "both see the same stars");
}

// The inspector refuses files too short for a header; the reader requires only the magic.
static void check_refusal(const std::string& path, size_t size) {
    try {
        MMAPStarFile file(path.c_str());
        require(!file.is_valid() || size < record_size, "both refuse what is no star database");
    } catch (const StrXception&) {
        require(size < 8, "only a file without room for the magic is not opened");
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const MemoryFile bytes(data, size);
    const std::optional<DatabaseInfo> info = inspect(bytes.path());
    if (!info) {
        check_refusal(bytes.path(), size);
        return 0;
    }
    check_counts(*info, size);
    check_reader(*info, bytes.path());
    return 0;
}
