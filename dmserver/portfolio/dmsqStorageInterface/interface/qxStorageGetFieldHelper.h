// Reading one field of a table's current record.
//
// GetField is for fields that must be there: an absent one is reported as "field != 0". The pair in udf_helper is
// for those that may be missing and is silent. Both then answer 0, 0.0 or an empty text.
//
// A null table raises platform::CComError with E_POINTER. Threads: as the table.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"
#include "platform/com/bstr.h"
#include "platform/com/com_ptr.h"

// T is LONG, double or platform::CBstr.
template <class T>
T GetField(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, LONG id);
template <>
LONG GetField<LONG>(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, LONG id);
template <>
double GetField<double>(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, LONG id);
template <>
platform::CBstr GetField<platform::CBstr>(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, LONG id);

// By the column's name.
template <class T>
T GetField(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, const wchar_t* name);
template <>
LONG GetField<LONG>(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, const wchar_t* name);

namespace udf_helper {

LONG GetFieldAsLong(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, LONG id);
platform::CBstr GetFieldAsString(const platform::CComPtr<IDM_dmudfcom::IdmTable>& table, LONG id);

} // namespace udf_helper
