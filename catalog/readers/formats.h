// SPDX-License-Identifier: BSD-3-Clause

// Opening a catalogue in any format that can be read; its first bytes decide which one it is.
//
// A new format is a file in this folder and an entry in the list in formats.cpp.
//
// Errors:    throws CatalogError and StrXception, see catalog/reader.h.
// Threads:   no shared state.
#pragma once

#include "catalog/reader.h"

#include <memory>
#include <string>

namespace velmora {

// Opens the catalogue at `path`. An empty file and one in no known format are errors.
std::unique_ptr<StarReader> open_catalog(const std::string& path);

} // namespace velmora
