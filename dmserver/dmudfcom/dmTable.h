// The IdmTable: a view with a cursor of its own on a store that several tables may share.
#pragma once

#include "RecordCursor.h"
#include "dmField.h"

#include "platform/com/object.h"

#include <cassert>

namespace IDM_dmudfcom {

// By which a table of this library knows another one.
struct IStoreOwner : IUnknown {
    virtual std::shared_ptr<CTableStore> Store() const = 0;

protected:
    ~IStoreOwner() = default;
};

} // namespace IDM_dmudfcom

template <>
struct platform::InterfaceTraits<IDM_dmudfcom::IStoreOwner> {
    static constexpr GUID Uuid = MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d05");
    using Base = IUnknown;
};

namespace IDM_dmudfcom {

struct tagTableContent;
struct tagFieldInfo;

class CdmTable final : public platform::CObject<CdmTable, platform::ECounter::Interlocked,
                                                platform::CDispatchImpl<IdmTable>, ITableRows, IStoreOwner> {
public:
    CdmTable();
    explicit CdmTable(tagTableContent content);
    ~CdmTable();

    HRESULT get_Id(LONG* Value) override;
    HRESULT put_Id(LONG Value) override;
    HRESULT get_FieldCount(LONG* Value) override;
    HRESULT get_RecordCount(LONG* Value) override;
    HRESULT get_Contents(LONG* Value) override;
    HRESULT put_Contents(LONG Value) override;
    HRESULT get_Field(LONG Index, IdmField** Value) override;
    HRESULT get_FieldById(LONG FieldId, IdmField** Value) override;
    HRESULT get_FieldByName(BSTR FieldName, IdmField** Value) override;
    HRESULT AddFieldById(LONG FieldId, LONG BaseCode, LONG HasStatus, LONG Status) override;
    HRESULT AddFieldByName(BSTR FieldName, LONG BaseCode, LONG HasStatus, LONG Status) override;
    HRESULT Clear() override;
    HRESULT Append() override;
    HRESULT Post() override;
    HRESULT Cancel() override;
    HRESULT Delete() override;
    HRESULT First() override;
    HRESULT Last() override;
    HRESULT Prev() override;
    HRESULT Next() override;
    HRESULT get_Eof(LONG* Value) override;
    HRESULT get_Bof(LONG* Value) override;
    HRESULT CreateIndex(BSTR FieldList, LONG Id) override;
    HRESULT SetIndex(LONG Id) override;
    HRESULT ResetIndex() override;
    HRESULT SetKey() override;
    HRESULT GotoKey(LONG* Value) override;
    HRESULT PostTo(LONG Position) override;
    HRESULT DeleteKey() override;
    HRESULT get_KeyRecordCount(LONG* Value) override;
    HRESULT get_KeyPosition(LONG* Value) override;
    HRESULT Attach(IdmTable* Table) override;
    HRESULT get_AsVariant(VARIANT* Value) override;
    HRESULT put_AsVariant(VARIANT Value) override;
    HRESULT AddNewField(BSTR Name, ULONG FieldType, ULONG FieldSize) override;

    ULONG ColumnCount() const override { return m_Store->FieldCount(); }
    LONG FindColumn(std::string_view name) const override;
    EColumnType ColumnType(ULONG column) const override;
    std::string_view ColumnName(ULONG column) const override;
    ULONG AddColumn(std::string_view name, EColumnType fallback) override;
    void AppendRow() override;
    void PutText(ULONG column, std::string_view text) override;
    void PutInteger(ULONG column, std::int64_t value) override;
    void PutReal(ULONG column, double value) override;
    ULONG RowCount() const override { return m_Store->RecordCount(); }
    bool IsNull(ULONG row, ULONG column) const override;
    std::string_view Text(ULONG row, ULONG column, std::string& scratch) const override;
    std::int64_t Integer(ULONG row, ULONG column) const override;
    double Real(ULONG row, ULONG column) const override;
    void PutDay(ULONG column, std::int64_t day) override;
    void PutSeconds(ULONG column, std::int64_t seconds) override;
    void SetNull(ULONG row, ULONG column) override;
    void SetText(ULONG row, ULONG column, std::string_view text) override;
    void SetInteger(ULONG row, ULONG column, std::int64_t value) override;
    void SetReal(ULONG row, ULONG column, double value) override;
    void AppendPacked(const unsigned char* record, std::span<const tagPackedCell> cells) override;
    void GetIntegers(ULONG column, ULONG first, std::span<LONG> values) const override;
    void SetIntegers(ULONG column, ULONG first, std::span<const LONG> values) override;
    void SetReals(ULONG column, ULONG first, std::span<const double> values) override;
    void SetTexts(ULONG column, ULONG first, std::span<const tagSharedText* const> texts) override;
    std::size_t MemoryUse() const override;

    std::shared_ptr<CTableStore> Store() const override { return m_Store; }
    std::shared_ptr<const void> ColumnSet() const override { return m_Store; }

    // For the fields. The row that reads come from: of the key being given, of the record being appended, or of the
    // current record; NoRow when there is none.
    CTableStore& Records() { return *m_Store; }
    Row RowToRead();
    HRESULT RowToWrite(ULONG field, Row& row);

private:
    // What SetKey collects: values in a reserved row, and for which index fields they were given.
    struct tagKey {
        CReservedRow Values;
        std::vector<bool> Given;
        bool IsCollecting = false;
    };

    IdmField* FieldObject(ULONG field);
    HRESULT GiveField(ULONG field, IdmField** target);
    HRESULT AddMapped(const tagFieldInfo* info, LONG baseCode, LONG hasStatus, LONG status);
    LONG FreeId(std::string_view name) const;
    void BindObjects();
    void FinishEdit();
    HRESULT PostAt(ULONG position);
    template <class Step>
    HRESULT Move(Step step);
    HRESULT Matches(CTableIndex::tagRange& range);
    void Show(std::shared_ptr<CTableStore> store);
    HRESULT ShowBytes(const VARIANT& value);
    Row PlaceOf(ULONG row, ULONG column) const;
    template <class Value>
    void WriteRun(ULONG column, ULONG first, std::span<Value> values,
                  void (CColumn::*write)(Row, std::span<Value>));
    CColumn& BulkColumn(ULONG column) {
        assert(m_BulkRow != NoRow && column < m_Store->FieldCount());
        return m_Store->Edit(column, m_BulkRow);
    }

    LONG m_Id = 0;
    LONG m_Contents = 0;
    std::shared_ptr<CTableStore> m_Store;
    CRecordCursor m_Cursor;
    CReservedRow m_Appended;
    tagKey m_Key;
    Row m_BulkRow = NoRow;
    // The objects handed out so far, and where the store's fields have theirs.
    std::vector<std::unique_ptr<CdmField>> m_Fields;
    std::vector<CdmField*> m_FieldObjects;
};

} // namespace IDM_dmudfcom
