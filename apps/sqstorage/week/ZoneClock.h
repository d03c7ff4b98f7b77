// The clock on the wall in a zone, by the zone's recurring rule.
//
// A value; threads: as any value. Raises nothing.
#pragma once

#include "platform/com/system_time.h"

#include <chrono>

namespace sqCli {

class CZoneClock {
public:
    // A zone whose changes cannot be told keeps its standard time. The zone of all zeros is UTC.
    explicit CZoneClock(const TIME_ZONE_INFORMATION& zone);

    // How far the clock is ahead of UTC.
    [[nodiscard]] std::chrono::minutes OffsetAt(std::chrono::sys_seconds moment) const;

    [[nodiscard]] std::chrono::local_seconds ToLocal(std::chrono::sys_seconds moment) const;
    // Of a time that the clock shows twice the first; one that it skips is counted on from the change.
    [[nodiscard]] std::chrono::sys_seconds ToUtc(std::chrono::local_seconds time) const;

private:
    struct tagSeason {
        std::chrono::sys_seconds Begin;
        std::chrono::sys_seconds End;
    };
    [[nodiscard]] tagSeason DaylightOf(std::chrono::year year) const;

    TIME_ZONE_INFORMATION m_Zone;
    bool m_HasDaylight;
    std::chrono::minutes m_Standard;
    std::chrono::minutes m_Daylight;
};

} // namespace sqCli
