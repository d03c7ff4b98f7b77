#pragma once
// A time zone as a compact value without names. Any thread may call.

#include "platform/com/system_time.h"

#include <string>

namespace dmDateTime {

// A moment at which the clock changes; the fields mean what SYSTEMTIME's do.
struct ZoneDate {
    WORD Year = 0;
    WORD Minute = 0;
    WORD Milliseconds = 0;
    BYTE Day = 0;
    BYTE DayOfWeek = 0;
    BYTE Hour = 0;
    BYTE Month = 0;
    BYTE Second = 0;

    friend constexpr bool operator==(const ZoneDate&, const ZoneDate&) = default;
};

// Biases are minutes, positive to the west. The value of all zeros is GMT.
struct TimeZoneInformation {
    SHORT DaylightBias = 0;
    SHORT Bias = 0;
    ZoneDate DaylightDate;
    SHORT StandardBias = 0;
    ZoneDate StandardDate;
    bool IsSet = false; // the value has been filled

    // The zone of this machine. When it cannot be told, that is reported as a failed assertion, and the value is
    // GMT with IsSet true. Never throws for it.
    [[nodiscard]] static TimeZoneInformation CreateLocal();

    // The zone as a TimeZoneString, which has no place for the years.
    [[nodiscard]] std::wstring ToString() const;

    friend constexpr bool operator==(const TimeZoneInformation&, const TimeZoneInformation&) = default;
};

} // namespace dmDateTime
