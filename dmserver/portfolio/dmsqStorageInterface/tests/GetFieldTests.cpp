#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"

#include "diagnostics/tests/recorder/Recorder.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "platform/com/activation.h"
#include "platform/com/com_error.h"
#include "platform/com/object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using IDM_dmudfcom::IdmField;
using IDM_dmudfcom::IdmTable;
using platform::CBstr;
using platform::CComPtr;
using testing::ElementsAre;
using testing::IsEmpty;

// Fails whatever it is asked.
class CRefusingTable final
    : public platform::CObject<CRefusingTable, platform::ECounter::Interlocked, platform::CDispatchImpl<IdmTable>> {
public:
    HRESULT get_Id(LONG*) override { return E_FAIL; }
    HRESULT put_Id(LONG) override { return E_FAIL; }
    HRESULT get_FieldCount(LONG*) override { return E_FAIL; }
    HRESULT get_RecordCount(LONG*) override { return E_FAIL; }
    HRESULT get_Contents(LONG*) override { return E_FAIL; }
    HRESULT put_Contents(LONG) override { return E_FAIL; }
    HRESULT get_Field(LONG, IdmField**) override { return E_FAIL; }
    HRESULT get_FieldById(LONG, IdmField**) override { return E_FAIL; }
    HRESULT get_FieldByName(BSTR, IdmField**) override { return E_FAIL; }
    HRESULT AddFieldById(LONG, LONG, LONG, LONG) override { return E_FAIL; }
    HRESULT AddFieldByName(BSTR, LONG, LONG, LONG) override { return E_FAIL; }
    HRESULT Clear() override { return E_FAIL; }
    HRESULT Append() override { return E_FAIL; }
    HRESULT Post() override { return E_FAIL; }
    HRESULT Cancel() override { return E_FAIL; }
    HRESULT Delete() override { return E_FAIL; }
    HRESULT First() override { return E_FAIL; }
    HRESULT Last() override { return E_FAIL; }
    HRESULT Prev() override { return E_FAIL; }
    HRESULT Next() override { return E_FAIL; }
    HRESULT get_Eof(LONG*) override { return E_FAIL; }
    HRESULT get_Bof(LONG*) override { return E_FAIL; }
    HRESULT CreateIndex(BSTR, LONG) override { return E_FAIL; }
    HRESULT SetIndex(LONG) override { return E_FAIL; }
    HRESULT ResetIndex() override { return E_FAIL; }
    HRESULT SetKey() override { return E_FAIL; }
    HRESULT GotoKey(LONG*) override { return E_FAIL; }
    HRESULT PostTo(LONG) override { return E_FAIL; }
    HRESULT DeleteKey() override { return E_FAIL; }
    HRESULT get_KeyRecordCount(LONG*) override { return E_FAIL; }
    HRESULT get_KeyPosition(LONG*) override { return E_FAIL; }
    HRESULT Attach(IdmTable*) override { return E_FAIL; }
    HRESULT get_AsVariant(VARIANT*) override { return E_FAIL; }
    HRESULT put_AsVariant(VARIANT) override { return E_FAIL; }
    HRESULT AddNewField(BSTR, ULONG, ULONG) override { return E_FAIL; }
};

// One record with a setting's key and point value and an exchange's name.
class GetFieldHelpers : public testing::Test {
protected:
    GetFieldHelpers() {
        EXPECT_EQ(S_OK, platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, m_Table));
        for (const LONG id :
             {IDM_dmudfcom::fieldSetting, IDM_dmudfcom::fieldPointValue, IDM_dmudfcom::fieldExchangeName})
            EXPECT_EQ(S_OK, m_Table->AddFieldById(id, 0, 0, 0));
        m_Table->Append();
        Field(IDM_dmudfcom::fieldSetting)->put_AsLong(7);
        Field(IDM_dmudfcom::fieldPointValue)->put_AsDouble(0.25);
        Field(IDM_dmudfcom::fieldExchangeName)->put_AsString(CBstr(L"CME").Get());
        m_Table->Post();
        m_Table->First();
        Recorder::Clear();
    }
    CComPtr<IdmField> Field(LONG id) {
        CComPtr<IdmField> field;
        m_Table->get_FieldById(id, field.Put());
        return field;
    }

    CComPtr<IdmTable> m_Table;
};

TEST_F(GetFieldHelpers, ReadTheCurrentRecordByType) {
    EXPECT_EQ(7, GetField<LONG>(m_Table, IDM_dmudfcom::fieldSetting));
    EXPECT_EQ(0.25, GetField<double>(m_Table, IDM_dmudfcom::fieldPointValue));
    EXPECT_EQ(L"CME", GetField<CBstr>(m_Table, IDM_dmudfcom::fieldExchangeName).View());
    EXPECT_EQ(7, GetField<LONG>(m_Table, L"SETTING"));
    EXPECT_EQ(7, udf_helper::GetFieldAsLong(m_Table, IDM_dmudfcom::fieldSetting));
    EXPECT_EQ(L"CME", udf_helper::GetFieldAsString(m_Table, IDM_dmudfcom::fieldExchangeName).View());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(GetFieldHelpers, AnAbsentFieldIsReportedAndReadsAsNothing) {
    EXPECT_EQ(0, GetField<LONG>(m_Table, IDM_dmudfcom::fieldSymbol));
    EXPECT_EQ(0.0, GetField<double>(m_Table, IDM_dmudfcom::fieldSymbol));
    const CBstr text = GetField<CBstr>(m_Table, IDM_dmudfcom::fieldSymbol);
    EXPECT_FALSE(text.IsNull());
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"field != 0", L"field != 0", L"field != 0"));
}

TEST_F(GetFieldHelpers, AFieldOfAnAbsentNameIsReportedAndReadsAsNothing) {
    EXPECT_EQ(0, GetField<LONG>(m_Table, L"NO_SUCH_FIELD"));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"field != 0"));
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
}

TEST_F(GetFieldHelpers, AReadThatDoesNotSucceedIsTracedWithItsStatusAndGoesOn) {
    // A text that is no number, then no record at all.
    EXPECT_EQ(0, GetField<LONG>(m_Table, IDM_dmudfcom::fieldExchangeName));
    EXPECT_EQ(0, GetField<LONG>(m_Table, L"EXCHANGE_NAME"));
    EXPECT_EQ(0, udf_helper::GetFieldAsLong(m_Table, IDM_dmudfcom::fieldExchangeName));
    m_Table->Next();
    EXPECT_EQ(0.0, GetField<double>(m_Table, IDM_dmudfcom::fieldPointValue));
    EXPECT_TRUE(GetField<CBstr>(m_Table, IDM_dmudfcom::fieldExchangeName).IsEmpty());
    EXPECT_TRUE(udf_helper::GetFieldAsString(m_Table, IDM_dmudfcom::fieldExchangeName).IsEmpty());
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"AsLong hr=1", L"AsLong hr=1", L"AsLong hr=1", L"AsDouble hr=1",
                                                  L"AsString hr=1", L"AsString hr=1"));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(GetFieldHelpers, ATableThatRefusesToNameAFieldIsTracedWithItsStatusAndGoesOn) {
    const CComPtr<IdmTable> table(platform::MakeObject<CRefusingTable>().Get());
    EXPECT_EQ(0, GetField<LONG>(table, 1));
    EXPECT_EQ(0, GetField<LONG>(table, L"SETTING"));
    EXPECT_EQ(0, udf_helper::GetFieldAsLong(table, 1));
    EXPECT_THAT(Recorder::Messages(),
                ElementsAre(L"FieldById hr=80004005", L"FieldByName hr=80004005", L"FieldById hr=80004005"));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"field != 0", L"field != 0"));
}

TEST_F(GetFieldHelpers, TheSoftPairIsSilentAboutAnAbsentField) {
    EXPECT_EQ(0, udf_helper::GetFieldAsLong(m_Table, IDM_dmudfcom::fieldSymbol));
    EXPECT_TRUE(udf_helper::GetFieldAsString(m_Table, IDM_dmudfcom::fieldSymbol).IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Recorder::Messages(), IsEmpty());
}

TEST_F(GetFieldHelpers, ANullTableRaisesAPointerError) {
    const CComPtr<IdmTable> none;
    const auto code = [](auto&& call) -> HRESULT {
        try {
            call();
        } catch (const platform::CComError& error) {
            return error.Code();
        }
        return S_OK;
    };
    EXPECT_EQ(E_POINTER, code([&] { GetField<LONG>(none, 1); }));
    EXPECT_EQ(E_POINTER, code([&] { GetField<LONG>(none, L"SETTING"); }));
    EXPECT_EQ(E_POINTER, code([&] { GetField<double>(none, 1); }));
    EXPECT_EQ(E_POINTER, code([&] { GetField<CBstr>(none, 1); }));
    EXPECT_EQ(E_POINTER, code([&] { udf_helper::GetFieldAsLong(none, 1); }));
    EXPECT_EQ(E_POINTER, code([&] { udf_helper::GetFieldAsString(none, 1); }));
}

} // namespace
