// Bringing the dates of a file into a calendar that has dates already.
//
// A day is the unit: what the file says of a day is compared with what the calendar says of that day. A day that
// the calendar lacks is added. One on which both say the same is unchanged. Otherwise the calendar stays as it is,
// or, with `update`, the day becomes as the file has it. Days of which the file says nothing are never touched.
#pragma once

#include "Dataset.h"
#include "apps/sqstorage/store/HolidayCalendars.h"

#include <vector>

namespace sqCli {

struct tagHolidayMerge {
    std::vector<tagHolidayDate> Dates; // of the calendar afterwards, sorted
    tagImportCounts Counts;

    [[nodiscard]] bool Changes() const { return Counts.Added + Counts.Updated > 0; }
};

// All dates of the file have a start.
[[nodiscard]] tagHolidayMerge MergeHolidays(const std::vector<tagHolidayDate>& calendar,
                                            const std::vector<tagHolidayDate>& file, bool update);

} // namespace sqCli
