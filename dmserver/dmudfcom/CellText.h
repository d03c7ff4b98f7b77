// The text forms of numbers, dates and times, the same under every locale.
//
//   number   an optional sign, digits, a decimal point, an exponent; written in the fewest digits that read back
//   date     DD.MM.YYYY of a day number counted from 30 December 1899; years 1 to 9999 of the Gregorian calendar
//   time     HH:MM:SS of seconds since midnight; a fraction is accepted and dropped
// For a date or a time a whole number is accepted too: the day, the seconds.
//
// Blanks around a value are accepted. Whatever else is left over makes the text no value.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace IDM_dmudfcom {

// A fraction is cut off. Nothing for what does not fit.
std::optional<std::int64_t> ParseInteger(std::string_view text);
std::optional<double> ParseReal(std::string_view text);
std::optional<std::int64_t> ParseDate(std::string_view text);
std::optional<std::int64_t> ParseTime(std::string_view text);

// Toward zero; nothing for what does not fit and for what is no number.
std::optional<std::int64_t> ToInteger(double value);

// Each writes into `scratch` and gives a view of it.
std::string_view WriteInteger(std::int64_t value, std::string& scratch);
std::string_view WriteReal(double value, std::string& scratch);
std::string_view WriteReal(float value, std::string& scratch);
// What is no day of the calendar, no second of a day, is written as the number it is.
std::string_view WriteDate(std::int64_t days, std::string& scratch);
std::string_view WriteTime(std::int64_t seconds, std::string& scratch);

bool IsBlank(std::string_view text);

} // namespace IDM_dmudfcom
