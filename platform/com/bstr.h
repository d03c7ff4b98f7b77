// Counted wide strings that cross interfaces.
//
// A BSTR points at its first character; the four bytes before it hold the length in BYTES, without the closing
// zero. Null and empty are different values. A BSTR handed in belongs to the caller, one handed out to the
// receiver.
#pragma once

#include "platform/com/types.h"

#include <cstddef>
#include <string_view>
#include <utility>

using BSTR = wchar_t*;

// Null for a null text, and when there is no memory.
BSTR SysAllocString(const wchar_t* text);
// `length` characters; null text gives a string of that length, zero-filled.
BSTR SysAllocStringLen(const wchar_t* text, UINT length);
// Accepts null.
void SysFreeString(BSTR text);
// In characters; 0 for null.
UINT SysStringLen(BSTR text);
// In bytes; 0 for null.
UINT SysStringByteLen(BSTR text);

namespace platform {

// The characters of a BSTR, embedded zeros included; empty for null.
inline std::wstring_view ViewOf(BSTR text) {
    return text ? std::wstring_view(text, SysStringLen(text)) : std::wstring_view();
}

// Owns one BSTR, which may be null. Moves like a pointer, copies by characters, throws std::bad_alloc when there
// is no memory.
class CBstr {
public:
    CBstr() = default;
    CBstr(std::nullptr_t) {}
    // Up to the first zero; null stays null.
    explicit CBstr(const wchar_t* text);
    // A BSTR would lose what stands behind an embedded zero: Copy or Attach says which is meant. A buffer is given
    // as a view.
    explicit CBstr(wchar_t* text) = delete;
    explicit CBstr(std::wstring_view text);
    CBstr(const CBstr& other);
    CBstr(CBstr&& other) noexcept : m_Text(std::exchange(other.m_Text, nullptr)) {}
    CBstr& operator=(CBstr other) noexcept {
        std::swap(m_Text, other.m_Text);
        return *this;
    }
    ~CBstr() { SysFreeString(m_Text); }

    // Keeps the difference between null and empty.
    static CBstr Copy(BSTR text);

    BSTR Get() const { return m_Text; }
    // For an out parameter: frees what is held first.
    BSTR* Put() {
        Clear();
        return &m_Text;
    }
    BSTR Detach() { return std::exchange(m_Text, nullptr); }
    void Attach(BSTR text) {
        Clear();
        m_Text = text;
    }
    void Clear() { SysFreeString(std::exchange(m_Text, nullptr)); }

    bool IsNull() const { return m_Text == nullptr; }
    // True for null and for a text of no characters.
    bool IsEmpty() const { return Length() == 0; }
    UINT Length() const { return SysStringLen(m_Text); }
    std::wstring_view View() const { return ViewOf(m_Text); }
    // A zero-terminated text that is never null.
    const wchar_t* Text() const { return m_Text ? m_Text : L""; }

private:
    BSTR m_Text = nullptr;
};

} // namespace platform
