// Every zone of the system's database: the moments that our rule gives must be those at which the C library changes
// the clock.

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/local_time_zone.h"
#include "platform/posix/zone_file.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <set>
#include <sstream>

namespace {

using namespace platform;
using std::chrono::days;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year;

constexpr int FirstYear = 2025;
constexpr int LastYear = 2030;
const sys_seconds Begin = sys_days(year(FirstYear) / 1 / 1);
const sys_seconds End = sys_days(year(LastYear + 1) / 1 / 1);
const std::filesystem::path Database = "/usr/share/zoneinfo";

// The minutes to the east of Greenwich from each moment on; the first moment is Begin.
using Clock = std::map<sys_seconds, minutes>;

// In a time zone of the C library's.
class CLibraryZone {
public:
    explicit CLibraryZone(const std::string& tz) : m_Environment(L"TZ", FromUtf8(tz)) { tzset(); }

    static minutes EastAt(sys_seconds moment) {
        const std::time_t time = moment.time_since_epoch().count();
        std::tm parts{};
        localtime_r(&time, &parts);
        return minutes(parts.tm_gmtoff / 60);
    }
    // Finds every change, since no two of them are within six hours of each other.
    Clock Changes() const {
        Clock clock{{Begin, EastAt(Begin)}};
        constexpr seconds Step = std::chrono::hours(6);
        for (sys_seconds at = Begin; at + Step <= End; at += Step)
            if (EastAt(at) != EastAt(at + Step)) {
                const sys_seconds moment = FirstOfNewOffset(at, at + Step);
                if (moment < End)
                    clock.emplace(moment, EastAt(moment));
            }
        return clock;
    }

private:
    static sys_seconds FirstOfNewOffset(sys_seconds before, sys_seconds after) {
        while (after - before > seconds(1)) {
            const sys_seconds middle = before + (after - before) / 2;
            (EastAt(middle) == EastAt(before) ? before : after) = middle;
        }
        return after;
    }

    CScopedEnvironment m_Environment;
};

// The moment of a recurring date on a clock that is `west` minutes behind. The last millisecond of a day stands for
// its end.
sys_seconds MomentOf(const SYSTEMTIME& date, int inYear, LONG west) {
    const auto month = year(inYear) / std::chrono::month(date.wMonth);
    const std::chrono::weekday weekday(date.wDayOfWeek);
    const sys_days day = date.wDay == 5 ? sys_days(month / weekday[std::chrono::last])
                                        : sys_days(month / weekday[unsigned{date.wDay}]);
    const int time = (date.wHour * 60 + date.wMinute) * 60 + date.wSecond + (date.wMilliseconds == 999 ? 1 : 0);
    return day + seconds(time) + minutes(west);
}

// The changes as the record tells them for one year.
void AddChanges(const TIME_ZONE_INFORMATION& zone, int inYear, std::map<sys_seconds, minutes>& changes) {
    if (zone.StandardDate.wMonth == 0)
        return;
    const LONG standard = zone.Bias + zone.StandardBias;
    const LONG daylight = zone.Bias + zone.DaylightBias;
    changes.emplace(MomentOf(zone.DaylightDate, inYear, standard), minutes(-daylight));
    changes.emplace(MomentOf(zone.StandardDate, inYear, daylight), minutes(-standard));
}

// From a record for each year, which may be the same one.
template <class ZoneOfYear>
Clock ClockOf(ZoneOfYear&& zoneOfYear) {
    std::map<sys_seconds, minutes> changes;
    for (int inYear = FirstYear - 1; inYear <= LastYear; ++inYear)
        AddChanges(zoneOfYear(inYear), inYear, changes);
    const TIME_ZONE_INFORMATION zone = zoneOfYear(FirstYear);
    minutes atBegin(-zone.Bias - zone.StandardBias);
    Clock clock;
    for (const auto& [moment, east] : changes) {
        if (moment <= Begin)
            atBegin = east;
        else if (moment < End)
            clock.emplace(moment, east);
    }
    clock.emplace(Begin, atBegin);
    return clock;
}

TIME_ZONE_INFORMATION LocalZone(const std::string& name) {
    const CScopedEnvironment environment(L"TZ", FromUtf8(name));
    TIME_ZONE_INFORMATION zone{};
    EXPECT_NE(TimeZoneIdInvalid, GetTimeZoneInformation(&zone)) << name;
    return zone;
}
Clock OurClock(const std::string& name) {
    const TIME_ZONE_INFORMATION zone = LocalZone(name);
    return ClockOf([&](int) { return zone; });
}
Clock DatabaseClock(const std::string& tz) { return CLibraryZone(tz).Changes(); }

// The last line of the zone's file.
std::string FooterOf(const std::string& name) {
    const std::string bytes = ReadFile(Database / name);
    const std::size_t end = bytes.rfind('\n');
    const std::size_t begin = bytes.rfind('\n', end - 1) + 1;
    return bytes.substr(begin, end - begin);
}

std::vector<std::string> AllZones() {
    std::vector<std::string> names;
    std::istringstream table(ReadFile(Database / "zone.tab"));
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with('#'))
            continue;
        std::istringstream columns(line);
        std::string country, place, name;
        columns >> country >> place >> name;
        names.push_back(name);
    }
    return names;
}

// Changes in these years that no rule tells, since the database lists them one by one.
bool IsListedYearByYear(const std::string& name) { return DatabaseClock(name) != DatabaseClock(FooterOf(name)); }

// The day of a change is counted from another day, so that no month, week and weekday tells it for every year.
const std::set<std::string> RelativeDays{
    "America/Nuuk",         // an hour before the last Sunday of March
    "America/Scoresbysund", // the same
    "Asia/Gaza",            // 50 hours after the start of the fourth Thursday of March
    "Asia/Hebron",          // the same
    "Asia/Jerusalem",       // 26 hours after the start of the fourth Thursday of March
};

class NamedZone : public testing::TestWithParam<const char*> {};

TEST_P(NamedZone, ChangesItsClockWhenTheDatabaseSaysSoFrom2025To2030) {
    const std::string name = GetParam();
    if (IsListedYearByYear(name))
        GTEST_SKIP() << "this database lists changes of " << name << " that its rule does not tell";
    const Clock expected = DatabaseClock(name);
    EXPECT_EQ(expected, OurClock(name));
    const bool hasDaylight = FooterOf(name).find(',') != std::string::npos;
    EXPECT_EQ(hasDaylight ? 2u * (LastYear - FirstYear + 1) + 1 : 1u, expected.size());
}

INSTANTIATE_TEST_SUITE_P(
    , NamedZone,
    testing::Values("UTC", "Asia/Tokyo", "Asia/Shanghai", "Asia/Singapore", "Europe/Moscow", "America/Sao_Paulo",
                    "Europe/London", "Europe/Berlin", "Europe/Athens", "Europe/Dublin", "America/New_York",
                    "America/Chicago", "America/Denver", "America/Los_Angeles", "America/St_Johns",
                    "America/Havana", "America/Santiago", "Pacific/Easter", "America/Miquelon", "Africa/Cairo",
                    "Asia/Beirut", "Asia/Kolkata", "Asia/Kathmandu", "Asia/Kabul", "Asia/Tehran", "Australia/Eucla",
                    "Australia/Sydney", "Australia/Adelaide", "Australia/Darwin", "Australia/Lord_Howe",
                    "Pacific/Auckland", "Pacific/Chatham", "Pacific/Norfolk", "Pacific/Marquesas",
                    "Pacific/Kiritimati", "Pacific/Pago_Pago", "Atlantic/Azores", "Antarctica/Troll"),
    [](const auto& info) {
        std::string name(info.param);
        std::ranges::replace(name, '/', '_');
        return name;
    });

TEST(ZoneDatabase, EveryZoneWithARuleIsToldExactly) {
    std::size_t compared = 0;
    for (const std::string& name : AllZones()) {
        if (RelativeDays.contains(name) || IsListedYearByYear(name))
            continue;
        EXPECT_EQ(DatabaseClock(name), OurClock(name)) << name;
        ++compared;
    }
    EXPECT_GT(compared, 300u);
}

TEST(ZoneDatabase, ChangeOnADayCountedFromAnotherIsExactInTheYearItIsToldFor) {
    for (const std::string& name : RelativeDays) {
        const auto rule = ReadZoneFile(ReadFile(Database / name));
        ASSERT_TRUE(rule) << name;
        const Clock ours = ClockOf(
            [&](int inYear) { return ToTimeZoneInformation(NormalizedFor(*rule, year(inYear)), year(inYear)); });
        if (!IsListedYearByYear(name)) {
            EXPECT_EQ(DatabaseClock(name), ours) << name;
        } else {
            EXPECT_EQ(DatabaseClock(FooterOf(name)), ours) << name;
        }
    }
}

TEST(ZoneDatabase, ChangesListedYearByYearAreLeftOut) {
    // The clock goes back for Ramadan, which no rule of months and weekdays tells.
    for (const std::string name : {"Africa/Casablanca", "Africa/El_Aaiun"}) {
        const TIME_ZONE_INFORMATION zone = LocalZone(name);
        EXPECT_EQ(-60, zone.Bias) << name;
        EXPECT_EQ(0, zone.StandardDate.wMonth) << name;
        EXPECT_TRUE(IsListedYearByYear(name)) << name;
    }
}

} // namespace
