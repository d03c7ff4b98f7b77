#include "platform/com/com_error.h"

#include "platform/text.h"

#include <fmt/format.h>
#include <new>

namespace platform {

namespace {

std::string Describe(HRESULT code, const std::wstring& text) {
    std::string what = fmt::format("0x{:08X}", static_cast<std::uint32_t>(code));
    if (text.empty())
        return what;
    // The status must get through whatever the text holds.
    try {
        return what + ": " + ToUtf8(text);
    } catch (const CTextError&) {
        return what;
    }
}

} // namespace

CComError::CComError(HRESULT code, std::wstring text)
    : m_Code(code), m_Text(std::move(text)), m_What(Describe(code, m_Text)) {}

HRESULT StatusOfException() noexcept {
    try {
        throw;
    } catch (const CComError& error) {
        return error.Code();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

void ThrowStatus(HRESULT code, std::wstring text) { throw CComError(code, std::move(text)); }

} // namespace platform
