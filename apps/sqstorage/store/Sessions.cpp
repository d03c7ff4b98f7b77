#include "Sessions.h"

#include "WayBack.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <tuple>

namespace sqCli {

namespace {

using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::ITableRows;

// In the table's own order, which the store relies on.
constexpr std::array<std::string_view, 8> DetailColumns{"SESSION",  "START_DAY", "START_TIME", "END_DAY",
                                                        "END_TIME", "VALUE5",    "VALUE6",     "VALUE7"};

using Sessions = std::map<LONG, tagSession>;

void Take(const tagRowSet& rows, Sessions& sessions) {
    const auto at = ColumnsOf<4>(rows, {"SESSION", "SESSION_NAME", "SESSION_TYPE", "TIME_ZONE"});
    for (const auto& row : rows.Rows)
        sessions.try_emplace(LongOf(row[at[0]]),
                             tagSession{TextOf(row[at[1]]), LongOf(row[at[2]]), LongOf(row[at[3]])});
}

// The keys by which other rows know sessions.
std::set<LONG> NamedKeys(CStore& store) {
    std::set<LONG> keys;
    const auto collect = [&](CStore::SelectMethod method) {
        const tagRowSet rows = store.Select(method);
        const std::size_t key = ColumnOf(rows, "SESSION");
        for (const auto& row : rows.Rows)
            keys.insert(LongOf(row[key]));
    };
    collect(&CStore::IqxStorage::SelectExchange);
    collect(&CStore::IqxStorage::SelectSessionDetails);
    keys.erase(0); // no session
    return keys;
}

class CDetailsTable {
public:
    CDetailsTable() : m_Table(NewTable()), m_Rows(m_Table.As<ITableRows>()) {
        for (std::size_t column = 0; column < DetailColumns.size(); ++column)
            m_Columns[column] = m_Rows->AddColumn(DetailColumns[column], EColumnType::Long);
    }

    void Append(LONG session, const tagSessionDetail& detail) {
        const std::array values{session,
                                LONG{detail.StartDay.Number},
                                LONG{detail.StartTime.Seconds},
                                LONG{detail.EndDay.Number},
                                LONG{detail.EndTime.Seconds},
                                detail.Value5,
                                detail.Value6,
                                detail.Value7};
        m_Rows->AppendRow();
        for (std::size_t column = 0; column < values.size(); ++column)
            m_Rows->PutInteger(m_Columns[column], values[column]);
    }

    // On the first record, by which the store learns the session.
    IDM_dmudfcom::IdmTable* Positioned() {
        m_Table->First();
        return m_Table.Get();
    }

private:
    platform::CComPtr<IDM_dmudfcom::IdmTable> m_Table;
    platform::CComPtr<ITableRows> m_Rows;
    std::array<ULONG, DetailColumns.size()> m_Columns{};
};

void WriteDetails(CStore& store, LONG session, std::span<const tagSessionDetail> details) {
    CDetailsTable table;
    for (const tagSessionDetail& detail : details)
        table.Append(session, detail);
    store.Run([&](CStore::IqxStorage& storage) { return storage.InsertSessionDetails(table.Positioned()); });
}

SessionDetails DetailsOf(const tagRowSet& rows) {
    const auto at = ColumnsOf(rows, DetailColumns);
    SessionDetails details;
    for (const auto& row : rows.Rows) {
        const auto value = [&](std::size_t column) { return LongOf(row[at[column]]); };
        details[value(0)].push_back({tagWeekday{value(1)}, tagClockTime{value(2)}, tagWeekday{value(3)},
                                     tagClockTime{value(4)}, value(5), value(6), value(7)});
    }
    for (auto& [session, week] : details)
        std::ranges::sort(week);
    return details;
}

// The store doubles quotes and then cuts at 62 characters.
bool IsCutByUpdate(const std::wstring& name) {
    return name.size() + static_cast<std::size_t>(std::ranges::count(name, L'\'')) > 62;
}

} // namespace

std::vector<tagKeyedSession> SelectSessions(CStore& store) {
    Sessions found;
    for (LONG type = 0; type <= LastSessionType; ++type)
        Take(store.Select(&CStore::IqxStorage::SelectSession,
                          [&](CStore::IdmRequest& request) { request.put_SessionType(type); }),
             found);
    for (const LONG key : NamedKeys(store))
        if (!found.contains(key))
            Take(store.Select(&CStore::IqxStorage::SelectSession,
                              [&](CStore::IdmRequest& request) { request.put_SessionId(key); }),
                 found);
    std::vector<tagKeyedSession> sessions;
    for (auto& [key, session] : found)
        sessions.push_back({key, std::move(session)});
    std::ranges::sort(sessions, {}, [](const tagKeyedSession& row) { return std::tie(row.Session.Name, row.Key); });
    return sessions;
}

LONG InsertSession(CStore& store, const tagSession& session) {
    LONG key = 0;
    const platform::CBstr name(platform::FromUtf8(session.Name));
    store.Run([&](CStore::IqxStorage& storage) {
        return storage.InsertSession(session.Type, name.Get(), session.TimeZone, &key);
    });
    if (key < 1)
        throw CStoreRefusal("A template has that name already, perhaps in other letter case: choose another name.");
    return key;
}

void UpdateSession(CStore& store, LONG key, const tagSession& session) {
    const std::wstring name = platform::FromUtf8(session.Name);
    if (IsCutByUpdate(name))
        throw CStoreRefusal("It cuts a name of more than 62 characters, quotes counted twice, when a session "
                            "changes: shorten the name.");
    const HRESULT status = store.Run([&](CStore::IqxStorage& storage) {
        return storage.UpdateSession(key, session.Type, platform::CBstr(name).Get(), session.TimeZone);
    });
    if (status != S_OK)
        throw CStoreRefusal("The session is not there any more: import again.");
}

void DeleteSession(CStore& store, LONG key) {
    LONG deleted = 0;
    store.Run([&](CStore::IqxStorage& storage) { return storage.DeleteSession(key, &deleted); });
}

SessionDetails SelectSessionDetails(CStore& store) {
    return DetailsOf(store.Select(&CStore::IqxStorage::SelectSessionDetails));
}

std::vector<tagSessionDetail> SelectSessionDetails(CStore& store, LONG session) {
    return DetailsOf(store.Select(&CStore::IqxStorage::SelectSessionDetails,
                                  [&](CStore::IdmRequest& request) { request.put_SessionId(session); }))[session];
}

void ReplaceSessionDetails(CStore& store, LONG session, std::span<const tagSessionDetail> details,
                           std::span<const tagSessionDetail> before) {
    ChangeOrUndo([&] { WriteDetails(store, session, details); },
                 [&] {
                     if (!before.empty())
                         WriteDetails(store, session, before);
                 },
                 "its old details");
}

} // namespace sqCli
