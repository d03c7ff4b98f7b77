// One column of a table's current record.
//
// Ownership: a field is a part of its table. A reference on it is a reference on the table, so a held field keeps
// the table alive. Ask a table once for a field and hold it: no later read or write searches anything.
//
// Which record: the table's current one; after Append the record being appended; after SetKey the key's values.
//
// A field stays good for as long as it is held. When its table comes to show other records (Attach, AsVariant), it
// finds the field of the same id and name there. Where there is none it is detached: it still tells what it was,
// reads as null with S_FALSE, and refuses every put with E_FAIL.
//
// What a get answers, whatever the type of the cell:
//     null cell            0 or an empty text, S_OK
//     no current record    0 or an empty text, S_FALSE
//     no such value        0, S_FALSE: text that is no number, a number outside the range asked for
// A text is never a null BSTR unless the status is a failure (E_FAIL for stored bytes that are no UTF-8).
//
// What a put does: a value that the column's type cannot hold is stored as 0 and answered with S_FALSE. There is no
// record to write into: E_FAIL. Into the current record no Post is needed.
//
// Conversions know no locale:
//     text to number      blanks around it, a sign, digits, a decimal point, an exponent; to a whole number the
//                         fraction is cut off. Anything left over makes it no number. A date text is no number.
//     number to text      the fewest digits that read back as the same value, with a decimal point
//     date, time to text  DD.MM.YYYY and HH:MM:SS; a day outside years 1 to 9999, or seconds outside a day, is
//                         written as the number it is
//     text to date, time  those forms, a fraction of a second dropped; a whole number is the day or the seconds
//     date, time          as numbers: days since 30 December 1899, seconds since midnight
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_dmudfcom {

struct IdmField : IDispatch {
    // Of the field map, or one made from the name (FieldIds.h).
    virtual HRESULT get_Id(LONG* Value) = 0;
    virtual HRESULT get_Name(BSTR* Value) = 0;

    // A type code (EColumnType in TableRows.h), and its name: "Text", "Long", "Date" ...
    virtual HRESULT get_Type(LONG* Value) = 0;
    virtual HRESULT get_TypeName(BSTR* Value) = 0;

    // Where the cell would lie in a packed record: the sum of the SizeEx of the fields before it.
    virtual HRESULT get_Offset(LONG* Value) = 0;

    // Bytes of a cell: 2, 4 or 8. Of a text the declared greatest number of characters, 0 where none was declared;
    // a longer text is kept whole all the same.
    virtual HRESULT get_Size(LONG* Value) = 0;

    // Size, and the bytes of the status (Status) where HasStatus is not 0.
    virtual HRESULT get_SizeEx(LONG* Value) = 0;

    // 1 when `Val` is the field's name, without regard to the case of ASCII letters.
    virtual HRESULT IsName(BSTR Val, LONG* Value) = 0;

    // The number of pieces that make one whole unit (AsPieces); 0 means 1. Otherwise a plain value.
    virtual HRESULT get_BaseCode(LONG* Value) = 0;
    virtual HRESULT put_BaseCode(LONG Value) = 0;

    // Whether a status stands beside the value, and how many bytes it takes. Plain values, carried and not used.
    virtual HRESULT get_HasStatus(LONG* Value) = 0;
    virtual HRESULT put_HasStatus(LONG Value) = 0;
    virtual HRESULT get_Status(LONG* Value) = 0;
    virtual HRESULT put_Status(LONG Value) = 0;

    // A put of null makes the cell null. A put of a blank text makes a cell null that is not of type Text. Text
    // that is no Unicode: E_INVALIDARG.
    virtual HRESULT get_AsString(BSTR* Value) = 0;
    virtual HRESULT put_AsString(BSTR Value) = 0;
    virtual HRESULT get_AsShort(SHORT* Value) = 0;
    virtual HRESULT put_AsShort(SHORT Value) = 0;
    virtual HRESULT get_AsLong(LONG* Value) = 0;
    virtual HRESULT put_AsLong(LONG Value) = 0;
    virtual HRESULT get_AsFloat(FLOAT* Value) = 0;
    virtual HRESULT put_AsFloat(FLOAT Value) = 0;
    virtual HRESULT get_AsDouble(DOUBLE* Value) = 0;
    virtual HRESULT put_AsDouble(DOUBLE Value) = 0;

    // A day number. The time of a Time cell has no day, nor the day of a Date cell a time: 0, S_FALSE. Put into a
    // text column, it is written in the text form above.
    virtual HRESULT get_AsDate(LONG* Value) = 0;
    virtual HRESULT put_AsDate(LONG Value) = 0;
    virtual HRESULT get_AsTime(LONG* Value) = 0;
    virtual HRESULT put_AsTime(LONG Value) = 0;

    // A value counted in pieces of 1/BaseCode: with a BaseCode of 32 the price 110.5 is 3536 pieces. Rounded to the
    // nearest, halves away from zero.
    virtual HRESULT get_AsPieces(LONG* Value) = 0;
    virtual HRESULT put_AsPieces(LONG Value) = 0;

    // Characters that the longest value takes: of the type; of a text its Size, or where that is 0 the longest text
    // present, which looks at every record.
    virtual HRESULT get_DisplayLength(LONG* Value) = 0;

protected:
    ~IdmField() = default;
};

} // namespace IDM_dmudfcom

namespace platform {

template <>
struct InterfaceTraits<IDM_dmudfcom::IdmField> {
    static constexpr GUID Uuid = MakeGuid("6b085b07-bcc6-47c1-9095-057d2bc13b56");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmField> {
    using IdmField = IDM_dmudfcom::IdmField;
    static constexpr std::array Methods{
        PropertyGet<&IdmField::get_Id>(1, L"Id", L"Value"),
        PropertyGet<&IdmField::get_Name>(2, L"Name", L"Value"),
        PropertyGet<&IdmField::get_Type>(3, L"Type", L"Value"),
        PropertyGet<&IdmField::get_TypeName>(4, L"TypeName", L"Value"),
        PropertyGet<&IdmField::get_Offset>(5, L"Offset", L"Value"),
        PropertyGet<&IdmField::get_Size>(6, L"Size", L"Value"),
        PropertyGet<&IdmField::get_SizeEx>(7, L"SizeEx", L"Value"),
        Method<&IdmField::IsName>(8, L"IsName", L"Val", L"Value"),
        PropertyGet<&IdmField::get_BaseCode>(9, L"BaseCode", L"Value"),
        PropertyPut<&IdmField::put_BaseCode>(9, L"BaseCode", L"Value"),
        PropertyGet<&IdmField::get_HasStatus>(10, L"HasStatus", L"Value"),
        PropertyPut<&IdmField::put_HasStatus>(10, L"HasStatus", L"Value"),
        PropertyGet<&IdmField::get_Status>(11, L"Status", L"Value"),
        PropertyPut<&IdmField::put_Status>(11, L"Status", L"Value"),
        PropertyGet<&IdmField::get_AsString>(12, L"AsString", L"Value"),
        PropertyPut<&IdmField::put_AsString>(12, L"AsString", L"Value"),
        PropertyGet<&IdmField::get_AsShort>(13, L"AsShort", L"Value"),
        PropertyPut<&IdmField::put_AsShort>(13, L"AsShort", L"Value"),
        PropertyGet<&IdmField::get_AsLong>(14, L"AsLong", L"Value"),
        PropertyPut<&IdmField::put_AsLong>(14, L"AsLong", L"Value"),
        PropertyGet<&IdmField::get_AsFloat>(15, L"AsFloat", L"Value"),
        PropertyPut<&IdmField::put_AsFloat>(15, L"AsFloat", L"Value"),
        PropertyGet<&IdmField::get_AsDouble>(16, L"AsDouble", L"Value"),
        PropertyPut<&IdmField::put_AsDouble>(16, L"AsDouble", L"Value"),
        PropertyGet<&IdmField::get_AsDate>(17, L"AsDate", L"Value"),
        PropertyPut<&IdmField::put_AsDate>(17, L"AsDate", L"Value"),
        PropertyGet<&IdmField::get_AsTime>(18, L"AsTime", L"Value"),
        PropertyPut<&IdmField::put_AsTime>(18, L"AsTime", L"Value"),
        PropertyGet<&IdmField::get_AsPieces>(19, L"AsPieces", L"Value"),
        PropertyPut<&IdmField::put_AsPieces>(19, L"AsPieces", L"Value"),
        PropertyGet<&IdmField::get_DisplayLength>(20, L"DisplayLength", L"Value"),
    };
};

} // namespace platform
