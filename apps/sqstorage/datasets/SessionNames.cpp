#include "SessionNames.h"

#include "TextRules.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/Symbols.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace sqCli {

namespace {

std::map<LONG, std::string> OwnersOfSessions(CStore& store) {
    std::map<LONG, std::string> owners;
    for (const tagKeyedExchange& row : SelectExchanges(store))
        owners.emplace(row.Exchange.Session, row.Exchange.Name);
    return owners;
}

// The text with its end cut off so that the ending still fits.
std::string WithEnding(const std::string& text, const std::string& ending) {
    return platform::ToUtf8(platform::FromUtf8(text).substr(0, LongestText - ending.size())) + ending;
}

std::string FreeName(const std::string& wanted, const std::set<std::string>& taken) {
    std::string name = wanted;
    for (int count = 2; taken.contains(SessionNameId(name)); ++count)
        name = WithEnding(wanted, fmt::format(" {}", count));
    return name;
}

} // namespace

std::string SessionNameId(const std::string& name) {
    const std::string_view kept = std::string_view(name).substr(0, name.find_last_not_of(' ') + 1);
    return platform::ToUtf8(platform::FoldCase(platform::FromUtf8(kept)));
}

bool IsExported(const tagSession& session) {
    return !NameProblem("SESSION_NAME", session.Name) && session.Type >= 0 && session.Type <= LastSessionType &&
           session.TimeZone >= 0;
}

std::vector<tagNamedSession> NameSessions(CStore& store) {
    std::vector<tagNamedSession> named;
    std::set<std::string> taken;
    const std::map<LONG, std::string> owners = OwnersOfSessions(store);
    std::vector<tagKeyedSession> sessions = SelectSessions(store);
    const auto isExchanges = [&](const tagKeyedSession& row) { return owners.contains(row.Key); };
    if (!std::ranges::all_of(sessions, isExchanges)) {
        const auto& owned = OwnedBySymbols(store).Sessions;
        std::erase_if(sessions, [&](const tagKeyedSession& row) { return owned.contains(row.Key); });
    }
    // A name made up never takes that of another session.
    std::stable_partition(sessions.begin(), sessions.end(),
                          [](const tagKeyedSession& row) { return !row.Session.Name.empty(); });
    for (tagKeyedSession& row : sessions) {
        const auto owner = owners.find(row.Key);
        std::string wanted = !row.Session.Name.empty() ? row.Session.Name
                             : owner != owners.end()   ? owner->second
                                                       : std::string();
        if (wanted.empty())
            wanted = "Session";
        tagNamedSession& session = named.emplace_back(row.Key, row.Session.Name, row.Session);
        session.Session.Name = FreeName(wanted, taken);
        taken.insert(SessionNameId(session.Session.Name));
    }
    std::ranges::sort(named, {}, [](const tagNamedSession& session) { return session.Session.Name; });
    return named;
}

} // namespace sqCli
