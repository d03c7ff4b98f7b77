#include "CellText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace IDM_dmudfcom {

namespace {

constexpr std::string_view Blanks = " \t\r\n";
constexpr std::int64_t SecondsPerDay = 86400;
constexpr std::size_t MaxNumberLength = 40;

using std::chrono::sys_days;
using std::chrono::year_month_day;
constexpr sys_days Epoch = std::chrono::December / 30 / 1899;
constexpr std::int64_t FirstDay = (sys_days(std::chrono::January / 1 / 1) - Epoch).count();
constexpr std::int64_t LastDay = (sys_days(std::chrono::December / 31 / 9999) - Epoch).count();

std::string_view Trim(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(Blanks);
    if (begin == std::string_view::npos)
        return {};
    return text.substr(begin, text.find_last_not_of(Blanks) - begin + 1);
}

// from_chars takes no plus sign.
std::string_view WithoutPlus(std::string_view text) {
    return text.size() > 1 && text[0] == '+' && text[1] != '-' ? text.substr(1) : text;
}

template <class T>
std::optional<T> ParseWhole(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::optional<unsigned> ParseDigits(std::string_view text) {
    const bool isDigits = std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    return isDigits && text.size() <= 4 ? ParseWhole<unsigned>(text) : std::nullopt;
}

// Exactly three numbers of up to four digits.
std::optional<std::array<unsigned, 3>> ParseThree(std::string_view text, char separator) {
    const std::size_t first = text.find(separator);
    const std::size_t second = first == std::string_view::npos ? first : text.find(separator, first + 1);
    if (second == std::string_view::npos)
        return std::nullopt;
    const auto a = ParseDigits(text.substr(0, first));
    const auto b = ParseDigits(text.substr(first + 1, second - first - 1));
    const auto c = ParseDigits(text.substr(second + 1));
    return a && b && c ? std::optional(std::array{*a, *b, *c}) : std::nullopt;
}

template <class T>
std::string_view Write(T value, std::string& scratch) {
    scratch.resize(MaxNumberLength);
    const auto [end, error] = std::to_chars(scratch.data(), scratch.data() + scratch.size(), value);
    scratch.resize(static_cast<std::size_t>(end - scratch.data()));
    return scratch;
}

void WriteDigits(char* target, unsigned value, unsigned digits) {
    for (unsigned i = digits; i-- > 0; value /= 10)
        target[i] = static_cast<char>('0' + value % 10);
}

} // namespace

bool IsBlank(std::string_view text) { return Trim(text).empty(); }

std::optional<std::int64_t> ToInteger(double value) {
    // 2^63 is the first double above the range, and it is exact.
    if (!(value >= -0x1p63 && value < 0x1p63))
        return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
    text = WithoutPlus(Trim(text));
    if (const auto value = ParseWhole<std::int64_t>(text))
        return value;
    const auto value = ParseWhole<double>(text);
    return value ? ToInteger(*value) : std::nullopt;
}

std::optional<double> ParseReal(std::string_view text) {
    const auto value = ParseWhole<double>(WithoutPlus(Trim(text)));
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int64_t> ParseDate(std::string_view text) {
    text = Trim(text);
    const auto parts = ParseThree(text, '.');
    if (!parts)
        return ParseWhole<std::int64_t>(WithoutPlus(text));
    const auto [day, month, year] = *parts;
    const year_month_day date(std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                              std::chrono::day(day));
    if (!date.ok() || year == 0)
        return std::nullopt;
    return (sys_days(date) - Epoch).count();
}

std::optional<std::int64_t> ParseTime(std::string_view text) {
    text = Trim(text);
    if (const auto number = ParseWhole<std::int64_t>(WithoutPlus(text)))
        return number;
    if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
        if (text.find_first_not_of("0123456789", point + 1) != std::string_view::npos)
            return std::nullopt;
        text = text.substr(0, point);
    }
    const auto parts = ParseThree(text, ':');
    if (!parts)
        return std::nullopt;
    const auto [hour, minute, second] = *parts;
    if (hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return std::int64_t{hour} * 3600 + minute * 60 + second;
}

std::string_view WriteInteger(std::int64_t value, std::string& scratch) { return Write(value, scratch); }
std::string_view WriteReal(double value, std::string& scratch) { return Write(value, scratch); }
std::string_view WriteReal(float value, std::string& scratch) { return Write(value, scratch); }

std::string_view WriteDate(std::int64_t days, std::string& scratch) {
    if (days < FirstDay || days > LastDay)
        return WriteInteger(days, scratch);
    const year_month_day date(Epoch + std::chrono::days(days));
    scratch.assign("00.00.0000");
    WriteDigits(scratch.data(), static_cast<unsigned>(date.day()), 2);
    WriteDigits(scratch.data() + 3, static_cast<unsigned>(date.month()), 2);
    WriteDigits(scratch.data() + 6, static_cast<unsigned>(static_cast<int>(date.year())), 4);
    return scratch;
}

std::string_view WriteTime(std::int64_t seconds, std::string& scratch) {
    if (seconds < 0 || seconds >= SecondsPerDay)
        return WriteInteger(seconds, scratch);
    const auto time = static_cast<unsigned>(seconds);
    scratch.assign("00:00:00");
    WriteDigits(scratch.data(), time / 3600, 2);
    WriteDigits(scratch.data() + 3, time / 60 % 60, 2);
    WriteDigits(scratch.data() + 6, time % 60, 2);
    return scratch;
}

} // namespace IDM_dmudfcom
