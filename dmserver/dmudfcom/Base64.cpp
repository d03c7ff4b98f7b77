#include "Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace IDM_dmudfcom {

namespace {

constexpr std::wstring_view Digits = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t NoDigit = 64;

constexpr std::array<std::uint8_t, 128> Values = [] {
    std::array<std::uint8_t, 128> values{};
    values.fill(NoDigit);
    for (std::size_t i = 0; i < Digits.size(); ++i)
        values[static_cast<std::size_t>(Digits[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

std::uint32_t ValueOf(wchar_t digit) {
    return digit >= 0 && digit < 128 ? Values[static_cast<std::size_t>(digit)] : NoDigit;
}

} // namespace

std::wstring ToBase64(std::string_view bytes) {
    std::wstring text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (std::size_t k = 0; k < 4; ++k)
            text += k <= count ? Digits[group >> (18 - 6 * k) & 63] : L'=';
    }
    return text;
}

std::optional<std::string> FromBase64(std::wstring_view text) {
    if (text.size() % 4 != 0)
        return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && !text.empty() && text.back() == L'=') {
        text.remove_suffix(1);
        ++padding;
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const wchar_t digit : text) {
        const std::uint32_t value = ValueOf(digit);
        if (value == NoDigit)
            return std::nullopt;
        bits = (bits << 6 | value) & 0xFFFFF;
        count += 6;
        if (count < 8)
            continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count);
    }
    // The bits that are left over must be zero, or two texts would give the same bytes.
    return (bits & ((1U << count) - 1)) == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace IDM_dmudfcom
