#include "Moment.h"

#include <fmt/format.h>

namespace sqCli {

std::string MomentText(std::chrono::system_clock::time_point moment, std::chrono::seconds utcOffset) {
    using namespace std::chrono;
    const auto local = floor<milliseconds>(moment) + utcOffset;
    const auto day = floor<days>(local);
    const year_month_day date(day);
    const hh_mm_ss time(local - day);
    const auto away = abs(duration_cast<minutes>(utcOffset));
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}{}{:02}:{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), time.hours().count(),
                       time.minutes().count(), time.seconds().count(), time.subseconds().count(),
                       utcOffset < 0s ? '-' : '+', away.count() / 60, away.count() % 60);
}

} // namespace sqCli
