#include "HolidayMerge.h"

#include <algorithm>
#include <map>
#include <set>

namespace sqCli {

namespace {

// What is said of each day; a date without a day stands under no day.
using Days = std::map<std::optional<tagDay>, std::set<tagHolidayDate>>;

Days ByDay(const std::vector<tagHolidayDate>& dates) {
    Days days;
    for (const tagHolidayDate& date : dates)
        days[date.Start].insert(date);
    return days;
}

std::size_t CountMissing(const std::set<tagHolidayDate>& wanted, const std::set<tagHolidayDate>& there) {
    return static_cast<std::size_t>(std::count_if(
        wanted.begin(), wanted.end(), [&](const tagHolidayDate& date) { return !there.contains(date); }));
}

} // namespace

tagHolidayMerge MergeHolidays(const std::vector<tagHolidayDate>& calendar, const std::vector<tagHolidayDate>& file,
                              bool update) {
    Days merged = ByDay(calendar);
    tagHolidayMerge result;
    for (const auto& [day, wanted] : ByDay(file)) {
        std::set<tagHolidayDate>& there = merged[day];
        const std::size_t missing = CountMissing(wanted, there);
        result.Counts.Unchanged += wanted.size() - missing;
        if (missing == 0)
            continue;
        if (there.empty())
            result.Counts.Added += missing;
        else
            (update ? result.Counts.Updated : result.Counts.Different) += missing;
        if (there.empty() || update)
            there = wanted;
    }
    for (const auto& [day, dates] : merged)
        result.Dates.insert(result.Dates.end(), dates.begin(), dates.end());
    return result;
}

} // namespace sqCli
