#include "sqStorage.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/activation.h"

namespace sqStorage {

void CStorage::dumpWarning(IdmTable* Table, const wchar_t* Text, const std::wstring& Tag) const {
    const BugSlayerUtil::CScope scope(this);
    scope.Trace(L"%s", L"[WARNING]  " + Tag + L", GetByName = " + Text);
    ForEachRecord(*Table, [&] { scope.Trace(L"[WARNING]  ID = %d", FirstFieldAsLong(*Table)); });
}

LONG CStorage::FindKey(const BugSlayerUtil::CScope& scope, const wchar_t* sql, const wchar_t* text,
                       const wchar_t* tag) {
    const auto row = FindRow(scope, sql, text, tag);
    return row ? FirstFieldAsLong(*row) : 0;
}

CComPtr<IdmTable> CStorage::FindRow(const BugSlayerUtil::CScope& scope, const wchar_t* sql, const wchar_t* text,
                                    const wchar_t* tag) {
    CComPtr<IdmTable> table;
    if (!scope.Check(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table), L"IdmTable"))
        return {};
    Execute(sql, nullptr, table.Get());
    LONG count = 0;
    table->First();
    table->get_RecordCount(&count);
    // Rows that share a name are a damaged catalogue, and the first one is as good as any.
    if (count > 1)
        dumpWarning(table.Get(), text, tag);
    if (count < 1)
        return {};
    table->First();
    return table;
}

} // namespace sqStorage
