// The trading times of a session that the store and its hosts take.
#pragma once

#include "TableFile.h"
#include "apps/sqstorage/store/Sessions.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

inline constexpr std::array WeekColumns{tagColumnRule{"START_DAY", true}, tagColumnRule{"START_TIME", true},
                                        tagColumnRule{"END_DAY", true},   tagColumnRule{"END_TIME", true},
                                        tagColumnRule{"VALUE5", false},   tagColumnRule{"VALUE6", false},
                                        tagColumnRule{"VALUE7", false}};

using WeekValues = std::array<std::string_view, WeekColumns.size()>;

// The values in the order of the columns. Nothing when one is not taken; each fault is added to the reasons.
[[nodiscard]] std::optional<tagSessionDetail> ParseDetail(const WeekValues& values,
                                                          std::vector<std::string>& reasons);

// Why the details are too many for the text in which hosts read a session; nothing when they fit.
[[nodiscard]] std::optional<std::string> WeekProblem(std::span<const tagSessionDetail> details);

} // namespace sqCli
