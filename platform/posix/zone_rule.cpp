#include "platform/posix/zone_rule.h"

#include <algorithm>
#include <cstdlib>

namespace platform {

namespace {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::local_seconds;
using std::chrono::seconds;

constexpr int SecondsPerMinute = 60;
constexpr int SecondsPerHour = 3600;
constexpr int SecondsPerDay = 86400;
constexpr int ClockChangeTime = 2 * SecondsPerHour;
constexpr int MaxOffsetHours = 24;
constexpr int MaxTimeHours = 167;
constexpr std::size_t MinNameLength = 3;
constexpr std::string_view UsualDates = ",M3.2.0,M11.1.0";

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Takes pieces off the front of a text. What does not fit is not taken.
class CRuleReader {
public:
    explicit CRuleReader(std::string_view text) : m_Rest(text) {}

    [[nodiscard]] bool AtEnd() const { return m_Rest.empty(); }
    [[nodiscard]] bool NextIs(char c) const { return !m_Rest.empty() && m_Rest.front() == c; }
    bool Take(char c) {
        if (!NextIs(c))
            return false;
        m_Rest.remove_prefix(1);
        return true;
    }

    std::optional<int> TakeNumber(int least, int most) {
        int value = 0;
        std::size_t count = 0;
        for (; count < m_Rest.size() && IsDigit(m_Rest[count]); ++count) {
            value = value * 10 + (m_Rest[count] - '0'); // at most 10 * most + 9
            if (value > most)
                return std::nullopt;
        }
        if (count == 0 || value < least)
            return std::nullopt;
        m_Rest.remove_prefix(count);
        return value;
    }

    // "CET", or "<+0330>" whose brackets are no part of the name.
    std::optional<std::string> TakeName() {
        const bool quoted = Take('<');
        const auto end = std::find_if_not(m_Rest.begin(), m_Rest.end(), [quoted](char c) {
            return IsLetter(c) || (quoted && (IsDigit(c) || c == '+' || c == '-'));
        });
        const auto length = static_cast<std::size_t>(end - m_Rest.begin());
        const std::string name(m_Rest.substr(0, length));
        m_Rest.remove_prefix(length);
        if (length < MinNameLength || (quoted && !Take('>')))
            return std::nullopt;
        return name;
    }

    // Signed hours, with minutes and seconds behind them if wanted.
    std::optional<int> TakeTime(int maxHours) {
        const int sign = Take('-') ? -1 : 1;
        if (sign > 0)
            Take('+');
        const auto hours = TakeNumber(0, maxHours);
        if (!hours)
            return std::nullopt;
        int total = *hours * SecondsPerHour;
        for (const int unit : {SecondsPerMinute, 1}) {
            if (!Take(':'))
                break;
            const auto part = TakeNumber(0, 59);
            if (!part)
                return std::nullopt;
            total += *part * unit;
        }
        return sign * total;
    }

private:
    std::string_view m_Rest;
};

bool ReadWeekday(CRuleReader& reader, tagZoneChange& change) {
    const auto month = reader.TakeNumber(1, 12);
    const auto week = reader.Take('.') ? reader.TakeNumber(1, 5) : std::nullopt;
    const auto weekday = reader.Take('.') ? reader.TakeNumber(0, 6) : std::nullopt;
    if (!month || !week || !weekday)
        return false;
    change.Month = *month;
    change.Week = *week;
    change.Weekday = *weekday;
    return true;
}

bool ReadDay(CRuleReader& reader, tagZoneChange& change) {
    const bool withoutLeap = reader.Take('J');
    change.Form = withoutLeap ? tagZoneChange::EForm::DayWithoutLeap : tagZoneChange::EForm::DayWithLeap;
    const auto day = reader.TakeNumber(withoutLeap ? 1 : 0, 365);
    change.Day = day.value_or(0);
    return day.has_value();
}

// ",M3.5.0/3"
bool ReadChange(CRuleReader& reader, tagZoneChange& change) {
    if (!reader.Take(',') || !(reader.Take('M') ? ReadWeekday(reader, change) : ReadDay(reader, change)))
        return false;
    const auto time = reader.Take('/') ? reader.TakeTime(MaxTimeHours) : std::optional(ClockChangeTime);
    change.Seconds = time.value_or(0);
    return time.has_value();
}

bool ReadDaylight(CRuleReader& reader, tagZoneRule& rule) {
    const auto name = reader.TakeName();
    if (!name)
        return false;
    rule.HasDaylight = true;
    rule.DaylightName = *name;
    rule.DaylightOffset = rule.StandardOffset - SecondsPerHour;
    if (!reader.AtEnd() && !reader.NextIs(',')) {
        const auto offset = reader.TakeTime(MaxOffsetHours);
        if (!offset)
            return false;
        rule.DaylightOffset = *offset;
    }
    CRuleReader usual(UsualDates);
    CRuleReader& dates = reader.AtEnd() ? usual : reader;
    return ReadChange(dates, rule.Begin) && ReadChange(dates, rule.End);
}

local_days DayOf(const tagZoneChange& change, std::chrono::year year) {
    using namespace std::chrono;
    if (change.Form == tagZoneChange::EForm::DayWithLeap)
        return local_days(year / January / 1) + days(change.Day);
    if (change.Form == tagZoneChange::EForm::DayWithoutLeap) {
        const bool behindLeapDay = year.is_leap() && change.Day > 59; // 59 is 28 February
        return local_days(year / January / 1) + days(change.Day - 1 + (behindLeapDay ? 1 : 0));
    }
    const auto month = year / std::chrono::month(static_cast<unsigned>(change.Month));
    const weekday day(static_cast<unsigned>(change.Weekday));
    if (change.Week == 5)
        return local_days(month / day[last]);
    return local_days(month / day[static_cast<unsigned>(change.Week)]);
}

// On the clock before the change.
local_seconds MomentOf(const tagZoneChange& change, std::chrono::year year) {
    return DayOf(change, year) + seconds(change.Seconds);
}

struct tagSeason {
    std::chrono::sys_seconds Begin;
    std::chrono::sys_seconds End;
};
tagSeason SeasonOf(const tagZoneRule& rule, std::chrono::year year) {
    const auto toUtc = [](local_seconds local, int west) {
        return std::chrono::sys_seconds(local.time_since_epoch() + seconds(west));
    };
    return {toUtc(MomentOf(rule.Begin, year), rule.StandardOffset),
            toUtc(MomentOf(rule.End, year), rule.DaylightOffset)};
}

LONG ToMinutes(int offset) {
    const int rounded = (std::abs(offset) + SecondsPerMinute / 2) / SecondsPerMinute;
    return offset < 0 ? -rounded : rounded;
}

void SetTime(SYSTEMTIME& date, int secondOfDay) {
    date.wHour = static_cast<WORD>(secondOfDay / SecondsPerHour);
    date.wMinute = static_cast<WORD>(secondOfDay % SecondsPerHour / SecondsPerMinute);
    date.wSecond = static_cast<WORD>(secondOfDay % SecondsPerMinute);
}

SYSTEMTIME RecurringDate(const tagZoneChange& change) {
    SYSTEMTIME date{};
    date.wMonth = static_cast<WORD>(change.Month);
    date.wDayOfWeek = static_cast<WORD>(change.Weekday);
    date.wDay = static_cast<WORD>(change.Week);
    SetTime(date, std::min(change.Seconds, SecondsPerDay - 1));
    date.wMilliseconds = change.Seconds == SecondsPerDay ? 999 : 0;
    return date;
}

// The month, week and weekday on which the change falls in that year.
SYSTEMTIME DateInYear(const tagZoneChange& change, std::chrono::year year) {
    const local_seconds moment = MomentOf(change, year);
    const auto day = std::chrono::floor<days>(moment);
    const std::chrono::year_month_day civil(day);
    SYSTEMTIME date{};
    date.wMonth = static_cast<WORD>(static_cast<unsigned>(civil.month()));
    date.wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
    date.wDay = static_cast<WORD>((static_cast<unsigned>(civil.day()) - 1) / 7 + 1);
    SetTime(date, static_cast<int>((moment - day).count()));
    return date;
}

SYSTEMTIME ToDate(const tagZoneChange& change, std::chrono::year year) {
    const bool recurs = change.Form == tagZoneChange::EForm::WeekdayOfMonth && change.Seconds >= 0 &&
                        change.Seconds <= SecondsPerDay;
    return recurs ? RecurringDate(change) : DateInYear(change, year);
}

// Names are ASCII.
void SetName(wchar_t (&target)[32], const std::string& name) {
    const std::size_t length = std::min(name.size(), std::size(target) - 1);
    std::copy_n(name.begin(), length, target);
}

} // namespace

std::optional<tagZoneRule> ParseZoneRule(std::string_view text) {
    CRuleReader reader(text);
    tagZoneRule rule;
    const auto name = reader.TakeName();
    const auto offset = name ? reader.TakeTime(MaxOffsetHours) : std::nullopt;
    if (!offset)
        return std::nullopt;
    rule.StandardName = *name;
    rule.StandardOffset = *offset;
    if (!reader.AtEnd() && !ReadDaylight(reader, rule))
        return std::nullopt;
    return reader.AtEnd() ? std::optional(rule) : std::nullopt;
}

tagZoneRule NormalizedFor(const tagZoneRule& rule, std::chrono::year year) {
    tagZoneRule result = rule;
    if (!rule.HasDaylight)
        return result;
    const tagSeason season = SeasonOf(rule, year);
    const days yearLength(year.is_leap() ? 366 : 365);
    const bool allYear = season.End - season.Begin >= yearLength;
    if (allYear || season.Begin == season.End)
        result.HasDaylight = false;
    const bool swapped = allYear || rule.DaylightOffset > rule.StandardOffset;
    if (swapped) {
        std::swap(result.StandardName, result.DaylightName);
        std::swap(result.StandardOffset, result.DaylightOffset);
        std::swap(result.Begin, result.End);
    }
    return result;
}

TIME_ZONE_INFORMATION ToTimeZoneInformation(const tagZoneRule& rule, std::chrono::year year) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = ToMinutes(rule.StandardOffset);
    SetName(zone.StandardName, rule.StandardName);
    if (!rule.HasDaylight)
        return zone;
    SetName(zone.DaylightName, rule.DaylightName);
    zone.DaylightBias = ToMinutes(rule.DaylightOffset) - zone.Bias;
    zone.DaylightDate = ToDate(rule.Begin, year);
    zone.StandardDate = ToDate(rule.End, year);
    return zone;
}

bool IsDaylight(const tagZoneRule& rule, std::chrono::sys_seconds moment) {
    if (!rule.HasDaylight)
        return false;
    const auto localDay = std::chrono::floor<days>(moment - seconds(rule.StandardOffset));
    const tagSeason season = SeasonOf(rule, std::chrono::year_month_day(localDay).year());
    if (season.Begin < season.End)
        return moment >= season.Begin && moment < season.End;
    return moment >= season.Begin || moment < season.End;
}

} // namespace platform
