// Time-zone strings that the store takes and gives back as they are.
#pragma once

#include "platform/com/system_time.h"

#include <optional>
#include <string>
#include <string_view>

namespace sqCli {

// Why the store would not keep the text for this column; nothing when it would.
[[nodiscard]] std::optional<std::string> ZoneProblem(std::string_view column, std::string_view text);

// What a text without problems says.
[[nodiscard]] TIME_ZONE_INFORMATION ParseZone(std::string_view text);

} // namespace sqCli
