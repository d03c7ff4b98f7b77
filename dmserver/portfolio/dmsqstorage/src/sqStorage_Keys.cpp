#include "sqStorage.h"

#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace sqStorage {

namespace {

// A field of the first row; null when the result has no such column.
CComPtr<IdmField> FirstRowField(IdmTable& table, LONG id) {
    CComPtr<IdmField> field;
    table.First();
    table.get_FieldById(id, field.Put());
    return field;
}

LONG AsLong(IdmField& field) {
    LONG value = 0;
    field.get_AsLong(&value);
    return value;
}

} // namespace

int CStorage::DeleteAnything(const wchar_t* Sql) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Rethrowing(
        [&] {
            COutputRequest request(m_Database.Get());
            int deleted = 1;
            if (request.Select(Sql) > 0) {
                if (const auto field = FirstRowField(*request.Table(), IDM_dmudfcom::fieldDeleted))
                    deleted = AsLong(*field) != 0;
                else
                    scope.Trace(L"Field DELETED not found in Table");
            }
            request.Close();
            return deleted;
        },
        L"DeleteAnything");
}

LONG CStorage::GetDataFeedId1(const wchar_t* Clsid) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            COutputRequest request(m_Database.Get());
            if (request.Select(
                    CSqlText(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='%s' AND DELETED=1", Clsid).Text()) <=
                0)
                return 0;
            const auto field = FirstRowField(*request.Table(), IDM_dmudfcom::fieldDataFeed);
            return scope.Assert(static_cast<bool>(field), L"Field") ? AsLong(*field) : 0;
        },
        LONG{0});
}

int CStorage::IsPrimaryInstance(const wchar_t* Clsid) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> int {
            COutputRequest request(m_Database.Get());
            if (request.Select(
                    CSqlText(L"SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID='%s'", Clsid).Text()) <= 0)
                return 0;
            const auto field = FirstRowField(*request.Table(), IDM_dmudfcom::fieldDataFeed);
            if (!field) {
                scope.Trace(L"Field ID not found in Table");
                return 0;
            }
            return AsLong(*field) == 0;
        },
        0);
}

int CStorage::IsSessionTemplateExists(const wchar_t* Name) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> int {
            if (!Name || !*Name)
                return 0;
            COutputRequest request(m_Database.Get());
            const CSqlText sql(
                L"SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER('%s')",
                CQuoted(Name).Text());
            return request.Select(sql.Text()) != 0;
        },
        0);
}

int CStorage::IsSessionTemplateUsed(LONG Session, const wchar_t* Column, const wchar_t* Table) {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> int {
            COutputRequest request(m_Database.Get());
            const CSqlText sql(L"SELECT %s FROM %s WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=%d", Column, Table,
                               Session);
            return request.Select(sql.Text()) != 0;
        },
        0);
}

} // namespace sqStorage
