// Trading times as one text: "Sun 17:00-Mon 16:00; Mon 17:00-Tue 16:00". An end on the same day leaves the day out,
// "Mon 09:30-16:00". The hosts' own values stand in parentheses behind, "Mon 09:30-16:00 (1 0 0)", unless they are
// 0.
#pragma once

#include "apps/sqstorage/store/Sessions.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

[[nodiscard]] std::string StretchText(const tagSessionDetail& detail);
[[nodiscard]] std::string WeekText(std::span<const tagSessionDetail> details);

// The times that the text of a column says, in the order of the week. Nothing when it says none that the store and
// its hosts take; why is added to the reasons.
[[nodiscard]] std::optional<std::vector<tagSessionDetail>> ParseWeek(std::string_view column, std::string_view text,
                                                                     std::vector<std::string>& reasons);

// The same times as hosts read them, "2:1980,2400,0,0,0;3420,3840,0,0,0;". Nothing when the text is another one.
[[nodiscard]] std::optional<std::vector<tagSessionDetail>> ParseSessionsString(std::string_view text);

} // namespace sqCli
