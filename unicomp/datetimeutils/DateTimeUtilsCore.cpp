#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include "diagnostics/interface/BugSlayer.h"

#include <charconv>
#include <stdexcept>
#include <string>

namespace dmDateTime {

namespace details {

void RaiseOutOfRange(const char* function, const char* argument, LONG low, LONG high, LONG value) {
    const std::string name(argument);
    throw std::range_error(std::string(function) + ": value of '" + name + "' is out of range [" +
                           std::to_string(low) + ".." + std::to_string(high) + "]; " + name + " = " +
                           std::to_string(value));
}

void RaiseDaysOutOfRange(const char* function, JulianDate days) {
    throw std::range_error(std::string(function) +
                           " : 'days' parameter is out of range (days = " + std::to_string(days) + ")");
}

void RaiseNotLeapYear(LONG year) {
    throw std::range_error("dmDateTime::details::DateToJulianImpl : TDate out of range (not leap year! 29 Feb " +
                           std::to_string(year) + ")");
}

} // namespace details

namespace {

// The shortest text that reads back as the same number.
std::string ToText(double value) {
    char text[32];
    return std::string(text, std::to_chars(std::begin(text), std::end(text), value).ptr);
}

} // namespace

void IsDateTimeValid(JulianDate aDate, DaySeconds aTime, const char* aFunction) {
    if (details::IsDateTime(aDate, aTime))
        return;
    const BugSlayerUtil::CScope scope;
    scope.Trace(L"%d - %d", aDate, aTime);
    // Within +-2^48, so the sum is exact, and one division rounds once.
    const std::int64_t seconds = std::int64_t{aDate} * SecondsPerDay + aTime;
    throw std::range_error(std::string(aFunction) + " : date/time is out of range, date = " +
                           ToText(static_cast<double>(seconds) / SecondsPerDay));
}

} // namespace dmDateTime
