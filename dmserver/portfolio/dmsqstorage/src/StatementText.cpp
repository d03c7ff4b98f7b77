#include "StatementText.h"

#include "platform/crash.h"

#include <algorithm>
#include <cwchar>
#include <stdexcept>

namespace sqStorage {

std::wstring FormatText(const wchar_t* format, fmt::wprintf_args arguments) {
    return fmt::vsprintf(fmt::wstring_view(format), arguments);
}

namespace detail {

void CopyWhole(std::wstring_view text, wchar_t* buffer, std::size_t capacity) {
    if (text.size() >= capacity) {
        platform::ReportInvalidParameter(L"statement fits its buffer", L"sqStorage::CStatement");
        throw std::length_error("the statement has " + std::to_string(text.size()) +
                                " characters and its buffer takes " + std::to_string(capacity - 1) +
                                "; shorten the texts that go into it");
    }
    CopyTruncated(text, buffer, capacity);
}

void CopyTruncated(std::wstring_view text, wchar_t* buffer, std::size_t capacity) {
    const std::size_t count = std::min(text.size(), capacity - 1);
    std::wmemcpy(buffer, text.data(), count);
    buffer[count] = 0;
}

} // namespace detail

void DoubleSingleQuotes(const wchar_t* Source, wchar_t* Destination) {
    if (!Source || !Destination)
        return;
    for (; *Source; ++Source) {
        *Destination++ = *Source;
        if (*Source == L'\'')
            *Destination++ = L'\'';
    }
    *Destination = 0;
}

void DoubleSingleQuotes(std::wstring& Text) {
    for (std::size_t at = Text.find(L'\''); at != std::wstring::npos; at = Text.find(L'\'', at + 2))
        Text.insert(at, 1, L'\'');
}

CQuoted::CQuoted(const wchar_t* text) {
    if (!text)
        return;
    m_Text.resize(std::wcslen(text) * 2 + 2);
    DoubleSingleQuotes(text, m_Text.data());
    m_Text.resize(std::wcslen(m_Text.c_str()));
}

} // namespace sqStorage
