// What another compiler's caller relies on: slots, identifiers, late binding, and the module's export.
#include "TableFixture.h"

#include "platform/com/object.h"
#include "platform/com/tests/Slots.h"
#include "platform/module.h"

#include <thread>

namespace dmudfcom_tests {

using platform::tests::DispatchSlots;
using platform::tests::SlotOf;

TEST(CarrierSlots, Request) {
    EXPECT_EQ(SlotOf(&IdmRequest::get_Id), DispatchSlots + 0);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Id), DispatchSlots + 1);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Type), DispatchSlots + 2);
    EXPECT_EQ(SlotOf(&IdmRequest::get_UserData), DispatchSlots + 3);
    EXPECT_EQ(SlotOf(&IdmRequest::put_UserData), DispatchSlots + 4);
    EXPECT_EQ(SlotOf(&IdmRequest::Assign), DispatchSlots + 5);
    EXPECT_EQ(SlotOf(&IdmRequest::Advise), DispatchSlots + 6);
    EXPECT_EQ(SlotOf(&IdmRequest::Unadvise), DispatchSlots + 7);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Request), DispatchSlots + 8);
    EXPECT_EQ(SlotOf(&IdmRequest::get_QueryType), DispatchSlots + 9);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SymbolListType), DispatchSlots + 10);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Datafeed), DispatchSlots + 11);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Datafeed), DispatchSlots + 12);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Symbol), DispatchSlots + 13);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Symbol), DispatchSlots + 14);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SymbolName), DispatchSlots + 15);
    EXPECT_EQ(SlotOf(&IdmRequest::put_SymbolName), DispatchSlots + 16);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SymbolRoot), DispatchSlots + 17);
    EXPECT_EQ(SlotOf(&IdmRequest::put_SymbolRoot), DispatchSlots + 18);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Description), DispatchSlots + 19);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Description), DispatchSlots + 20);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Category), DispatchSlots + 21);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Category), DispatchSlots + 22);
    EXPECT_EQ(SlotOf(&IdmRequest::get_PriceScale), DispatchSlots + 23);
    EXPECT_EQ(SlotOf(&IdmRequest::put_PriceScale), DispatchSlots + 24);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Resolution), DispatchSlots + 25);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Resolution), DispatchSlots + 26);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ResolutionSize), DispatchSlots + 27);
    EXPECT_EQ(SlotOf(&IdmRequest::put_ResolutionSize), DispatchSlots + 28);
    EXPECT_EQ(SlotOf(&IdmRequest::get_FieldType), DispatchSlots + 29);
    EXPECT_EQ(SlotOf(&IdmRequest::put_FieldType), DispatchSlots + 30);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Sessions), DispatchSlots + 31);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Sessions), DispatchSlots + 32);
    EXPECT_EQ(SlotOf(&IdmRequest::get_StartDate), DispatchSlots + 33);
    EXPECT_EQ(SlotOf(&IdmRequest::get_FinishDate), DispatchSlots + 34);
    EXPECT_EQ(SlotOf(&IdmRequest::get_BackType), DispatchSlots + 35);
    EXPECT_EQ(SlotOf(&IdmRequest::get_BackCapacity), DispatchSlots + 36);
    EXPECT_EQ(SlotOf(&IdmRequest::get_TimeZone), DispatchSlots + 37);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SessionsTZI), DispatchSlots + 38);
    EXPECT_EQ(SlotOf(&IdmRequest::put_SessionsTZI), DispatchSlots + 39);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ExchangeTZI), DispatchSlots + 40);
    EXPECT_EQ(SlotOf(&IdmRequest::put_ExchangeTZI), DispatchSlots + 41);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ExactMatch), DispatchSlots + 42);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Expired), DispatchSlots + 43);
    EXPECT_EQ(SlotOf(&IdmRequest::get_BrowseDirection), DispatchSlots + 44);
    EXPECT_EQ(SlotOf(&IdmRequest::get_BrowseType), DispatchSlots + 45);
    EXPECT_EQ(SlotOf(&IdmRequest::get_GroupBy), DispatchSlots + 46);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Contents), DispatchSlots + 47);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Contents), DispatchSlots + 48);
    EXPECT_EQ(SlotOf(&IdmRequest::Supplement), DispatchSlots + 49);
    EXPECT_EQ(SlotOf(&IdmRequest::Send), DispatchSlots + 50);
    EXPECT_EQ(SlotOf(&IdmRequest::get_HolidayId), DispatchSlots + 51);
    EXPECT_EQ(SlotOf(&IdmRequest::put_HolidayId), DispatchSlots + 52);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SettingId), DispatchSlots + 53);
    EXPECT_EQ(SlotOf(&IdmRequest::put_SettingId), DispatchSlots + 54);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SessionId), DispatchSlots + 55);
    EXPECT_EQ(SlotOf(&IdmRequest::put_SessionId), DispatchSlots + 56);
    EXPECT_EQ(SlotOf(&IdmRequest::get_SessionType), DispatchSlots + 57);
    EXPECT_EQ(SlotOf(&IdmRequest::put_SessionType), DispatchSlots + 58);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ExchangeId), DispatchSlots + 59);
    EXPECT_EQ(SlotOf(&IdmRequest::put_ExchangeId), DispatchSlots + 60);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ExchangeName), DispatchSlots + 61);
    EXPECT_EQ(SlotOf(&IdmRequest::put_ExchangeName), DispatchSlots + 62);
    EXPECT_EQ(SlotOf(&IdmRequest::get_IncludeDeleted), DispatchSlots + 63);
    EXPECT_EQ(SlotOf(&IdmRequest::put_IncludeDeleted), DispatchSlots + 64);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ActiveOnly), DispatchSlots + 65);
    EXPECT_EQ(SlotOf(&IdmRequest::put_ActiveOnly), DispatchSlots + 66);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Gap), DispatchSlots + 67);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Gap), DispatchSlots + 68);
    EXPECT_EQ(SlotOf(&IdmRequest::get_HourType), DispatchSlots + 69);
    EXPECT_EQ(SlotOf(&IdmRequest::put_HourType), DispatchSlots + 70);
    EXPECT_EQ(SlotOf(&IdmRequest::get_RequestType), DispatchSlots + 71);
    EXPECT_EQ(SlotOf(&IdmRequest::put_RequestType), DispatchSlots + 72);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBResolution), DispatchSlots + 73);
    EXPECT_EQ(SlotOf(&IdmRequest::put_LIBResolution), DispatchSlots + 74);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBResolutionSize), DispatchSlots + 75);
    EXPECT_EQ(SlotOf(&IdmRequest::put_LIBResolutionSize), DispatchSlots + 76);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBStartDate), DispatchSlots + 77);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBStartTime), DispatchSlots + 78);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBEndDate), DispatchSlots + 79);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBEndTime), DispatchSlots + 80);
    EXPECT_EQ(SlotOf(&IdmRequest::get_LIBSkipIdenticalTicks), DispatchSlots + 81);
    EXPECT_EQ(SlotOf(&IdmRequest::get_DataFeedName), DispatchSlots + 82);
    EXPECT_EQ(SlotOf(&IdmRequest::put_DataFeedName), DispatchSlots + 83);
    EXPECT_EQ(SlotOf(&IdmRequest::get_ChartType), DispatchSlots + 84);
    EXPECT_EQ(SlotOf(&IdmRequest::put_ChartType), DispatchSlots + 85);
    EXPECT_EQ(SlotOf(&IdmRequest::get_Attribute), DispatchSlots + 86);
    EXPECT_EQ(SlotOf(&IdmRequest::put_Attribute), DispatchSlots + 87);
    EXPECT_EQ(SlotOf(&IdmRequest::get_IsCF_Data), DispatchSlots + 88);
    EXPECT_EQ(SlotOf(&IdmRequest::get_BuildOnVolume), DispatchSlots + 89);
    static_assert(platform::MethodsOf<IdmRequest>().size() == 90);
}

TEST(CarrierSlots, Table) {
    EXPECT_EQ(SlotOf(&IdmTable::get_Id), DispatchSlots + 0);
    EXPECT_EQ(SlotOf(&IdmTable::put_Id), DispatchSlots + 1);
    EXPECT_EQ(SlotOf(&IdmTable::get_FieldCount), DispatchSlots + 2);
    EXPECT_EQ(SlotOf(&IdmTable::get_RecordCount), DispatchSlots + 3);
    EXPECT_EQ(SlotOf(&IdmTable::get_Contents), DispatchSlots + 4);
    EXPECT_EQ(SlotOf(&IdmTable::put_Contents), DispatchSlots + 5);
    EXPECT_EQ(SlotOf(&IdmTable::get_Field), DispatchSlots + 6);
    EXPECT_EQ(SlotOf(&IdmTable::get_FieldById), DispatchSlots + 7);
    EXPECT_EQ(SlotOf(&IdmTable::get_FieldByName), DispatchSlots + 8);
    EXPECT_EQ(SlotOf(&IdmTable::AddFieldById), DispatchSlots + 9);
    EXPECT_EQ(SlotOf(&IdmTable::AddFieldByName), DispatchSlots + 10);
    EXPECT_EQ(SlotOf(&IdmTable::Clear), DispatchSlots + 11);
    EXPECT_EQ(SlotOf(&IdmTable::Append), DispatchSlots + 12);
    EXPECT_EQ(SlotOf(&IdmTable::Post), DispatchSlots + 13);
    EXPECT_EQ(SlotOf(&IdmTable::Cancel), DispatchSlots + 14);
    EXPECT_EQ(SlotOf(&IdmTable::Delete), DispatchSlots + 15);
    EXPECT_EQ(SlotOf(&IdmTable::First), DispatchSlots + 16);
    EXPECT_EQ(SlotOf(&IdmTable::Last), DispatchSlots + 17);
    EXPECT_EQ(SlotOf(&IdmTable::Prev), DispatchSlots + 18);
    EXPECT_EQ(SlotOf(&IdmTable::Next), DispatchSlots + 19);
    EXPECT_EQ(SlotOf(&IdmTable::get_Eof), DispatchSlots + 20);
    EXPECT_EQ(SlotOf(&IdmTable::get_Bof), DispatchSlots + 21);
    EXPECT_EQ(SlotOf(&IdmTable::CreateIndex), DispatchSlots + 22);
    EXPECT_EQ(SlotOf(&IdmTable::SetIndex), DispatchSlots + 23);
    EXPECT_EQ(SlotOf(&IdmTable::ResetIndex), DispatchSlots + 24);
    EXPECT_EQ(SlotOf(&IdmTable::SetKey), DispatchSlots + 25);
    EXPECT_EQ(SlotOf(&IdmTable::GotoKey), DispatchSlots + 26);
    EXPECT_EQ(SlotOf(&IdmTable::PostTo), DispatchSlots + 27);
    EXPECT_EQ(SlotOf(&IdmTable::DeleteKey), DispatchSlots + 28);
    EXPECT_EQ(SlotOf(&IdmTable::get_KeyRecordCount), DispatchSlots + 29);
    EXPECT_EQ(SlotOf(&IdmTable::get_KeyPosition), DispatchSlots + 30);
    EXPECT_EQ(SlotOf(&IdmTable::Attach), DispatchSlots + 31);
    EXPECT_EQ(SlotOf(&IdmTable::get_AsVariant), DispatchSlots + 32);
    EXPECT_EQ(SlotOf(&IdmTable::put_AsVariant), DispatchSlots + 33);
    EXPECT_EQ(SlotOf(&IdmTable::AddNewField), DispatchSlots + 34);
    static_assert(platform::MethodsOf<IdmTable>().size() == 35);
}

TEST(CarrierSlots, Field) {
    EXPECT_EQ(SlotOf(&IdmField::get_Id), DispatchSlots + 0);
    EXPECT_EQ(SlotOf(&IdmField::get_Name), DispatchSlots + 1);
    EXPECT_EQ(SlotOf(&IdmField::get_Type), DispatchSlots + 2);
    EXPECT_EQ(SlotOf(&IdmField::get_TypeName), DispatchSlots + 3);
    EXPECT_EQ(SlotOf(&IdmField::get_Offset), DispatchSlots + 4);
    EXPECT_EQ(SlotOf(&IdmField::get_Size), DispatchSlots + 5);
    EXPECT_EQ(SlotOf(&IdmField::get_SizeEx), DispatchSlots + 6);
    EXPECT_EQ(SlotOf(&IdmField::IsName), DispatchSlots + 7);
    EXPECT_EQ(SlotOf(&IdmField::get_BaseCode), DispatchSlots + 8);
    EXPECT_EQ(SlotOf(&IdmField::put_BaseCode), DispatchSlots + 9);
    EXPECT_EQ(SlotOf(&IdmField::get_HasStatus), DispatchSlots + 10);
    EXPECT_EQ(SlotOf(&IdmField::put_HasStatus), DispatchSlots + 11);
    EXPECT_EQ(SlotOf(&IdmField::get_Status), DispatchSlots + 12);
    EXPECT_EQ(SlotOf(&IdmField::put_Status), DispatchSlots + 13);
    EXPECT_EQ(SlotOf(&IdmField::get_AsString), DispatchSlots + 14);
    EXPECT_EQ(SlotOf(&IdmField::put_AsString), DispatchSlots + 15);
    EXPECT_EQ(SlotOf(&IdmField::get_AsShort), DispatchSlots + 16);
    EXPECT_EQ(SlotOf(&IdmField::put_AsShort), DispatchSlots + 17);
    EXPECT_EQ(SlotOf(&IdmField::get_AsLong), DispatchSlots + 18);
    EXPECT_EQ(SlotOf(&IdmField::put_AsLong), DispatchSlots + 19);
    EXPECT_EQ(SlotOf(&IdmField::get_AsFloat), DispatchSlots + 20);
    EXPECT_EQ(SlotOf(&IdmField::put_AsFloat), DispatchSlots + 21);
    EXPECT_EQ(SlotOf(&IdmField::get_AsDouble), DispatchSlots + 22);
    EXPECT_EQ(SlotOf(&IdmField::put_AsDouble), DispatchSlots + 23);
    EXPECT_EQ(SlotOf(&IdmField::get_AsDate), DispatchSlots + 24);
    EXPECT_EQ(SlotOf(&IdmField::put_AsDate), DispatchSlots + 25);
    EXPECT_EQ(SlotOf(&IdmField::get_AsTime), DispatchSlots + 26);
    EXPECT_EQ(SlotOf(&IdmField::put_AsTime), DispatchSlots + 27);
    EXPECT_EQ(SlotOf(&IdmField::get_AsPieces), DispatchSlots + 28);
    EXPECT_EQ(SlotOf(&IdmField::put_AsPieces), DispatchSlots + 29);
    EXPECT_EQ(SlotOf(&IdmField::get_DisplayLength), DispatchSlots + 30);
    static_assert(platform::MethodsOf<IdmField>().size() == 31);
}

TEST(CarrierSlots, Transaction) {
    EXPECT_EQ(SlotOf(&IdmTransaction::get_TableCount), DispatchSlots + 0);
    EXPECT_EQ(SlotOf(&IdmTransaction::get_Table), DispatchSlots + 1);
    static_assert(platform::MethodsOf<IdmTransaction>().size() == 2);
}

TEST(CarrierSlots, Answer) {
    EXPECT_EQ(SlotOf(&IdmAnswer::Assign), DispatchSlots + 0);
    EXPECT_EQ(SlotOf(&IdmAnswer::get_TransactionCount), DispatchSlots + 1);
    EXPECT_EQ(SlotOf(&IdmAnswer::get_Transaction), DispatchSlots + 2);
    static_assert(platform::MethodsOf<IdmAnswer>().size() == 3);
}

TEST(CarrierIdentifiers, AreThoseThatClientsKnow) {
    EXPECT_EQ(platform::ToText(platform::UuidOf<IdmRequest>), L"{0CC15727-C930-484B-B934-3FF8A817BC39}");
    EXPECT_EQ(platform::ToText(platform::UuidOf<IdmTable>), L"{E88C0533-9ECA-4E53-A440-83FA7BBEE370}");
    EXPECT_EQ(platform::ToText(platform::UuidOf<IdmField>), L"{6B085B07-BCC6-47C1-9095-057D2BC13B56}");
    EXPECT_EQ(platform::ToText(platform::UuidOf<IdmAnswer>), L"{05F310A5-466E-467F-BC3B-D72C787650B0}");
    EXPECT_EQ(platform::ToText(CLSID_dmAnswer), L"{2BCCB88B-5AAB-4BF9-87D6-F8289CA99ADA}");
}

namespace {

template <class Interface>
void ExpectAnswersFor(REFCLSID clsid) {
    const auto object = Make<Interface>(clsid);
    EXPECT_TRUE(object.template As<IUnknown>());
    EXPECT_TRUE(object.template As<IDispatch>());
    EXPECT_TRUE(object.template As<Interface>());
    EXPECT_FALSE(object.template As<IClassFactory>());
    EXPECT_EQ(object->QueryInterface(platform::UuidOf<Interface>, nullptr), E_POINTER);
    EXPECT_EQ(References(*object), 1U);
}

CVariant Call(IDispatch* object, const wchar_t* name, WORD kind, std::initializer_list<VARIANT> arguments = {}) {
    CVariant result;
    EXPECT_EQ(
        platform::CallByName(object, name, kind, std::span(arguments.begin(), arguments.size()), result.Put()),
        S_OK)
        << CBstr(name).Text();
    return result;
}

} // namespace

TEST(CarrierObjects, AnswerForTheirInterfacesAlone) {
    ExpectAnswersFor<IdmRequest>(CLSID_dmRequest);
    ExpectAnswersFor<IdmTable>(CLSID_dmTable);
    ExpectAnswersFor<IdmAnswer>(CLSID_dmAnswer);
    EXPECT_FALSE(MakeTable().As<IdmRequest>());
}

TEST(CarrierObjects, TheTableIsOneObjectWhicheverInterfaceIsAsked) {
    const auto table = MakeTable();
    const auto rows = table.As<ITableRows>();
    EXPECT_EQ(rows.As<IUnknown>(), table.As<IUnknown>());
    EXPECT_EQ(rows.As<IdmTable>(), table);
}

TEST(CarrierDispatch, ATableIsFilledAndReadByName) {
    const auto table = MakeTable();
    const CVariant name(L"SYMBOL");
    const CVariant zero(LONG{0});
    Call(table.Get(), L"AddFieldByName", DISPATCH_METHOD, {name.Get(), zero.Get(), zero.Get(), zero.Get()});
    const CVariant id(LONG{fieldSymbol});
    const CVariant field = Call(table.Get(), L"FieldById", DISPATCH_PROPERTYGET, {id.Get()});
    ASSERT_EQ(field.Type(), VT_DISPATCH);
    Call(table.Get(), L"Append", DISPATCH_METHOD);
    const CVariant value(LONG{12});
    Call(field.Get().pdispVal, L"AsLong", DISPATCH_PROPERTYPUT, {value.Get()});
    Call(table.Get(), L"Post", DISPATCH_METHOD);
    EXPECT_EQ(Call(table.Get(), L"RecordCount", DISPATCH_PROPERTYGET).AsLong(), 1);
    EXPECT_EQ(Call(field.Get().pdispVal, L"asstring", DISPATCH_PROPERTYGET).AsText(), L"12");
    EXPECT_EQ(Call(field.Get().pdispVal, L"AsDouble", DISPATCH_PROPERTYGET).AsDouble(), 12.0);
    EXPECT_EQ(Call(table.Get(), L"Eof", DISPATCH_PROPERTYGET).AsLong(), 0);
    EXPECT_EQ(Call(table.Get(), L"AsVariant", DISPATCH_PROPERTYGET).Type(), 0x2011);
}

TEST(CarrierDispatch, AnAbsentFieldIsAnEmptyObject) {
    const CVariant id(LONG{fieldSymbol});
    const CVariant field = Call(MakeTable().Get(), L"FieldById", DISPATCH_PROPERTYGET, {id.Get()});
    EXPECT_TRUE(field.Get().pdispVal == nullptr);
}

TEST(CarrierDispatch, ARequestIsFilledAndReadByName) {
    const auto request = Make<IdmRequest>(CLSID_dmRequest);
    const CVariant mode(LONG{2});
    const CVariant name(L"ESZ5");
    Call(request.Get(), L"SymbolName", DISPATCH_PROPERTYPUT, {mode.Get(), name.Get()});
    EXPECT_EQ(Call(request.Get(), L"SymbolName", DISPATCH_PROPERTYGET, {mode.Get()}).AsText(), L"ESZ5");
    const CVariant id(LONG{1151});
    Call(request.Get(), L"Attribute", DISPATCH_PROPERTYPUT, {id.Get(), mode.Get()});
    EXPECT_EQ(Call(request.Get(), L"Attribute", DISPATCH_PROPERTYGET, {id.Get()}).AsLong(), 2);
    CVariant result;
    EXPECT_EQ(
        platform::CallByName(request.Get(), L"Type", DISPATCH_PROPERTYPUT, std::span(&mode.Get(), 1), result.Put()),
        DISP_E_MEMBERNOTFOUND);
}

TEST(CarrierDispatch, AnAnswerIsReadByName) {
    const auto answer = Make<IdmAnswer>(CLSID_dmAnswer);
    EXPECT_EQ(Call(answer.Get(), L"TransactionCount", DISPATCH_PROPERTYGET).AsLong(), 0);
}

TEST(CarrierModule, ExportsItsClassObjects) {
    const auto module = platform::CModule::FindLoaded(L"IDM_dmudfcom.dll");
    ASSERT_TRUE(module);
    using Export = HRESULT (*)(REFCLSID, REFIID, void**);
    const auto getClassObject = reinterpret_cast<Export>(module->Symbol("DllGetClassObject"));
    ASSERT_TRUE(getClassObject);
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(getClassObject(CLSID_dmTable, platform::UuidOf<IClassFactory>, factory.PutVoid()), S_OK);
    CComPtr<IdmTable> table;
    EXPECT_EQ(factory->CreateInstance(nullptr, platform::UuidOf<IdmTable>, table.PutVoid()), S_OK);
    CComPtr<IUnknown> part;
    EXPECT_EQ(factory->CreateInstance(table.Get(), platform::UuidOf<IUnknown>, part.PutVoid()),
              CLASS_E_NOAGGREGATION);
    EXPECT_FALSE(part);
    EXPECT_EQ(getClassObject(platform::UuidOf<IdmTable>, platform::UuidOf<IClassFactory>, factory.PutVoid()),
              CLASS_E_CLASSNOTAVAILABLE);
}

TEST(CarrierModule, EveryObjectIsCountedWhileItLives) {
    const LONG before = platform::CModuleCount::Value();
    {
        const auto table = MakeTable();
        const auto request = Make<IdmRequest>(CLSID_dmRequest);
        const auto answer = Make<IdmAnswer>(CLSID_dmAnswer);
        EXPECT_EQ(platform::CModuleCount::Value(), before + 3);
    }
    EXPECT_EQ(platform::CModuleCount::Value(), before);
}

// A carrier is used by one thread at a time; what several may do at once is hold it and let it go.
TEST(CarrierObjects, AreHeldAndLetGoByAnyThread) {
    const auto table = MakeTable();
    table->AddFieldById(fieldSymbol, 0, 0, 0);
    const auto field = FieldOf(*table, fieldSymbol);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([table, field] {
                for (int round = 0; round < 1000; ++round) {
                    const CComPtr<IdmField> held = field;
                    EXPECT_TRUE(table.As<IDispatch>());
                }
            });
    }
    EXPECT_EQ(References(*table), 2U);
}

} // namespace dmudfcom_tests
