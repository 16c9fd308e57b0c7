// What an expression that must fail says.
#pragma once

#include "catalog/catalog_error.h"
#include "core/xception.h"

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

// The text of the StrXception that `work` throws, without the place that raised it; "no error"
// without one.
template <class Work>
std::string xception_of(Work work) {
    try {
        work();
    } catch (const StrXception& exception) {
        const std::string message = exception.message.str;
        return message.substr(0, message.rfind(" in <"));
    }
    return "no error";
}

} // namespace velmora
