// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/readers/formats.h"

#include "catalog/readers/star_table.h"
#include "catalog/source_file.h"

#include <string_view>
#include <utility>

namespace velmora {

namespace {

struct Format {
    const char* description; // its files, in the plural, and how to recognise one
    bool (*recognises)(std::string_view head);
    std::unique_ptr<StarReader> (*open)(std::unique_ptr<SourceFile> file);
};

} // namespace

template <class Reader>
static std::unique_ptr<StarReader> open_as(std::unique_ptr<SourceFile> file) {
    return std::make_unique<Reader>(std::move(file));
}

// The first format that recognises a file reads it.
static const Format formats[] = {
    {"star tables, which begin with the line \"hip,ra,dec,vmag,bv,plx,e_plx,name\"",
     StarTable::recognises, open_as<StarTable>},
};

static std::string list_of_formats() {
    std::string list;
    for (const Format& format : formats)
        list += (list.empty() ? "" : ", and ") + std::string(format.description);
    return list;
}

std::unique_ptr<StarReader> open_catalog(const std::string& path) {
    auto file = std::make_unique<SourceFile>(path);
    const std::string_view head = file->head();
    if (head.empty())
        file->fail("the file is empty");
    for (const Format& format : formats)
        if (format.recognises(head))
            return format.open(std::move(file));
    file->fail("the kind of file is unknown; supported are " + list_of_formats());
}

} // namespace velmora
