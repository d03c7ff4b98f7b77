#include "platform/com/bstr.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>
#include <new>

namespace {

// The length stands in the four bytes before the text; sixteen bytes are taken so that the text stays aligned.
constexpr std::size_t HeaderSize = 16;

std::byte* BlockOf(BSTR text) { return reinterpret_cast<std::byte*>(text) - HeaderSize; }

} // namespace

BSTR SysAllocStringLen(const wchar_t* text, UINT length) {
    const std::size_t bytes = std::size_t{length} * sizeof(wchar_t);
    if (bytes > std::numeric_limits<UINT>::max())
        return nullptr;
    auto* block = static_cast<std::byte*>(std::malloc(HeaderSize + bytes + sizeof(wchar_t)));
    if (!block)
        return nullptr;
    const auto stored = static_cast<UINT>(bytes);
    std::memcpy(block + HeaderSize - sizeof(stored), &stored, sizeof(stored));
    if (text && bytes)
        std::memcpy(block + HeaderSize, text, bytes);
    else if (bytes)
        std::memset(block + HeaderSize, 0, bytes);
    std::memset(block + HeaderSize + bytes, 0, sizeof(wchar_t));
    return reinterpret_cast<BSTR>(block + HeaderSize);
}

BSTR SysAllocString(const wchar_t* text) {
    if (!text)
        return nullptr;
    const std::size_t length = std::wcslen(text);
    return length > std::numeric_limits<UINT>::max() ? nullptr : SysAllocStringLen(text, static_cast<UINT>(length));
}

void SysFreeString(BSTR text) {
    if (text)
        std::free(BlockOf(text));
}

UINT SysStringByteLen(BSTR text) {
    UINT bytes = 0;
    if (text)
        std::memcpy(&bytes, BlockOf(text) + HeaderSize - sizeof(bytes), sizeof(bytes));
    return bytes;
}

UINT SysStringLen(BSTR text) { return SysStringByteLen(text) / sizeof(wchar_t); }

namespace platform {

namespace {

BSTR AllocateOrThrow(const wchar_t* text, std::size_t length) {
    const BSTR copy = length > std::numeric_limits<UINT>::max()
                          ? nullptr
                          : SysAllocStringLen(length ? text : L"", static_cast<UINT>(length));
    if (!copy)
        throw std::bad_alloc();
    return copy;
}

} // namespace

CBstr::CBstr(const wchar_t* text) : m_Text(text ? AllocateOrThrow(text, std::wcslen(text)) : nullptr) {}

CBstr::CBstr(std::wstring_view text) : m_Text(AllocateOrThrow(text.data(), text.size())) {}

CBstr::CBstr(const CBstr& other) : m_Text(other.m_Text ? AllocateOrThrow(other.m_Text, other.Length()) : nullptr) {}

CBstr CBstr::Copy(BSTR text) {
    CBstr copy;
    if (text)
        copy.m_Text = AllocateOrThrow(text, SysStringLen(text));
    return copy;
}

} // namespace platform
