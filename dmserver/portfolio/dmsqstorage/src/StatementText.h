// Building statement text: formatting into a buffer of a stated size, and the escaping of quoted text.
//
// Format strings are those of printf and are filled by fmt, which is type-safe and knows no locale: a
// decimal separator is always a point.
#pragma once

#include <array>
#include <cstddef>
#include <fmt/printf.h>
#include <fmt/xchar.h>
#include <string>
#include <string_view>

namespace sqStorage {

// Formatting proper is compiled once: it costs more than all the rest of a file that builds a statement.
std::wstring FormatText(const wchar_t* format, fmt::wprintf_args arguments);

template <class... Arguments>
std::wstring FormatText(const wchar_t* format, const Arguments&... arguments) {
    return FormatText(format, fmt::wprintf_args(fmt::make_wprintf_args(arguments...)));
}

namespace detail {
// Copies with the closing zero. A text that does not fit is reported as an invalid parameter and raised as
// std::length_error, and the buffer stays empty: a cut statement must never run.
void CopyWhole(std::wstring_view text, wchar_t* buffer, std::size_t capacity);
// Copies what fits, with the closing zero.
void CopyTruncated(std::wstring_view text, wchar_t* buffer, std::size_t capacity);
} // namespace detail

// One statement of at most Capacity - 1 characters.
template <std::size_t Capacity>
class CStatement {
public:
    // An empty text.
    CStatement() { m_Text[0] = 0; }

    // The whole text, or an exception.
    template <class... Arguments>
    explicit CStatement(const wchar_t* format, const Arguments&... arguments) : CStatement() {
        detail::CopyWhole(FormatText(format, arguments...), m_Text.data(), Capacity);
    }

    // As much of the text as fits.
    template <class... Arguments>
    static CStatement Truncated(const wchar_t* format, const Arguments&... arguments) {
        CStatement statement;
        detail::CopyTruncated(FormatText(format, arguments...), statement.m_Text.data(), Capacity);
        return statement;
    }

    // Joins a clause; what does not fit is cut.
    template <class... Arguments>
    void Append(const wchar_t* format, const Arguments&... arguments) {
        const std::size_t length = View().size();
        detail::CopyTruncated(FormatText(format, arguments...), m_Text.data() + length, Capacity - length);
    }

    // For who writes the text in place, closing zero included.
    wchar_t* Buffer() { return m_Text.data(); }
    static constexpr int Size = static_cast<int>(Capacity);

    const wchar_t* Text() const { return m_Text.data(); }
    std::wstring_view View() const { return m_Text.data(); }

private:
    std::array<wchar_t, Capacity> m_Text;
};

// The usual size.
using CSqlText = CStatement<1024>;

// Copies Source and writes every single quote twice. The caller gives room for twice the length plus the closing
// zero. With either null nothing happens.
void DoubleSingleQuotes(const wchar_t* Source, wchar_t* Destination);
// The same in place.
void DoubleSingleQuotes(std::wstring& Text);

// A text ready to stand between single quotes. Null gives an empty text.
class CQuoted {
public:
    explicit CQuoted(const wchar_t* text);

    const wchar_t* Text() const { return m_Text.c_str(); }

private:
    std::wstring m_Text;
};

} // namespace sqStorage
