#include "platform/text.h"

#include <boost/locale/conversion.hpp>
#include <boost/locale/encoding.hpp>
#include <boost/locale/encoding_utf.hpp>
#include <boost/locale/generator.hpp>
#include <boost/locale/utf.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <locale>

namespace platform {

namespace {

namespace conv = boost::locale::conv;
namespace utf = boost::locale::utf;

// Where decoding stops, for the message; the conversion itself says only that it failed.
template <class Char>
std::size_t FindFault(std::basic_string_view<Char> text) {
    const Char* position = text.data();
    const Char* const end = position + text.size();
    while (position != end) {
        const Char* const start = position;
        const utf::code_point point = utf::utf_traits<Char>::decode(position, end);
        if (point == utf::illegal || point == utf::incomplete)
            return static_cast<std::size_t>(start - text.data());
    }
    return text.size();
}

// `unit` names what the text is made of, "byte" or the like; `scale` is the size of one such unit in the caller's.
template <class Char>
[[noreturn]] void ThrowFault(std::basic_string_view<Char> text, std::string_view encoding, std::string_view unit,
                             std::size_t scale = 1) {
    const std::size_t fault = FindFault(text);
    const auto value = fault < text.size() ? static_cast<std::make_unsigned_t<Char>>(text[fault]) : 0U;
    const std::size_t offset = fault * scale;
    throw CTextError(fmt::format("text is no valid {}: {} 0x{:02X} at offset {}", encoding, unit,
                                 static_cast<std::uint32_t>(value), offset),
                     offset);
}

template <class Target, class Source>
bool CopyAscii(std::basic_string_view<Source> text, std::basic_string<Target>& result) {
    std::make_unsigned_t<Source> seen = 0;
    for (const Source character : text)
        seen |= static_cast<std::make_unsigned_t<Source>>(character);
    if (seen >= 0x80)
        return false;
    result.resize(text.size());
    std::transform(text.begin(), text.end(), result.begin(),
                   [](Source character) { return static_cast<Target>(character); });
    return true;
}

template <class Target, class Source>
std::basic_string<Target> Convert(std::basic_string_view<Source> text, std::string_view encoding,
                                  std::string_view unit, std::size_t scale = 1) {
    try {
        return conv::utf_to_utf<Target>(text.data(), text.data() + text.size(), conv::stop);
    } catch (const conv::conversion_error&) {
        ThrowFault(text, encoding, unit, scale);
    }
}

void RefuseFaults(std::wstring_view text) {
    if (FindFault(text) < text.size())
        ThrowFault(text, "Unicode", "character");
}

// Any language whose letters change case in the common way will do.
const std::locale& CaseLocale() {
    static const std::locale locale = boost::locale::generator()("en_US.UTF-8");
    return locale;
}

void SwapOnBigEndian(std::u16string& units) {
    if constexpr (std::endian::native == std::endian::big) {
        for (char16_t& unit : units)
            unit = static_cast<char16_t>((unit << 8) | (unit >> 8));
    }
}

} // namespace

std::string ToUtf8(std::wstring_view text) {
    std::string result;
    if (!CopyAscii(text, result))
        result = Convert<char>(text, "Unicode", "character");
    return result;
}

std::wstring FromUtf8(std::string_view bytes) {
    std::wstring result;
    if (!CopyAscii(bytes, result))
        result = Convert<wchar_t>(bytes, "UTF-8", "byte");
    return result;
}

std::string ToUtf16Le(std::wstring_view text) {
    std::u16string units = Convert<char16_t>(text, "Unicode", "character");
    SwapOnBigEndian(units);
    std::string bytes(units.size() * sizeof(char16_t), '\0');
    std::copy_n(reinterpret_cast<const char*>(units.data()), bytes.size(), bytes.begin());
    return bytes;
}

std::wstring FromUtf16Le(std::string_view bytes) {
    if (bytes.size() % sizeof(char16_t) != 0)
        throw CTextError(fmt::format("text is no valid UTF-16: half a unit at offset {}", bytes.size() - 1),
                         bytes.size() - 1);
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(units.data()));
    SwapOnBigEndian(units);
    return Convert<wchar_t>(std::u16string_view(units), "UTF-16", "unit", sizeof(char16_t));
}

std::wstring FromCp1251(std::string_view bytes) {
    std::wstring result;
    if (CopyAscii(bytes, result))
        return result;
    // The one byte that the code page leaves undefined; the converters behind Boost.Locale differ about it.
    const std::size_t fault = bytes.find('\x98');
    if (fault != bytes.npos)
        throw CTextError(fmt::format("text is no valid code page 1251: byte 0x98 at offset {}", fault), fault);
    return conv::to_utf<wchar_t>(bytes.data(), bytes.data() + bytes.size(), "windows-1251", conv::stop);
}

std::wstring FoldCase(std::wstring_view text) {
    std::wstring result;
    if (CopyAscii(text, result)) {
        for (wchar_t& character : result) {
            if (character >= L'A' && character <= L'Z')
                character += L'a' - L'A';
        }
        return result;
    }
    RefuseFaults(text);
    return boost::locale::fold_case(result.assign(text), CaseLocale());
}

std::wstring ToUpper(std::wstring_view text) {
    RefuseFaults(text);
    std::wstring result(text);
    for (wchar_t& character : result) {
        if (character < 0x80) {
            if (character >= L'a' && character <= L'z')
                character -= L'a' - L'A';
            continue;
        }
        const std::wstring capital = boost::locale::to_upper(std::wstring(1, character), CaseLocale());
        if (capital.size() == 1)
            character = capital.front();
    }
    return result;
}

} // namespace platform
