#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

#include "diagnostics/interface/BugSlayer.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <fmt/xchar.h>
#include <limits>
#include <optional>
#include <string_view>

namespace tz_help {

namespace {

constexpr std::size_t NumberCount = 17;
constexpr std::wstring_view Delimiters = L",:.";
constexpr std::wstring_view Blanks = L" \t\n\v\f\r";

using Numbers = std::array<LONG, NumberCount>;

constexpr bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

// A sign and digits behind blanks; whatever follows is passed over. Without digits 0.
constexpr LONG ToNumber(std::wstring_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
    const bool negative = text.starts_with(L'-');
    if (negative || text.starts_with(L'+'))
        text.remove_prefix(1);
    constexpr std::int64_t Least = std::numeric_limits<LONG>::min();
    constexpr std::int64_t Most = std::numeric_limits<LONG>::max();
    std::int64_t value = 0;
    for (const wchar_t character : text) {
        if (!IsDigit(character))
            break;
        value = std::min(value * 10 + (character - L'0'), -Least); // at most 10 * 2^31 + 9 before it is held
    }
    return static_cast<LONG>(negative ? -value : std::min(value, Most));
}
static_assert(ToNumber(L"-2147483648") == std::numeric_limits<LONG>::min());
static_assert(ToNumber(L"99999999999999999999") == std::numeric_limits<LONG>::max());

// Empty unless there are exactly as many numbers as a zone has.
std::optional<Numbers> ReadNumbers(std::wstring_view text) {
    Numbers numbers{};
    std::size_t count = 0;
    for (std::size_t begin = text.find_first_not_of(Delimiters); begin != text.npos;
         begin = text.find_first_not_of(Delimiters, begin)) {
        if (count == NumberCount)
            return std::nullopt;
        const std::size_t end = std::min(text.find_first_of(Delimiters, begin), text.size());
        numbers[count++] = ToNumber(text.substr(begin, end - begin));
        begin = end;
    }
    return count == NumberCount ? std::optional(numbers) : std::nullopt;
}

SYSTEMTIME ToDate(const LONG* numbers) {
    const auto cut = [numbers](std::size_t index) { return static_cast<WORD>(numbers[index]); };
    SYSTEMTIME date{};
    date.wMonth = cut(0);
    date.wDayOfWeek = cut(1);
    date.wDay = cut(2);
    date.wHour = cut(3);
    date.wMinute = cut(4);
    date.wSecond = cut(5);
    date.wMilliseconds = cut(6);
    return date;
}

} // namespace

bool StringToTZI(const wchar_t* text, TIME_ZONE_INFORMATION& zone) {
    if (text == nullptr)
        return false;
    const auto numbers = ReadNumbers(text);
    if (!numbers)
        return BugSlayerUtil::Assert(false, L"0");
    zone.Bias = (*numbers)[0];
    zone.StandardBias = (*numbers)[1];
    zone.StandardDate = ToDate(&(*numbers)[2]);
    zone.DaylightBias = (*numbers)[9];
    zone.DaylightDate = ToDate(&(*numbers)[10]);
    return true;
}

void TZIToString(const TIME_ZONE_INFORMATION& zone, wchar_t* buffer, std::size_t capacity) {
    if (buffer == nullptr || capacity == 0)
        return;
    const SYSTEMTIME& standard = zone.StandardDate;
    const SYSTEMTIME& daylight = zone.DaylightDate;
    const auto written = fmt::format_to_n(
        buffer, capacity - 1, L"{},{},{},{},{},{:02}:{:02}:{:02}.{:04},{},{},{},{},{:02}:{:02}:{:02}.{:04}",
        zone.Bias, zone.StandardBias, standard.wMonth, standard.wDayOfWeek, standard.wDay, standard.wHour,
        standard.wMinute, standard.wSecond, standard.wMilliseconds, zone.DaylightBias, daylight.wMonth,
        daylight.wDayOfWeek, daylight.wDay, daylight.wHour, daylight.wMinute, daylight.wSecond,
        daylight.wMilliseconds);
    *written.out = L'\0';
}

} // namespace tz_help
