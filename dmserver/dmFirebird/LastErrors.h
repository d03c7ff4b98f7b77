// What went wrong last, for each thread and database; and the guard that turns exceptions into it.
#pragma once

#include "DatabaseError.h"

#include <cstdint>
#include <new>
#include <string>

namespace IDM_dmFirebird {

// One database object's own place in each thread.
class CLastErrors {
public:
    CLastErrors();

    void Remember(std::wstring text) const;
    // Empty when no call has failed on this thread.
    std::wstring Recall() const;

private:
    const std::uint64_t m_Owner;
};

// The body of an interface method: whatever it raises becomes a status and the text of LastError.
template <class Body>
HRESULT Guard(const CLastErrors& errors, Body body) {
    try {
        body();
        return S_OK;
    } catch (const CDatabaseError& error) {
        errors.Remember(error.Text());
        return error.Status();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& error) {
        const std::string text = error.what();
        errors.Remember(std::wstring(text.begin(), text.end()));
        return E_FAIL;
    }
}

} // namespace IDM_dmFirebird
