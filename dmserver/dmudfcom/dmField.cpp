#include "dmField.h"

#include "CarrierText.h"
#include "CellText.h"
#include "FieldMap.h"
#include "Guarded.h"
#include "dmTable.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace IDM_dmudfcom {

namespace {

struct tagTypeInfo {
    EColumnType Type;
    std::string_view Name;
    LONG Size;
    LONG DisplayLength; // of the longest value
};

constexpr std::array Types{
    tagTypeInfo{EColumnType::Text, "Text", 0, 0},    tagTypeInfo{EColumnType::Short, "Short", 2, 6},
    tagTypeInfo{EColumnType::Long, "Long", 4, 11},   tagTypeInfo{EColumnType::Int64, "Int64", 8, 20},
    tagTypeInfo{EColumnType::Float, "Float", 4, 15}, tagTypeInfo{EColumnType::Double, "Double", 8, 24},
    tagTypeInfo{EColumnType::Date, "Date", 4, 10},   tagTypeInfo{EColumnType::Time, "Time", 4, 8},
};

const tagTypeInfo& InfoOf(EColumnType type) {
    for (const tagTypeInfo& info : Types)
        if (info.Type == type)
            return info;
    return Types[0];
}

LONG ToLong(ULONG value) { return static_cast<LONG>(std::min<ULONG>(value, std::numeric_limits<LONG>::max())); }

double PiecesOfOne(const tagField& field) { return field.BaseCode > 0 ? field.BaseCode : 1; }

} // namespace

LONG SizeOf(const tagField& field) {
    return field.Type == EColumnType::Text ? ToLong(field.Size) : InfoOf(field.Type).Size;
}

LONG SizeExOf(const tagField& field) {
    return SizeOf(field) + (field.HasStatus != 0 && field.Status > 0 ? field.Status : 0);
}

CdmField::CdmField(CdmTable& table, ULONG field)
    : m_Table(table), m_Field(field), m_Known(table.Records().Field(field)) {}

void CdmField::Rebind() {
    m_Field = m_Table.Records().FindField(m_Known.Id);
    if (m_Field == NoField)
        return;
    if (const tagField& field = m_Table.Records().Field(m_Field); IsFor(field))
        m_Known = field;
    else
        m_Field = NoField;
}

bool CdmField::IsFor(const tagField& field) const {
    return m_Known.Id == field.Id && IsSameName(m_Known.Name, field.Name);
}

HRESULT CdmField::QueryInterface(REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (!platform::detail::Answers<IdmField>(iid))
        return E_NOINTERFACE;
    *object = static_cast<IdmField*>(this);
    AddRef();
    return S_OK;
}

ULONG CdmField::AddRef() { return m_Table.AddRef(); }
ULONG CdmField::Release() { return m_Table.Release(); }

const tagField& CdmField::Description() const {
    return m_Field == NoField ? m_Known : m_Table.Records().Field(m_Field);
}

HRESULT CdmField::Tell(LONG* target, LONG value) const {
    if (!target)
        return E_POINTER;
    *target = value;
    return S_OK;
}

HRESULT CdmField::Change(LONG tagField::*member, LONG value) {
    if (m_Field == NoField)
        return E_FAIL;
    m_Table.Records().Field(m_Field).*member = value;
    return S_OK;
}

// `reader` is told where the cell is and says whether it had a value of the kind asked for.
template <class Reader>
HRESULT CdmField::Read(Reader&& reader) const {
    return Guarded([&]() -> HRESULT {
        const Row row = m_Field == NoField ? NoRow : m_Table.RowToRead();
        if (row == NoRow)
            return S_FALSE;
        return reader(m_Table.Records().Column(m_Field), row) ? S_OK : S_FALSE;
    });
}

template <class Writer>
HRESULT CdmField::Write(Writer&& writer) {
    return Guarded([&]() -> HRESULT {
        Row row = NoRow;
        if (const HRESULT status = m_Table.RowToWrite(m_Field, row); FAILED(status))
            return status;
        return writer(m_Table.Records().Edit(m_Field, row), row) ? S_OK : S_FALSE;
    });
}

template <class T>
HRESULT CdmField::ReadWhole(T* target) const {
    if (!target)
        return E_POINTER;
    *target = 0;
    return Read([target](const CColumn& column, Row row) {
        std::int64_t value;
        if (!column.Integer(row, value) || !std::in_range<T>(value))
            return false;
        *target = static_cast<T>(value);
        return true;
    });
}

HRESULT CdmField::get_Id(LONG* Value) { return Tell(Value, Description().Id); }
HRESULT CdmField::get_Type(LONG* Value) { return Tell(Value, static_cast<LONG>(Description().Type)); }
HRESULT CdmField::get_Size(LONG* Value) { return Tell(Value, SizeOf(Description())); }
HRESULT CdmField::get_SizeEx(LONG* Value) { return Tell(Value, SizeExOf(Description())); }
HRESULT CdmField::get_BaseCode(LONG* Value) { return Tell(Value, Description().BaseCode); }
HRESULT CdmField::put_BaseCode(LONG Value) { return Change(&tagField::BaseCode, Value); }
HRESULT CdmField::get_HasStatus(LONG* Value) { return Tell(Value, Description().HasStatus); }
HRESULT CdmField::put_HasStatus(LONG Value) { return Change(&tagField::HasStatus, Value); }
HRESULT CdmField::get_Status(LONG* Value) { return Tell(Value, Description().Status); }
HRESULT CdmField::put_Status(LONG Value) { return Change(&tagField::Status, Value); }

HRESULT CdmField::get_Name(BSTR* Value) {
    if (!Value)
        return E_POINTER;
    *Value = MakeBstr(Description().Name);
    return *Value ? S_OK : E_OUTOFMEMORY;
}

HRESULT CdmField::get_TypeName(BSTR* Value) {
    if (!Value)
        return E_POINTER;
    *Value = MakeBstr(InfoOf(Description().Type).Name);
    return *Value ? S_OK : E_OUTOFMEMORY;
}

HRESULT CdmField::get_Offset(LONG* Value) {
    LONG offset = 0;
    for (ULONG field = 0; m_Field != NoField && field < m_Field; ++field)
        offset += SizeExOf(m_Table.Records().Field(field));
    return Tell(Value, offset);
}

HRESULT CdmField::IsName(BSTR Val, LONG* Value) {
    return Guarded([&] {
        const auto name = ToStored(platform::ViewOf(Val));
        return Tell(Value, name && IsSameName(*name, Description().Name));
    });
}

HRESULT CdmField::get_AsString(BSTR* Value) {
    if (!Value)
        return E_POINTER;
    *Value = nullptr;
    std::string scratch;
    std::string_view text;
    const HRESULT status = Read([&](const CColumn& column, Row row) {
        text = column.Text(row, scratch);
        return true;
    });
    if (FAILED(status))
        return status;
    return Guarded([&] {
        *Value = MakeBstr(text);
        return *Value ? status : E_FAIL;
    });
}

HRESULT CdmField::put_AsString(BSTR Value) {
    return Guarded([&]() -> HRESULT {
        if (!Value)
            return Write([](CColumn& column, Row row) {
                column.SetNull(row);
                return true;
            });
        const auto text = ToStored(platform::ViewOf(Value));
        if (!text)
            return E_INVALIDARG;
        return Write([&](CColumn& column, Row row) { return column.SetText(row, *text); });
    });
}

HRESULT CdmField::get_AsShort(SHORT* Value) { return ReadWhole(Value); }
HRESULT CdmField::get_AsLong(LONG* Value) { return ReadWhole(Value); }

HRESULT CdmField::put_AsShort(SHORT Value) { return put_AsLong(Value); }

HRESULT CdmField::put_AsLong(LONG Value) {
    return Write([Value](CColumn& column, Row row) { return column.SetInteger(row, Value); });
}

HRESULT CdmField::get_AsFloat(FLOAT* Value) {
    if (!Value)
        return E_POINTER;
    *Value = 0;
    return Read([Value](const CColumn& column, Row row) {
        double value;
        const bool isReal = column.Real(row, value);
        if (!isReal || (std::isfinite(value) && std::abs(value) > std::numeric_limits<float>::max()))
            return false;
        *Value = static_cast<float>(value);
        return true;
    });
}

HRESULT CdmField::put_AsFloat(FLOAT Value) {
    return Write([Value](CColumn& column, Row row) {
        std::string scratch;
        // As text, a float has fewer digits than the double of the same value.
        return column.Type() == EColumnType::Text ? column.SetText(row, WriteReal(Value, scratch))
                                                  : column.SetReal(row, Value);
    });
}

HRESULT CdmField::get_AsDouble(DOUBLE* Value) {
    if (!Value)
        return E_POINTER;
    *Value = 0;
    return Read([Value](const CColumn& column, Row row) { return column.Real(row, *Value); });
}

HRESULT CdmField::put_AsDouble(DOUBLE Value) {
    return Write([Value](CColumn& column, Row row) { return column.SetReal(row, Value); });
}

HRESULT CdmField::ReadMoment(LONG* target, EColumnType own) const {
    if (!target)
        return E_POINTER;
    *target = 0;
    const EColumnType type = Description().Type;
    const EColumnType other = own == EColumnType::Date ? EColumnType::Time : EColumnType::Date;
    if (type != EColumnType::Text && type != other)
        return ReadWhole(target);
    return Read([&](const CColumn& column, Row row) {
        if (column.IsNull(row))
            return true;
        if (type == other)
            return false; // a day has no time, a time no day
        std::string scratch;
        const std::string_view text = column.Text(row, scratch);
        const auto value = own == EColumnType::Date ? ParseDate(text) : ParseTime(text);
        if (!value || !std::in_range<LONG>(*value))
            return false;
        *target = static_cast<LONG>(*value);
        return true;
    });
}

HRESULT CdmField::WriteMoment(LONG value, EColumnType own) {
    return Write([&](CColumn& column, Row row) {
        std::string scratch;
        if (column.Type() == EColumnType::Text)
            return column.SetText(row,
                                  own == EColumnType::Date ? WriteDate(value, scratch) : WriteTime(value, scratch));
        const bool isOther = column.Type() == (own == EColumnType::Date ? EColumnType::Time : EColumnType::Date);
        return column.SetInteger(row, isOther ? 0 : value) && !isOther;
    });
}

HRESULT CdmField::get_AsDate(LONG* Value) { return ReadMoment(Value, EColumnType::Date); }
HRESULT CdmField::put_AsDate(LONG Value) { return WriteMoment(Value, EColumnType::Date); }
HRESULT CdmField::get_AsTime(LONG* Value) { return ReadMoment(Value, EColumnType::Time); }
HRESULT CdmField::put_AsTime(LONG Value) { return WriteMoment(Value, EColumnType::Time); }

HRESULT CdmField::get_AsPieces(LONG* Value) {
    if (!Value)
        return E_POINTER;
    *Value = 0;
    return Read([&](const CColumn& column, Row row) {
        double value;
        if (!column.Real(row, value))
            return false;
        const auto pieces = ToInteger(std::round(value * PiecesOfOne(Description())));
        if (!pieces || !std::in_range<LONG>(*pieces))
            return false;
        *Value = static_cast<LONG>(*pieces);
        return true;
    });
}

HRESULT CdmField::put_AsPieces(LONG Value) {
    return Write([&](CColumn& column, Row row) { return column.SetReal(row, Value / PiecesOfOne(Description())); });
}

HRESULT CdmField::get_DisplayLength(LONG* Value) {
    const tagField& field = Description();
    if (field.Type != EColumnType::Text)
        return Tell(Value, InfoOf(field.Type).DisplayLength);
    if (field.Size != 0 || m_Field == NoField)
        return Tell(Value, ToLong(field.Size));
    return Tell(Value, ToLong(m_Table.Records().Column(m_Field).LongestText()));
}

} // namespace IDM_dmudfcom
