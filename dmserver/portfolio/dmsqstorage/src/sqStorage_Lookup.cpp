#include "sqStorage.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/activation.h"

namespace sqStorage {

namespace {

LONG FirstFieldAsLong(IdmTable& table) {
    CComPtr<IdmField> field;
    LONG value = 0;
    if (SUCCEEDED(table.get_Field(0, field.Put())) && field)
        field->get_AsLong(&value);
    return value;
}

} // namespace

void CStorage::dumpWarning(IdmTable* Table, const wchar_t* Text, const std::wstring& Tag) const {
    const BugSlayerUtil::CScope scope(this);
    scope.Trace(L"%s", L"[WARNING]  " + Tag + L", GetByName = " + Text);
    ForEachRecord(*Table, [&] { scope.Trace(L"[WARNING]  ID = %d", FirstFieldAsLong(*Table)); });
}

LONG CStorage::FindKey(const BugSlayerUtil::CScope& scope, const wchar_t* sql, const wchar_t* text,
                       const wchar_t* tag) {
    CComPtr<IdmTable> table;
    if (!scope.Check(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table), L"IdmTable"))
        return 0;
    Execute(sql, nullptr, table.Get());
    LONG count = 0;
    table->First();
    table->get_RecordCount(&count);
    // Rows that share a name are a damaged catalogue, and the first one is as good as any.
    if (count > 1)
        dumpWarning(table.Get(), text, tag);
    if (count < 1)
        return 0;
    table->First();
    return FirstFieldAsLong(*table);
}

} // namespace sqStorage
