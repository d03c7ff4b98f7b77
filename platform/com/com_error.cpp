#include "platform/com/com_error.h"

#include "platform/text.h"

#include <fmt/format.h>

namespace platform {

namespace {

std::string Describe(HRESULT code, const std::wstring& text) {
    std::string what = fmt::format("0x{:08X}", static_cast<std::uint32_t>(code));
    if (!text.empty())
        what += ": " + ToUtf8(text);
    return what;
}

} // namespace

CComError::CComError(HRESULT code, std::wstring text)
    : m_Code(code), m_Text(std::move(text)), m_What(Describe(code, m_Text)) {}

void ThrowStatus(HRESULT code, std::wstring text) { throw CComError(code, std::move(text)); }

} // namespace platform
