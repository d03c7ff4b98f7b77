// Two shapes that the operations on tables share: a select that a request describes, and the replacement of
// details.
#pragma once

#include "diagnostics/interface/BugSlayer.h"
#include "sqStorage.h"

namespace sqStorage {

template <class MakeSql>
void CStorage::SelectInto(const BugSlayerUtil::CScope& scope, IdmRequest* Request, IdmTable* Table,
                          MakeSql&& makeSql) {
    scope.Guard([&] {
        // Both are checked, so that both are reported.
        const bool hasRequest = scope.Assert(Request != nullptr, L"Request");
        if (scope.Assert(Table != nullptr, L"Table") && hasRequest)
            Execute(makeSql(*Request).Text(), nullptr, Table);
    });
}

// Not one transaction: a reader between the two steps sees no details at all.
template <class Remove>
void CStorage::ReplaceDetails(const BugSlayerUtil::CScope& scope, IdmTable* Table, LONG field,
                              const wchar_t* fieldName, const wchar_t* insertSql, ULONG Mask, Remove&& remove) {
    if (!scope.Assert(Table != nullptr, L"Table"))
        return;
    CComPtr<IdmField> keyField;
    Table->get_FieldById(field, keyField.Put());
    if (scope.Assert(static_cast<bool>(keyField), fieldName)) {
        LONG key = 0;
        keyField->get_AsLong(&key);
        remove(key);
    }
    scope.Trace(L"sql = '%s'", insertSql);
    Execute(insertSql, Table, nullptr);
    BroadcastNotifyToSinks(Mask, 0);
}

} // namespace sqStorage
