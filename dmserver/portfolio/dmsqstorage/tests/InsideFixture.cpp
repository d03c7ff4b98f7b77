#include "InsideFixture.h"

#include "PrivateMember.h"

#include <cwctype>
#include <stdexcept>

namespace tests {

struct Database {
    using Member = platform::CComPtr<sqStorage::IdmDatabase> sqStorage::CStorage::*;
    friend Member MemberOf(Database);
};
template struct CPrivateMember<Database, &sqStorage::CStorage::m_Database>;

InsideTest::InsideTest() {
    EXPECT_EQ(S_OK, m_Object->FinalConstruct());
    for (const wchar_t* table : {L"HOLIDAYS", L"HOLIDAY_DETAILS", L"SETTINGS", L"DATA_FEEDS", L"EXCHANGES",
                                 L"SESSIONS", L"SESSION_DETAILS", L"CURRENCY", L"PORTFOLIO", L"CUSTOM_FUTURES"})
        Sql(std::wstring(L"DELETE FROM ") + table);
    Recorder::Clear();
}

void InsideTest::CloseDatabase() { (Storage().*MemberOf(Database{}))->Close(); }

void InsideTest::WatchDatabase() {
    if (std::exchange(m_IsWatched, true))
        return;
    auto& database = Storage().*MemberOf(Database{});
    database = CComPtr<sqStorage::IdmDatabase>(platform::MakeObject<CWatchedDatabase>(database, m_Watch).Get());
}

void InsideTest::BreakStatement(const std::wstring& beginning) {
    m_Watch.BeforeStatement = [beginning](const std::wstring& statement) {
        if (statement.starts_with(beginning))
            throw std::runtime_error("broken");
    };
    WatchDatabase();
}

std::vector<std::wstring> InsideTest::TakeStatements() {
    std::vector<std::wstring> statements;
    for (const std::wstring& call : std::exchange(m_Watch.Calls, {}))
        if (std::iswupper(static_cast<std::wint_t>(call[0])))
            statements.push_back(call);
    return statements;
}

} // namespace tests
