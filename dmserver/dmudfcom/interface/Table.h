// A table: named, identified columns and a cursor over records.
//
// The record order is that of appending, unless PostTo says otherwise. The cursor runs in it, or in the order of
// the index chosen by SetIndex, and stays on its record while others come, go or change their places. It stands
// before the first record (Bof), on one, or past the last (Eof). A cursor that was never placed (a new table, a
// cleared or newly filled one) stands on the first record as soon as there is one.
//
// Several tables may show the same records, each with a cursor and a choice of index of its own (Attach).
//
// Statuses beyond S_OK: S_FALSE for nothing to be done, E_POINTER for a null out pointer, E_INVALIDARG and E_FAIL
// as told below, E_OUTOFMEMORY. An operation that fails has changed nothing.
#pragma once

#include "dmserver/dmudfcom/interface/Field.h"

namespace IDM_dmudfcom {

struct IdmTable : IDispatch {
    // A plain value, as Contents is; carried by AsVariant.
    virtual HRESULT get_Id(LONG* Value) = 0;
    virtual HRESULT put_Id(LONG Value) = 0;
    virtual HRESULT get_FieldCount(LONG* Value) = 0;

    // Without the record being appended.
    virtual HRESULT get_RecordCount(LONG* Value) = 0;
    virtual HRESULT get_Contents(LONG* Value) = 0;
    virtual HRESULT put_Contents(LONG Value) = 0;

    // By position, from 0. E_INVALIDARG outside the fields.
    virtual HRESULT get_Field(LONG Index, IdmField** Value) = 0;

    // A null pointer and S_OK when there is no such field. Names compare without the case of ASCII letters.
    virtual HRESULT get_FieldById(LONG FieldId, IdmField** Value) = 0;
    virtual HRESULT get_FieldByName(BSTR FieldName, IdmField** Value) = 0;

    // Adds a field that the field map knows, with the type it has there. E_INVALIDARG for an unknown id or name;
    // S_FALSE, and nothing changed, when the table has the field. Records that are there get a null.
    virtual HRESULT AddFieldById(LONG FieldId, LONG BaseCode, LONG HasStatus, LONG Status) = 0;
    virtual HRESULT AddFieldByName(BSTR FieldName, LONG BaseCode, LONG HasStatus, LONG Status) = 0;

    // Removes the records, and the record being appended; fields and indexes stay, and fields held stay good.
    virtual HRESULT Clear() = 0;

    // Begins a new record of nulls, which the fields now write into and read from. It becomes a record by Post,
    // which makes it the current one, and goes by Cancel, which leaves the cursor where it was. A move of the
    // cursor and a second Append post it. E_FAIL in a table without fields.
    virtual HRESULT Append() = 0;

    // At the end of the record order. S_FALSE when no record is being appended.
    virtual HRESULT Post() = 0;

    // Ends an Append or a SetKey. S_FALSE when there is neither.
    virtual HRESULT Cancel() = 0;

    // Removes the current record; the cursor comes to stand on the next one, or past the end. While a record is
    // being appended, the same as Cancel. E_FAIL when there is no current record.
    virtual HRESULT Delete() = 0;

    // Moves. On an empty table, and beyond an end that is reached already, they do nothing and answer S_OK.
    virtual HRESULT First() = 0;
    virtual HRESULT Last() = 0;
    virtual HRESULT Prev() = 0;
    virtual HRESULT Next() = 0;

    // 1 past the last record and on an empty table, else 0; Bof before the first and on an empty table.
    virtual HRESULT get_Eof(LONG* Value) = 0;
    virtual HRESULT get_Bof(LONG* Value) = 0;

    // Names of fields, separated by ";", give an order: by the first field, among equals by the next ... Null
    // stands before all values, text compares by code point; equal records stand in the order in which they were
    // added. The index follows every change. An index of the same Id is replaced. E_INVALIDARG for an empty,
    // unknown or repeated name.
    virtual HRESULT CreateIndex(BSTR FieldList, LONG Id) = 0;

    // The cursor runs in the order of that index, and stays on its record. E_INVALIDARG when there is none of that
    // id.
    virtual HRESULT SetIndex(LONG Id) = 0;

    // Back to the record order.
    virtual HRESULT ResetIndex() = 0;

    // Begins a key for the index in use: the puts that follow give values of its fields, until the next operation
    // that is no put. A put into a field that the index does not have is refused with E_INVALIDARG. A key holds the
    // values of the first fields of the index, of one or more; it is kept until the next SetKey, SetIndex,
    // ResetIndex, Clear or Attach. E_FAIL when no index is in use.

    // Of the operations with a key, each answers E_FAIL when there is none, and E_INVALIDARG when no value was
    // given or a field was left out between two that were.
    virtual HRESULT SetKey() = 0;

    // 1, and the cursor on the first record that matches; or 0, and the cursor where it was.
    virtual HRESULT GotoKey(LONG* Value) = 0;

    // Posts the record being appended, so that it stands at that position of the record order, from 0. E_FAIL when
    // there is no such record; E_INVALIDARG when Position is negative or above RecordCount, and the record is still
    // being appended.
    virtual HRESULT PostTo(LONG Position) = 0;

    // Deletes all records that match. The cursor stays on its record, or, when that is gone, stands on the record
    // behind those deleted. S_FALSE when none matched.
    virtual HRESULT DeleteKey() = 0;

    // How many match, and which of them, from 0, the current record is: -1 when it is none of them.
    virtual HRESULT get_KeyRecordCount(LONG* Value) = 0;
    virtual HRESULT get_KeyPosition(LONG* Value) = 0;

    // The table from now on shows the fields, records and indexes of the other one, with a cursor of its own: what
    // is changed through one is seen through both, for as long as either lives. What it showed before, it lets go;
    // Id and Contents stay. A table of another making is copied through its AsVariant. Attaching a table to itself,
    // or to one that it shares records with already, changes nothing. E_POINTER for null.
    virtual HRESULT Attach(IdmTable* Table) = 0;

    // The table as bytes: a VARIANT of type 0x2011, which holds all but cursor and indexes (Carriers.proto). A put
    // replaces fields and records of this table alone, also when others share them. Bytes that were cut, altered or
    // never were a table: E_FAIL.
    virtual HRESULT get_AsVariant(VARIANT* Value) = 0;
    virtual HRESULT put_AsVariant(VARIANT Value) = 0;

    // Adds a field of any name with a type code (EColumnType in TableRows.h) and, for a text, its greatest number
    // of characters, 0 for no limit. A name of the field map gets the id it has there. E_INVALIDARG for an empty
    // name, an unknown type, and a field that is there with another type; S_FALSE when it is there with that type.
    virtual HRESULT AddNewField(BSTR Name, ULONG FieldType, ULONG FieldSize) = 0;

protected:
    ~IdmTable() = default;
};

} // namespace IDM_dmudfcom

namespace platform {

template <>
struct InterfaceTraits<IDM_dmudfcom::IdmTable> {
    static constexpr GUID Uuid = MakeGuid("e88c0533-9eca-4e53-a440-83fa7bbee370");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmTable> {
    using IdmTable = IDM_dmudfcom::IdmTable;
    static constexpr std::array Methods{
        PropertyGet<&IdmTable::get_Id>(1, L"Id", L"Value"),
        PropertyPut<&IdmTable::put_Id>(1, L"Id", L"Value"),
        PropertyGet<&IdmTable::get_FieldCount>(2, L"FieldCount", L"Value"),
        PropertyGet<&IdmTable::get_RecordCount>(3, L"RecordCount", L"Value"),
        PropertyGet<&IdmTable::get_Contents>(4, L"Contents", L"Value"),
        PropertyPut<&IdmTable::put_Contents>(4, L"Contents", L"Value"),
        PropertyGet<&IdmTable::get_Field>(5, L"Field", L"Index", L"Value"),
        PropertyGet<&IdmTable::get_FieldById>(6, L"FieldById", L"FieldId", L"Value"),
        PropertyGet<&IdmTable::get_FieldByName>(7, L"FieldByName", L"FieldName", L"Value"),
        Method<&IdmTable::AddFieldById>(8, L"AddFieldById", L"FieldId", L"BaseCode", L"HasStatus", L"Status"),
        Method<&IdmTable::AddFieldByName>(9, L"AddFieldByName", L"FieldName", L"BaseCode", L"HasStatus", L"Status"),
        Method<&IdmTable::Clear>(10, L"Clear"),
        Method<&IdmTable::Append>(11, L"Append"),
        Method<&IdmTable::Post>(12, L"Post"),
        Method<&IdmTable::Cancel>(13, L"Cancel"),
        Method<&IdmTable::Delete>(14, L"Delete"),
        Method<&IdmTable::First>(15, L"First"),
        Method<&IdmTable::Last>(16, L"Last"),
        Method<&IdmTable::Prev>(17, L"Prev"),
        Method<&IdmTable::Next>(18, L"Next"),
        PropertyGet<&IdmTable::get_Eof>(19, L"Eof", L"Value"),
        PropertyGet<&IdmTable::get_Bof>(20, L"Bof", L"Value"),
        Method<&IdmTable::CreateIndex>(21, L"CreateIndex", L"FieldList", L"Id"),
        Method<&IdmTable::SetIndex>(22, L"SetIndex", L"Id"),
        Method<&IdmTable::ResetIndex>(23, L"ResetIndex"),
        Method<&IdmTable::SetKey>(24, L"SetKey"),
        Method<&IdmTable::GotoKey>(25, L"GotoKey", L"Value"),
        Method<&IdmTable::PostTo>(26, L"PostTo", L"Position"),
        Method<&IdmTable::DeleteKey>(27, L"DeleteKey"),
        PropertyGet<&IdmTable::get_KeyRecordCount>(28, L"KeyRecordCount", L"Value"),
        PropertyGet<&IdmTable::get_KeyPosition>(29, L"KeyPosition", L"Value"),
        Method<&IdmTable::Attach>(30, L"Attach", L"Table"),
        PropertyGet<&IdmTable::get_AsVariant>(31, L"AsVariant", L"Value"),
        PropertyPut<&IdmTable::put_AsVariant>(31, L"AsVariant", L"Value"),
        Method<&IdmTable::AddNewField>(32, L"AddNewField", L"Name", L"FieldType", L"FieldSize"),
    };
};

} // namespace platform
