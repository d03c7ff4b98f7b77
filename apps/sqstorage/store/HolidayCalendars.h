// Holiday calendars and their dates, as the store keeps them.
//
// Errors: CStoreRefusal.
#pragma once

#include "Store.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace sqCli {

struct tagCalendar {
    LONG Key;
    std::string Name;
};

// Compares in the order in which dates are shown.
struct tagHolidayDate {
    std::optional<tagDay> Start;
    std::optional<tagDay> End;
    std::string Description;
    friend auto operator<=>(const tagHolidayDate&, const tagHolidayDate&) = default;
};

struct tagOwnedHolidayDate {
    LONG Calendar;
    tagHolidayDate Date;
};

// By name, then by key.
[[nodiscard]] std::vector<tagCalendar> SelectCalendars(CStore& store);
// Returns the key.
LONG InsertCalendar(CStore& store, const std::string& name);

// Of all calendars, in no order.
[[nodiscard]] std::vector<tagOwnedHolidayDate> SelectHolidayDates(CStore& store);

// Replaces all dates of the calendar. The store does that in two steps; `before` is put back when the second fails.
void ReplaceHolidayDates(CStore& store, LONG calendar, std::span<const tagHolidayDate> dates,
                         std::span<const tagHolidayDate> before);

} // namespace sqCli
