// The kinds of change that the store tells of, by name. Each is one bit of a mask.
#pragma once

#include "platform/com/types.h"

#include <iterator>
#include <string>
#include <string_view>

namespace sqCli {

// By the number of the bit.
inline constexpr std::string_view ChangeKinds[] = {
    "symbol_added",
    "symbol_changed",
    "symbol_deleted",
    "holidays",
    "holiday_dates",
    "settings",
    "feeds",
    "exchanges",
    "sessions",
    "session_details",
    "asc_deleted",
    "asc_saved",
    "client",
    "rules",
    "roots",
    "native_symbols",
    "custom_future_added",
    "custom_future_changed",
    "custom_future_deleted",
    "currencies",
};

inline constexpr ULONG AllChanges = (1U << std::size(ChangeKinds)) - 1;

// The names of the mask's bits, with commas between them.
[[nodiscard]] std::string ChangeNames(ULONG mask);

// A mask out of names and numbers, decimal or with 0x, with commas between them. Raises CCommandError (WrongUsage).
[[nodiscard]] ULONG ParseChangeMask(std::string_view text);

} // namespace sqCli
