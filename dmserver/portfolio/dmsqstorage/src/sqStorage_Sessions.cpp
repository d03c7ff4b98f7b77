#include "sqStorage.h"

#include "StatementText.h"
#include "TableShapes.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace sqStorage {

namespace {

// The longest name that an update stores whole, after escaping.
constexpr std::size_t SessionNameLimit = 62;

} // namespace

void CStorage::SelectSession(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    SelectInto(scope, Request, Table, [](IdmRequest& request) {
        LONG Session = 0;
        LONG SessionType = 0;
        request.get_SessionId(&Session);
        if (Session != 0)
            return CSqlText(L"SELECT * FROM SESSIONS WHERE SESSION=%d", Session);
        request.get_SessionType(&SessionType);
        return CSqlText(L"SELECT * FROM SESSIONS WHERE SESSION_TYPE=%d", SessionType);
    });
}

LONG CStorage::InsertSession(LONG SessionType, const wchar_t* SessionName, LONG TimeZone) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            // A template's name is taken, whatever the type of the new row; the refusal is silent.
            if (!scope.Assert(SessionName != nullptr, L"SessionName") || IsSessionTemplateExists(SessionName))
                return 0;
            const LONG Session = GenerateId();
            if (Session == 0)
                return 0;
            const CSqlText sql(L"INSERT INTO SESSIONS VALUES(%d,%d,'%s',%d)", Session, SessionType,
                               CQuoted(SessionName).Text(), TimeZone);
            ExecuteAndNotify(scope, sql.Text(), notifySession);
            return Session;
        },
        LONG{0});
}

void CStorage::UpdateSession(LONG Session, LONG SessionType, const wchar_t* SessionName, LONG TimeZone) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        if (!scope.Assert(SessionName != nullptr, L"SessionName"))
            return;
        std::wstring name = CQuoted(SessionName).Text();
        if (name.size() > SessionNameLimit) {
            const std::wstring cut = name.substr(0, SessionNameLimit - 1) + L"\"\"";
            scope.Trace(L"SessionName '%s' was truncated to '%s'.", name, cut);
            name = cut;
        }
        const CSqlText sql(
            L"UPDATE SESSIONS SET SESSION=%d, SESSION_TYPE=%d, SESSION_NAME='%s', TIME_ZONE=%d WHERE SESSION=%d",
            Session, SessionType, name, TimeZone, Session);
        ExecuteAndNotify(scope, sql.Text(), notifySession);
    });
}

LONG CStorage::DeleteSession(LONG Session) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            if (IsSessionTemplateUsed(Session, L"SYMBOL", L"PORTFOLIO") ||
                IsSessionTemplateUsed(Session, L"CF", L"CUSTOM_FUTURES"))
                return 0;
            DeleteSessionDetails(Session);
            ExecuteAndNotify(scope, CSqlText(L"DELETE FROM SESSIONS WHERE SESSION=%d", Session).Text(),
                             notifySession);
            return 1;
        },
        LONG{0});
}

void CStorage::SelectSessionDetails(IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    SelectInto(scope, Request, Table, [](IdmRequest& request) {
        LONG Session = 0;
        request.get_SessionId(&Session);
        return Session == 0 ? CSqlText(L"SELECT * FROM SESSION_DETAILS")
                            : CSqlText(L"SELECT * FROM SESSION_DETAILS WHERE SESSION=%d", Session);
    });
}

void CStorage::InsertSessionDetails(IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        ReplaceDetails(scope, Table, IDM_dmudfcom::fieldSession, L"SessionField",
                       L"INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)", notifySessionDetails,
                       [&](LONG Session) { DeleteSessionDetails(Session); });
    });
}

void CStorage::DeleteSessionDetails(LONG Session) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        ExecuteAndNotify(scope, CSqlText(L"DELETE FROM SESSION_DETAILS WHERE SESSION=%d", Session).Text(),
                         notifySessionDetails);
    });
}

} // namespace sqStorage
