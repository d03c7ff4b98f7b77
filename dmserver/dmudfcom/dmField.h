// The IdmField of a table: a part of it, whose references count on the table.
#pragma once

#include "TableStore.h"

namespace IDM_dmudfcom {

class CdmTable;

class CdmField final : public platform::CDispatchImpl<IdmField> {
public:
    CdmField(CdmTable& table, ULONG field);
    CdmField(const CdmField&) = delete;
    CdmField& operator=(const CdmField&) = delete;
    ~CdmField() = default;

    // Finds the field again in the store that the table shows now, by id and name.
    void Rebind();
    ULONG Index() const { return m_Field; }
    bool IsFor(const tagField& field) const;

    HRESULT QueryInterface(REFIID iid, void** object) override;
    ULONG AddRef() override;
    ULONG Release() override;

    HRESULT get_Id(LONG* Value) override;
    HRESULT get_Name(BSTR* Value) override;
    HRESULT get_Type(LONG* Value) override;
    HRESULT get_TypeName(BSTR* Value) override;
    HRESULT get_Offset(LONG* Value) override;
    HRESULT get_Size(LONG* Value) override;
    HRESULT get_SizeEx(LONG* Value) override;
    HRESULT IsName(BSTR Val, LONG* Value) override;
    HRESULT get_BaseCode(LONG* Value) override;
    HRESULT put_BaseCode(LONG Value) override;
    HRESULT get_HasStatus(LONG* Value) override;
    HRESULT put_HasStatus(LONG Value) override;
    HRESULT get_Status(LONG* Value) override;
    HRESULT put_Status(LONG Value) override;
    HRESULT get_AsString(BSTR* Value) override;
    HRESULT put_AsString(BSTR Value) override;
    HRESULT get_AsShort(SHORT* Value) override;
    HRESULT put_AsShort(SHORT Value) override;
    HRESULT get_AsLong(LONG* Value) override;
    HRESULT put_AsLong(LONG Value) override;
    HRESULT get_AsFloat(FLOAT* Value) override;
    HRESULT put_AsFloat(FLOAT Value) override;
    HRESULT get_AsDouble(DOUBLE* Value) override;
    HRESULT put_AsDouble(DOUBLE Value) override;
    HRESULT get_AsDate(LONG* Value) override;
    HRESULT put_AsDate(LONG Value) override;
    HRESULT get_AsTime(LONG* Value) override;
    HRESULT put_AsTime(LONG Value) override;
    HRESULT get_AsPieces(LONG* Value) override;
    HRESULT put_AsPieces(LONG Value) override;
    HRESULT get_DisplayLength(LONG* Value) override;

private:
    const tagField& Description() const;
    HRESULT Tell(LONG* target, LONG value) const;
    HRESULT Change(LONG tagField::*member, LONG value);
    template <class Reader>
    HRESULT Read(Reader&& reader) const;
    template <class Writer>
    HRESULT Write(Writer&& writer);
    template <class T>
    HRESULT ReadWhole(T* target) const;
    HRESULT ReadMoment(LONG* target, EColumnType own) const;
    HRESULT WriteMoment(LONG value, EColumnType own);

    CdmTable& m_Table;
    ULONG m_Field;    // NoField while the table shows no such field
    tagField m_Known; // what the field was when the table last had it
};

// Of a field: its cell in bytes; of a text, the declared number of characters.
LONG SizeOf(const tagField& field);
LONG SizeExOf(const tagField& field);

} // namespace IDM_dmudfcom
