// A table of another making: it answers for IdmTable alone, keeps nothing and counts what is asked of it.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"
#include "platform/com/object.h"

namespace tests {

class CForeignTable final : public platform::CObject<CForeignTable, platform::ECounter::Interlocked,
                                                     platform::CDispatchImpl<IDM_dmudfcom::IdmTable>> {
public:
    using IdmField = IDM_dmudfcom::IdmField;
    using IdmTable = IDM_dmudfcom::IdmTable;

    int Calls = 0;

    HRESULT get_Id(LONG*) override { return Count(); }
    HRESULT put_Id(LONG) override { return Count(); }
    HRESULT get_FieldCount(LONG*) override { return Count(); }
    HRESULT get_RecordCount(LONG*) override { return Count(); }
    HRESULT get_Contents(LONG*) override { return Count(); }
    HRESULT put_Contents(LONG) override { return Count(); }
    HRESULT get_Field(LONG, IdmField**) override { return Count(); }
    HRESULT get_FieldById(LONG, IdmField**) override { return Count(); }
    HRESULT get_FieldByName(BSTR, IdmField**) override { return Count(); }
    HRESULT AddFieldById(LONG, LONG, LONG, LONG) override { return Count(); }
    HRESULT AddFieldByName(BSTR, LONG, LONG, LONG) override { return Count(); }
    HRESULT Clear() override { return Count(); }
    HRESULT Append() override { return Count(); }
    HRESULT Post() override { return Count(); }
    HRESULT Cancel() override { return Count(); }
    HRESULT Delete() override { return Count(); }
    HRESULT First() override { return Count(); }
    HRESULT Last() override { return Count(); }
    HRESULT Prev() override { return Count(); }
    HRESULT Next() override { return Count(); }
    HRESULT get_Eof(LONG*) override { return Count(); }
    HRESULT get_Bof(LONG*) override { return Count(); }
    HRESULT CreateIndex(BSTR, LONG) override { return Count(); }
    HRESULT SetIndex(LONG) override { return Count(); }
    HRESULT ResetIndex() override { return Count(); }
    HRESULT SetKey() override { return Count(); }
    HRESULT GotoKey(LONG*) override { return Count(); }
    HRESULT PostTo(LONG) override { return Count(); }
    HRESULT DeleteKey() override { return Count(); }
    HRESULT get_KeyRecordCount(LONG*) override { return Count(); }
    HRESULT get_KeyPosition(LONG*) override { return Count(); }
    HRESULT Attach(IdmTable*) override { return Count(); }
    HRESULT get_AsVariant(VARIANT*) override { return Count(); }
    HRESULT put_AsVariant(VARIANT) override { return Count(); }
    HRESULT AddNewField(BSTR, ULONG, ULONG) override { return Count(); }

private:
    HRESULT Count() {
        ++Calls;
        return E_NOTIMPL;
    }
};

} // namespace tests
