// The names by which files know sessions.
//
// The database lets sessions share a name or have none, above all those that belong to one exchange. In files each
// has a name of its own: that in the store where it can be kept, otherwise one made from that of its exchange, or
// with a number behind it. Neither letter case nor blanks at the end tell two names apart, since the store refuses
// a template's name in whatever letter case, and the database ignores such blanks.
//
// A session that belongs to one symbol has none: the file of the symbols says it itself.
#pragma once

#include "apps/sqstorage/store/Sessions.h"

#include <string>
#include <vector>

namespace sqCli {

struct tagNamedSession {
    LONG Key;
    std::string NameInStore;
    tagSession Session; // under the name that it has in files
};

// By name.
[[nodiscard]] std::vector<tagNamedSession> NameSessions(CStore& store);

// What two names share that the store takes for the same.
[[nodiscard]] std::string SessionNameId(const std::string& name);

// False for a session of values that no import takes. An export leaves it out, with all that refers to it.
[[nodiscard]] bool IsExported(const tagSession& session);

} // namespace sqCli
