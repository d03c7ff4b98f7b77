// The fast road into and out of a table, for the code that moves rows in bulk.
//
// A table of this library also answers for ITableRows. The bulk road shares the table's storage with IdmTable: rows
// appended here are records there. Columns are addressed by their index (that of IdmTable::Field), which is looked
// up once and not in a row loop; text is UTF-8, as it is stored, and is not converted on the way.
//
// Ownership: texts handed in are copied; a text handed out stays good until the table changes.
// Threads: as the table, one at a time.
// Errors: an index outside the table, or a Put without AppendRow, is a caller's bug and is asserted; whoever keeps
// an index while others may exchange the columns asks for ColumnSet again before using it. A value that
// does not fit the column becomes 0 (Field.h has the rules); so does one that GetIntegers cannot give as a LONG.
// Raises std::bad_alloc, and std::length_error for a column whose texts pass 4 GB.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace IDM_dmudfcom {

// What a column holds. The numbers are the type codes of AddNewField and IdmField::Type.
enum class EColumnType : ULONG {
    Text = 0,
    Short = 5,
    Long = 6,
    Int64 = 7,
    Float = 8,
    Double = 9,
    Date = 10, // a day number counted from 30 December 1899
    Time = 11, // seconds since midnight
};

// How a value lies in a packed record: a text behind its length of 16 bits, a number in its own width, a day as a
// Long.
enum class EPackedForm : BYTE { Text, Short, Long, Int64, Float, Double, Day };

// Where a column finds its value in a packed record. The flag of null has 16 bits and is not 0 for null.
struct tagPackedCell {
    EPackedForm Form;
    ULONG Column;
    ULONG Offset;
    ULONG NullOffset;
    LONG Shift = 0; // added to a Day
};

// A text that many cells are to show. The text column that it is written into notes here where it keeps the text,
// so that it is looked for and stored once; any other column, or the same one once it was emptied, starts anew.
struct tagSharedText {
    std::string Text;
    mutable std::uint64_t Pool = 0;
    mutable std::uint32_t Handle = 0;
};

struct ITableRows : IUnknown {
    virtual ULONG ColumnCount() const = 0;
    // -1 when there is none. Names compare without case.
    virtual LONG FindColumn(std::string_view name) const = 0;
    virtual EColumnType ColumnType(ULONG column) const = 0;
    virtual std::string_view ColumnName(ULONG column) const = 0;
    // Adds a column bound to the id that the field map has for the name; a name that the map lacks gets `fallback`
    // as its type and an id of its own. A column of that name that is there already is kept. Records get nulls.
    // Returns the index.
    virtual ULONG AddColumn(std::string_view name, EColumnType fallback) = 0;

    // Appends one record whose cells are all null. The Put functions below write into it until the next one.
    // The record cursor does not move.
    virtual void AppendRow() = 0;
    virtual void PutText(ULONG column, std::string_view text) = 0;
    // Numbers and days are converted to the column's own type; a number put into a text column is written out.
    virtual void PutInteger(ULONG column, std::int64_t value) = 0;
    virtual void PutReal(ULONG column, double value) = 0;

    virtual ULONG RowCount() const = 0;
    virtual bool IsNull(ULONG row, ULONG column) const = 0;
    // Rows in record order, from 0. A null cell reads as 0 or an empty text. Text of a number column is written
    // into `scratch`.
    virtual std::string_view Text(ULONG row, ULONG column, std::string& scratch) const = 0;
    virtual std::int64_t Integer(ULONG row, ULONG column) const = 0;
    virtual double Real(ULONG row, ULONG column) const = 0;

    // Into the row of AppendRow. In a text column a day is written as DD.MM.YYYY and seconds since midnight as
    // HH:MM:SS, where PutInteger would write the bare number.
    virtual void PutDay(ULONG column, std::int64_t day) = 0;
    virtual void PutSeconds(ULONG column, std::int64_t seconds) = 0;
    // Into a row that is there. What holds for the Put functions holds for these.
    virtual void SetNull(ULONG row, ULONG column) = 0;
    virtual void SetText(ULONG row, ULONG column, std::string_view text) = 0;
    virtual void SetInteger(ULONG row, ULONG column, std::int64_t value) = 0;
    virtual void SetReal(ULONG row, ULONG column, double value) = 0;
    // As AppendRow, followed by the Put of each value of a packed record that is not null.
    virtual void AppendPacked(const unsigned char* record, std::span<const tagPackedCell> cells) = 0;
    // One column of the records from `first` on, as many as there are values. What holds for one cell holds for
    // each of them, and a whole run costs little more than copying it.
    virtual void GetIntegers(ULONG column, ULONG first, std::span<LONG> values) const = 0;
    virtual void SetIntegers(ULONG column, ULONG first, std::span<const LONG> values) = 0;
    virtual void SetReals(ULONG column, ULONG first, std::span<const double> values) = 0;
    virtual void SetTexts(ULONG column, ULONG first, std::span<const tagSharedText* const> texts) = 0;
    // Stands for the columns that the table has now. An index that was looked up is good while this is the same:
    // Attach, and a table put in as bytes, bring other columns.
    virtual std::shared_ptr<const void> ColumnSet() const = 0;
    // Bytes on the heap for the records, the fields and the indexes.
    virtual std::size_t MemoryUse() const = 0;

protected:
    ~ITableRows() = default;
};

} // namespace IDM_dmudfcom

template <>
struct platform::InterfaceTraits<IDM_dmudfcom::ITableRows> {
    static constexpr GUID Uuid = MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d04");
    using Base = IUnknown;
};
