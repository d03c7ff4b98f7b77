#pragma once
// Names of days and months and the short date, as the user's locale writes them. The locale is the one that the
// environment names at the moment of the call; where it is not installed, names are English. Any thread may call.

#include "platform/com/system_time.h"

#include <cstddef>

namespace platform {

// Blocks of consecutive numbers, one behind the other; a number past the end of one is in the next.
enum class ELocaleText : LONG {
    DayName1 = 0x2A,        // Monday, and on to Sunday
    ShortDayName1 = 0x31,   // Monday, and on to Sunday
    MonthName1 = 0x38,      // January, and on to December
    ShortMonthName1 = 0x44, // January, and on to December
    End = 0x50,
};

// The text that stands `offset` places behind the given one. Outside the blocks it is empty.
constexpr ELocaleText operator+(ELocaleText text, LONG offset) {
    return static_cast<ELocaleText>(static_cast<LONG>(text) + offset);
}

// Both write into the caller's buffer, cut what does not fit, always end the text with a zero (a buffer of no
// characters is left alone), and answer how many characters they wrote in front of that zero.
std::size_t GetLocaleText(ELocaleText text, wchar_t* buffer, std::size_t capacity);
// Reads year, month, day and weekday, which must be those of a real date.
std::size_t GetShortDate(const SYSTEMTIME& date, wchar_t* buffer, std::size_t capacity);

} // namespace platform
