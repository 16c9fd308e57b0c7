// SPDX-License-Identifier: BSD-3-Clause

// Exceptions of the catalogue library as failures of a command.
//
// Errors:    WorkFailure naming the file.
#pragma once

#include "catalog/catalog_error.h"
#include "tools/failure.h"

namespace velmora {

// Runs `work` on the file at `path`; what goes wrong becomes a failure that names the file.
template <class Work>
auto working_on(const std::string& path, Work work) -> decltype(work()) {
    try {
        return work();
    } catch (const CatalogError& error) {
        throw WorkFailure(error.where, error.why);
    } catch (const Xception& exception) {
        throw WorkFailure(path, system_reason_of(exception));
    }
}

} // namespace velmora
