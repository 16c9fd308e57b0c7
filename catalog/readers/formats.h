// The formats of catalogue that can be read; a file's first bytes decide which of them it is in.
//
// A new format is one file in this folder and one entry in formats.cpp.
#pragma once

#include "catalog/reader.h"

#include <memory>
#include <string>

namespace velmora {

// Opens the catalogue at `path`. Throws CatalogError for an empty file and for one in no known
// format, and what its reader throws.
std::unique_ptr<StarReader> open_catalog(const std::string& path);

} // namespace velmora
