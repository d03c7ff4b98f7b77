// Globally unique identifiers: the 16-byte ABI structure, a compile-time literal and the text form.
#pragma once

#include "platform/com/types.h"

#include <optional>
#include <string>
#include <string_view>

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend constexpr bool operator==(const GUID&, const GUID&) = default;
};

using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

namespace platform {

inline constexpr GUID NullGuid{};

// Reads "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx", with or without braces. Nothing else is accepted.
template <class Char>
constexpr std::optional<GUID> ReadGuid(std::basic_string_view<Char> text) {
    if (text.size() == 38 && text.front() == Char('{') && text.back() == Char('}'))
        text = text.substr(1, 36);
    if (text.size() != 36)
        return std::nullopt;
    std::uint8_t bytes[16]{};
    int digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const Char c = text[i];
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (c != Char('-'))
                return std::nullopt;
            continue;
        }
        int value = 0;
        if (c >= Char('0') && c <= Char('9'))
            value = static_cast<int>(c - Char('0'));
        else if (c >= Char('a') && c <= Char('f'))
            value = static_cast<int>(c - Char('a')) + 10;
        else if (c >= Char('A') && c <= Char('F'))
            value = static_cast<int>(c - Char('A')) + 10;
        else
            return std::nullopt;
        bytes[digits / 2] = static_cast<std::uint8_t>(bytes[digits / 2] << 4 | value);
        ++digits;
    }
    GUID guid{};
    guid.Data1 = static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
                 static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
    guid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    guid.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
    for (int i = 0; i < 8; ++i)
        guid.Data4[i] = bytes[8 + i];
    return guid;
}

// A literal in the code. Malformed text does not compile.
consteval GUID MakeGuid(std::string_view text) { return ReadGuid(text).value(); }

constexpr std::optional<GUID> ParseGuid(std::wstring_view text) { return ReadGuid(text); }

// The registry's form, "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}" in upper case.
std::wstring ToText(const GUID& guid);

} // namespace platform
