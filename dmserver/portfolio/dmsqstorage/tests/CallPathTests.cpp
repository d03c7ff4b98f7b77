// What every call has in common: interfaces, reference counts, late binding, threads.
#include "StorageFixture.h"

#include <array>
#include <atomic>
#include <thread>

namespace {

using namespace tests;
using namespace IDM_qxStorage;
using platform::CVariant;
using testing::ElementsAre;
using testing::IsEmpty;

class CallPath : public StorageTest {};

template <class I>
CComPtr<I> Ask(const CComPtr<IqxStorage>& storage) {
    const auto other = storage.As<I>();
    EXPECT_TRUE(other);
    return other;
}

TEST_F(CallPath, AllElevenInterfacesAreReachedFromTheDefaultOne) {
    Ask<IqxPortfolio>(m_Storage);
    Ask<IascStorage>(m_Storage);
    Ask<IqxStorageNotify>(m_Storage);
    Ask<IDM_dmSupplier::IqxAddingSymbol>(m_Storage);
    Ask<IqxStorageSmartNotify>(m_Storage);
    Ask<IqxNativePortfolio>(m_Storage);
    Ask<IqxDictionary>(m_Storage);
    Ask<IqxExpirationRuleSettings>(m_Storage);
    Ask<IqxExpirationDateCalculator>(m_Storage);
    Ask<IqxCurrency>(m_Storage);
}

TEST_F(CallPath, IdentityAndDispatchAreThoseOfTheDefaultInterface) {
    const auto currency = Ask<IqxCurrency>(m_Storage);
    EXPECT_EQ(m_Storage.As<IUnknown>(), currency.As<IUnknown>());
    EXPECT_EQ(static_cast<IDispatch*>(m_Storage.Get()), currency.As<IDispatch>().Get());
}

TEST_F(CallPath, EveryReferenceIsCounted) {
    CComPtr<IqxStorage> storage;
    ASSERT_EQ(S_OK, CStorageHost::Create(storage));
    EXPECT_EQ(2U, storage->AddRef());
    const auto currency = Ask<IqxCurrency>(storage);
    EXPECT_EQ(4U, storage->AddRef());
    EXPECT_EQ(3U, storage->Release());
    EXPECT_EQ(2U, storage->Release());
}

TEST_F(CallPath, AnUnknownInterfaceIsRefused) {
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE,
              m_Storage->QueryInterface(platform::MakeGuid("11111111-2222-3333-4444-555555555555"), &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(CallPath, TheClassFactoryGivesInstances) {
    CComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, CoGetClassObject(CLSID_qxStorage, CLSCTX_ALL, nullptr, platform::UuidOf<IClassFactory>,
                                     factory.PutVoid()));
    CComPtr<IqxStorage> storage;
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid()));
    EXPECT_TRUE(storage);
}

TEST_F(CallPath, MethodsOfLaterVersionsSayThatTheyAreNotThere) {
    EXPECT_EQ(E_NOTIMPL, m_Storage->SelectCustomFutures(0, nullptr, NewTable().Get()));
    EXPECT_EQ(E_NOTIMPL, Ask<IascStorage>(m_Storage)->Load(NewTable().Get(), NewTable().Get()));
}

TEST_F(CallPath, AHolidayIsInsertedAndSelectedByLateBinding) {
    CVariant key;
    const CVariant name(L"Late");
    EXPECT_EQ(S_OK, platform::CallByName(m_Storage.Get(), L"insertholiday", DISPATCH_METHOD, std::array{name.Get()},
                                         key.Put()));
    ASSERT_EQ(VT_I4, key.Type());
    EXPECT_GE(key.AsLong(), 1);
    const auto request = NewRequest();
    const auto table = NewTable();
    request->put_HolidayId(key.AsLong());
    const CVariant requestArgument(request.Get());
    const CVariant tableArgument(table.Get());
    EXPECT_EQ(S_OK, platform::CallByName(m_Storage.Get(), L"SelectHoliday", DISPATCH_METHOD,
                                         std::array{requestArgument.Get(), tableArgument.Get()}, nullptr));
    EXPECT_THAT(RowsOf(table), ElementsAre(Row{key.AsText(), L"Late"}));
}

TEST_F(CallPath, LateBindingConvertsArgumentsAndRefusesWhatItCannot) {
    CVariant key;
    const std::array good{CVariant(L"100").Detach(), CVariant(L"12.5").Detach(), CVariant(5.0).Detach(),
                          CVariant(true).Detach()};
    // "True" is -1, which is no movement.
    EXPECT_EQ(E_INVALIDARG,
              platform::CallByName(m_Storage.Get(), L"InsertSetting", DISPATCH_METHOD, good, key.Put()));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"[Warning] MinMovement = -1.000000. [Setting wasn't inserted]"));
    const std::array bad{CVariant(L"abc").Detach(), CVariant(1.0).Detach(), CVariant(5.0).Detach(),
                         CVariant(1.0).Detach()};
    EXPECT_EQ(DISP_E_TYPEMISMATCH,
              platform::CallByName(m_Storage.Get(), L"InsertSetting", DISPATCH_METHOD, bad, key.Put()));
    for (VARIANT value : good)
        VariantClear(&value);
    for (VARIANT value : bad)
        VariantClear(&value);
}

// IDispatch of each interface answers for its own methods, although all have the same IUnknown.
TEST_F(CallPath, EveryInterfaceDispatchesItsOwnNames) {
    const auto knows = [](IDispatch* object, const wchar_t* name) {
        std::wstring text(name);
        LPOLESTR names = text.data();
        DISPID id = DISPID_UNKNOWN;
        return object->GetIDsOfNames(platform::NullGuid, &names, 1, 0, &id) == S_OK && id > 0;
    };
    EXPECT_TRUE(knows(m_Storage.Get(), L"SelectHoliday"));
    EXPECT_FALSE(knows(m_Storage.Get(), L"AdviseNotify"));
    EXPECT_TRUE(knows(Ask<IqxPortfolio>(m_Storage).Get(), L"Fetch"));
    EXPECT_TRUE(knows(Ask<IascStorage>(m_Storage).Get(), L"Datafeed"));
    EXPECT_TRUE(knows(Ask<IqxStorageNotify>(m_Storage).Get(), L"AdviseNotify"));
    EXPECT_TRUE(knows(Ask<IDM_dmSupplier::IqxAddingSymbol>(m_Storage).Get(), L"AddSymbol"));
    EXPECT_TRUE(knows(Ask<IqxStorageSmartNotify>(m_Storage).Get(), L"SendNotify"));
    EXPECT_TRUE(knows(Ask<IqxNativePortfolio>(m_Storage).Get(), L"UpdatePortfolioNative"));
    EXPECT_TRUE(knows(Ask<IqxDictionary>(m_Storage).Get(), L"GetRootDataFeedNameList"));
    EXPECT_TRUE(knows(Ask<IqxExpirationRuleSettings>(m_Storage).Get(), L"DeleteExpirationRule"));
    EXPECT_TRUE(knows(Ask<IqxExpirationDateCalculator>(m_Storage).Get(), L"Calculate"));
    EXPECT_TRUE(knows(Ask<IqxCurrency>(m_Storage).Get(), L"SetCurrency"));
}

TEST_F(CallPath, ManyThreadsWriteAndReadAtOnce) {
    constexpr int Threads = 4;
    constexpr int Rounds = 20;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t)
        threads.emplace_back([&, t] {
            CComPtr<IqxStorage> storage;
            if (CStorageHost::Create(storage) != S_OK)
                ++failures;
            for (int i = 0; storage && i < Rounds; ++i) {
                LONG key = 0;
                const auto request = NewRequest();
                const auto table = NewTable();
                if (storage->InsertHoliday(CBstr(L"T" + std::to_wstring(t)).Get(), &key) != S_OK ||
                    request->put_HolidayId(key) != S_OK ||
                    storage->SelectHoliday(request.Get(), table.Get()) != S_OK || RecordCount(table) != 1)
                    ++failures;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, failures.load());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    const auto count = Sql(L"SELECT COUNT(*) AS DATA_FEED, COUNT(DISTINCT HOLIDAY) AS EXCHANGE FROM HOLIDAYS");
    EXPECT_THAT(count, ElementsAre(Row{std::to_wstring(Threads * Rounds), std::to_wstring(Threads * Rounds)}));
}

TEST_F(CallPath, NoReportOfACallIsLeftOpen) {
    LONG key = 0;
    m_Storage->InsertHoliday(CBstr(std::wstring(1100, L'x')).Get(), &key);
    m_Storage->InsertHolidayDetails(nullptr);
    EXPECT_EQ(0, Recorder::OpenRecords());
}

} // namespace
