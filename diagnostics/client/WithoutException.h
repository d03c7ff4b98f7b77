#pragma once
// A report must not fail its caller, whatever the library or the memory does.

#include "platform/com/types.h"

namespace BugSlayerUtil {

// The body's status; E_FAIL when it throws, even what is no std::exception.
template <class Body>
HRESULT WithoutException(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return E_FAIL;
    }
}

} // namespace BugSlayerUtil
