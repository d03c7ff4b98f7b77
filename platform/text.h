#pragma once
// Conversions of text, by length (an embedded zero is a character like any other) and the same under every locale.
// Malformed input is refused with a CTextError, never repaired. A byte order mark is a character like any other.
// Any thread may call.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace platform {

class CTextError : public std::runtime_error {
public:
    CTextError(const std::string& text, std::size_t offset) : std::runtime_error(text), m_Offset(offset) {}
    // Of the first fault, in units of the input: bytes, or wide characters.
    [[nodiscard]] std::size_t Offset() const noexcept { return m_Offset; }

private:
    std::size_t m_Offset;
};

[[nodiscard]] std::string ToUtf8(std::wstring_view text);
[[nodiscard]] std::wstring FromUtf8(std::string_view bytes);

// UTF-16, little-endian, as bytes.
[[nodiscard]] std::string ToUtf16Le(std::wstring_view text);
[[nodiscard]] std::wstring FromUtf16Le(std::string_view bytes);

// Windows code page 1251.
[[nodiscard]] std::wstring FromCp1251(std::string_view bytes);

// The same for two texts that differ in case alone; for comparing names, not for showing.
[[nodiscard]] std::wstring FoldCase(std::wstring_view text);

// Each letter as its capital, one for one, so the length stays. A letter whose capital takes several characters is
// left as it is.
[[nodiscard]] std::wstring ToUpper(std::wstring_view text);

} // namespace platform
