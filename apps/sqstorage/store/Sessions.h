// Trading sessions and their details, as the store keeps them.
//
// Errors: CStoreRefusal.
#pragma once

#include "Store.h"

#include <map>
#include <span>
#include <string>
#include <vector>

namespace sqCli {

// What a session is for: a number from 0. The store takes larger ones than the last, too, but lists no session that
// has one.
inline constexpr LONG LastSessionType = 3;
inline constexpr LONG ExchangeSession = 1; // an exchange's own
inline constexpr LONG TemplateSession = 2; // any symbol may use it

// Which clock a session's times are on.
inline constexpr LONG LocalClock = 0;
inline constexpr LONG UtcClock = 1;
inline constexpr LONG ExchangeClock = 2;

struct tagSession {
    std::string Name;
    LONG Type;
    LONG TimeZone;
    friend auto operator<=>(const tagSession&, const tagSession&) = default;
};

struct tagKeyedSession {
    LONG Key;
    tagSession Session;
};

// One stretch of trading, the same in every week. Compares in the order of the week.
struct tagSessionDetail {
    tagWeekday StartDay;
    tagClockTime StartTime;
    tagWeekday EndDay;
    tagClockTime EndTime;
    // Hosts' own; nothing here looks at them.
    LONG Value5;
    LONG Value6;
    LONG Value7;
    friend auto operator<=>(const tagSessionDetail&, const tagSessionDetail&) = default;
};

using SessionDetails = std::map<LONG, std::vector<tagSessionDetail>>;

// All of the four types, and those of any other type that an exchange or a detail names; by name, then by key.
[[nodiscard]] std::vector<tagKeyedSession> SelectSessions(CStore& store);
// Returns the key. Refused when a template has the name already, in whatever letter case.
LONG InsertSession(CStore& store, const tagSession& session);
// Refused when the store would cut the name.
void UpdateSession(CStore& store, LONG key, const tagSession& session);
// With its details; one that is a template of something stays.
void DeleteSession(CStore& store, LONG key);

// By session, each in the order of the week.
[[nodiscard]] SessionDetails SelectSessionDetails(CStore& store);
// Those of one session, whose key is not 0, in the order of the week.
[[nodiscard]] std::vector<tagSessionDetail> SelectSessionDetails(CStore& store, LONG session);
// Replaces all details of the session. The store does that in two steps; `before` is put back when the second
// fails.
void ReplaceSessionDetails(CStore& store, LONG session, std::span<const tagSessionDetail> details,
                           std::span<const tagSessionDetail> before);

} // namespace sqCli
