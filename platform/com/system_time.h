// The automation ABI's records of a moment and of a time zone. Plain fields: nothing checks what they hold.
#pragma once

#include "platform/com/types.h"

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;     // 1 January; in a zone's rule 0 says that there is no change
    WORD wDayOfWeek; // 0 Sunday
    WORD wDay;       // of the month; in a zone's rule the week, 5 the last
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;

    friend constexpr bool operator==(const SYSTEMTIME&, const SYSTEMTIME&) = default;
};
static_assert(sizeof(SYSTEMTIME) == 16);

// Biases are minutes, positive to the west: UTC is local time plus Bias, plus the bias of the season. A date with
// wYear 0 recurs every year: the wDay-th wDayOfWeek of wMonth, at a time on the clock that is about to be changed.
struct TIME_ZONE_INFORMATION {
    LONG Bias;
    wchar_t StandardName[32];
    SYSTEMTIME StandardDate; // when daylight saving ends
    LONG StandardBias;
    wchar_t DaylightName[32];
    SYSTEMTIME DaylightDate; // when it begins
    LONG DaylightBias;

    friend constexpr bool operator==(const TIME_ZONE_INFORMATION&, const TIME_ZONE_INFORMATION&) = default;
};
