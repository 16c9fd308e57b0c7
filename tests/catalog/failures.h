// SPDX-License-Identifier: BSD-3-Clause

// What an expression that must fail says.
#pragma once

#include "catalog/catalog_error.h"
#include "tests/message_of.h"

#include <string>

namespace velmora {

// The whole text of the CatalogError that `work` throws, "no error" without one.
template <class Work>
std::string catalog_error_of(Work work) {
    try {
        work();
    } catch (const CatalogError& error) {
        return error.what();
    }
    return "no error";
}

} // namespace velmora
