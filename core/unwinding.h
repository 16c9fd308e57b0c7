// For destructors that may throw: whether they must not, because an exception is on its way
// already.
#pragma once

#include <exception>

namespace velmora {

inline bool unwinding() {
    return std::uncaught_exceptions() > 0;
}

} // namespace velmora
