#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"

#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/com_error.h"

#include <source_location>

namespace {

using IDM_dmudfcom::IdmField;
using IDM_dmudfcom::IdmTable;
using platform::CBstr;
using platform::CComPtr;
using Place = std::source_location;

// A field read is too small a thing for enter and leave lines.
void TraceStatus(HRESULT status, const wchar_t* call, const Place& place = Place::current()) {
    if (status == S_OK)
        return;
    const BugSlayerUtil::TracerClass tracer(BugSlayerUtil::GetClient(), place.file_name(), place.line(), 0, nullptr,
                                            place.function_name(), nullptr, nullptr, nullptr, false, false);
    tracer.Trace(L"%s hr=%X", call, status);
}

CComPtr<IdmField> FindField(const CComPtr<IdmTable>& table, LONG id) {
    if (!table)
        platform::ThrowStatus(E_POINTER, L"table");
    CComPtr<IdmField> field;
    TraceStatus(table->get_FieldById(id, field.Put()), L"FieldById");
    return field;
}

CComPtr<IdmField> FindField(const CComPtr<IdmTable>& table, const wchar_t* name) {
    if (!table)
        platform::ThrowStatus(E_POINTER, L"table");
    CComPtr<IdmField> field;
    TraceStatus(table->get_FieldByName(CBstr(name).Get(), field.Put()), L"FieldByName");
    return field;
}

LONG ReadLong(const CComPtr<IdmField>& field) {
    LONG value = 0;
    if (field)
        TraceStatus(field->get_AsLong(&value), L"AsLong");
    return value;
}

double ReadDouble(const CComPtr<IdmField>& field) {
    double value = 0;
    if (field)
        TraceStatus(field->get_AsDouble(&value), L"AsDouble");
    return value;
}

CBstr ReadText(const CComPtr<IdmField>& field) {
    CBstr value;
    if (field)
        TraceStatus(field->get_AsString(value.Put()), L"AsString");
    return value.IsNull() ? CBstr(L"") : value;
}

CComPtr<IdmField> Required(CComPtr<IdmField> field) {
    BugSlayerUtil::Assert(static_cast<bool>(field), L"field != 0");
    return field;
}

} // namespace

template <>
LONG GetField<LONG>(const CComPtr<IdmTable>& table, LONG id) {
    return ReadLong(Required(FindField(table, id)));
}

template <>
double GetField<double>(const CComPtr<IdmTable>& table, LONG id) {
    return ReadDouble(Required(FindField(table, id)));
}

template <>
CBstr GetField<CBstr>(const CComPtr<IdmTable>& table, LONG id) {
    return ReadText(Required(FindField(table, id)));
}

template <>
LONG GetField<LONG>(const CComPtr<IdmTable>& table, const wchar_t* name) {
    return ReadLong(Required(FindField(table, name)));
}

namespace udf_helper {

LONG GetFieldAsLong(const CComPtr<IdmTable>& table, LONG id) { return ReadLong(FindField(table, id)); }

CBstr GetFieldAsString(const CComPtr<IdmTable>& table, LONG id) { return ReadText(FindField(table, id)); }

} // namespace udf_helper
