// Where exceptions end: a carrier answers with a status and raises nothing.
#pragma once

#include "platform/com/com_error.h"

#include <new>
#include <stdexcept>

namespace IDM_dmudfcom {

template <class Operation>
HRESULT Guarded(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (const platform::CComError& error) {
        return error.Code();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::length_error&) {
        return E_OUTOFMEMORY;
    } catch (const std::invalid_argument&) {
        return E_INVALIDARG;
    } catch (...) {
        return E_FAIL;
    }
}

} // namespace IDM_dmudfcom
