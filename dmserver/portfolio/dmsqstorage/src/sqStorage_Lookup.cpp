#include "sqStorage.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/activation.h"

namespace sqStorage {

void CStorage::dumpWarning(IdmTable* Table, const wchar_t* Text, const std::wstring& Tag) const {
    const BugSlayerUtil::CScope scope(this);
    scope.Trace(L"%s", L"[WARNING]  " + Tag + L", GetByName = " + Text);
    ForEachRecord(*Table, [&] { scope.Trace(L"[WARNING]  ID = %d", FirstFieldAsLong(*Table)); });
}

CComPtr<IdmTable> CStorage::NewLookup(const BugSlayerUtil::CScope& scope) {
    CComPtr<IdmTable> table;
    scope.Check(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table), L"IdmTable");
    return table;
}

LONG CStorage::FindKey(IdmTable& Table, const wchar_t* sql, const wchar_t* text, const wchar_t* tag) {
    return FindRow(Table, sql, text, tag) ? FirstFieldAsLong(Table) : 0;
}

bool CStorage::FindRow(IdmTable& Table, const wchar_t* sql, const wchar_t* text, const wchar_t* tag) {
    Execute(sql, nullptr, &Table);
    LONG count = 0;
    Table.First();
    Table.get_RecordCount(&count);
    // Rows that share a name are a damaged catalogue, and the first one is as good as any.
    if (count > 1)
        dumpWarning(&Table, text, tag);
    if (count < 1)
        return false;
    Table.First();
    return true;
}

} // namespace sqStorage
