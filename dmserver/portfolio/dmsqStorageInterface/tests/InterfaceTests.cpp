// The published shape of the storage: identifiers, slots, dispatch names.
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorage.h"
#include "platform/com/tests/Slots.h"

#include <algorithm>
#include <cwchar>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace IDM_qxStorage;
using IDM_dmSupplier::IqxAddingSymbol;
using platform::UuidOf;
using platform::tests::DispatchSlots;
using platform::tests::SlotOf;

// Each method must take the next slot behind the one before it; the first stands behind those of IDispatch.
template <class... Members>
void ExpectSlotsInOrder(Members... members) {
    int expected = DispatchSlots;
    int position = 0;
    const auto expect = [&](int slot) {
        EXPECT_EQ(expected++, slot) << "method number " << position;
        ++position;
    };
    (expect(SlotOf(members)), ...);
}

// The table lists the methods in slot order, with rising identifiers, and says all there is of each.
template <class I>
void ExpectTableIsWhole(std::size_t count) {
    const auto table = platform::MethodsOf<I>();
    ASSERT_EQ(count, table.size());
    DISPID previous = 0;
    for (const platform::tagMethod& method : table) {
        EXPECT_EQ(previous + 1, method.Id) << std::string(method.Name, method.Name + std::wcslen(method.Name));
        previous = method.Id;
        EXPECT_NE(nullptr, method.Call);
        for (UINT i = 0; i < method.ParameterCount(); ++i)
            EXPECT_NE(nullptr, method.Names[i].Name);
    }
}

TEST(Interfaces, IdentifiersAreThePublishedOnes) {
    EXPECT_EQ(L"{8F5C2D0E-53B1-4C0D-9A7E-2B6F1D3C4A01}", platform::ToText(UuidOf<IqxStorage>));
    EXPECT_EQ(L"{8F5C2D0E-53B1-4C0D-9A7E-2B6F1D3C4A02}", platform::ToText(UuidOf<IqxPortfolio>));
    EXPECT_EQ(L"{D8678388-4BAD-408F-B8BF-32DCC25BDC38}", platform::ToText(UuidOf<IascStorage>));
    EXPECT_EQ(L"{CC4AA757-3054-482A-8474-E67C5E1E20C4}", platform::ToText(UuidOf<IqxStorageNotify>));
    EXPECT_EQ(L"{E39EC0B5-117A-405E-B532-495D1AF03169}", platform::ToText(UuidOf<IqxAddingSymbol>));
    EXPECT_EQ(L"{AB8D2F78-594A-41BB-81C3-E2C2253E5904}", platform::ToText(UuidOf<IqxStorageSmartNotify>));
    EXPECT_EQ(L"{6E225D79-39D1-4A9E-995D-41617BE15A82}", platform::ToText(UuidOf<IqxNativePortfolio>));
    EXPECT_EQ(L"{04556EB2-190D-42EF-8CEE-FD889D2A0502}", platform::ToText(UuidOf<IqxDictionary>));
    EXPECT_EQ(L"{378C46D8-3FD9-4189-A9EA-4E172D1A7DA6}", platform::ToText(UuidOf<IqxExpirationRuleSettings>));
    EXPECT_EQ(L"{7008DCC9-5FF2-4D51-9AC1-2B121D979C05}", platform::ToText(UuidOf<IqxExpirationDateCalculator>));
    EXPECT_EQ(L"{868632A7-F887-42BB-BC1F-30518D27D274}", platform::ToText(UuidOf<IqxCurrency>));
    EXPECT_EQ(L"{213741A0-33A3-4125-B03B-59BC12C05F29}", platform::ToText(UuidOf<IqxStorageNotifySink>));
    EXPECT_EQ(L"{C327DC40-9142-4DBE-8F3C-4A45FC56327C}", platform::ToText(CLSID_qxStorage));
    EXPECT_EQ(L"{D57481F1-4FA1-4F32-ABE6-512EAA414642}", platform::ToText(CLSID_srvStorage));
    EXPECT_EQ(L"{BB6381B1-FACE-46C2-B15C-49C1B6F101C9}", platform::ToText(LIBID_dmsqStorageProject));
}

TEST(Interfaces, NoTwoShareAnIdentifier) {
    const std::vector<GUID> all{UuidOf<IqxStorage>,
                                UuidOf<IqxPortfolio>,
                                UuidOf<IascStorage>,
                                UuidOf<IqxStorageNotify>,
                                UuidOf<IqxAddingSymbol>,
                                UuidOf<IqxStorageSmartNotify>,
                                UuidOf<IqxNativePortfolio>,
                                UuidOf<IqxDictionary>,
                                UuidOf<IqxExpirationRuleSettings>,
                                UuidOf<IqxExpirationDateCalculator>,
                                UuidOf<IqxCurrency>,
                                UuidOf<IqxStorageNotifySink>};
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t j = i + 1; j < all.size(); ++j)
            EXPECT_NE(all[i], all[j]);
}

TEST(Interfaces, StorageSlotsStandInTheOrderOfTheInterfaceTable) {
    ExpectSlotsInOrder(
        &IqxStorage::SelectHoliday, &IqxStorage::InsertHoliday, &IqxStorage::DeleteHoliday,
        &IqxStorage::UpdateHoliday, &IqxStorage::SelectHolidayDetails, &IqxStorage::InsertHolidayDetails,
        &IqxStorage::DeleteHolidayDetails, &IqxStorage::DeleteHolidayDetails2, &IqxStorage::SelectSetting,
        &IqxStorage::InsertSetting, &IqxStorage::DeleteSetting, &IqxStorage::UpdateSetting,
        &IqxStorage::SelectDataFeed, &IqxStorage::InsertDataFeed, &IqxStorage::DeleteDataFeed,
        &IqxStorage::UpdateDataFeed, &IqxStorage::GetDataFeed, &IqxStorage::SelectExchange,
        &IqxStorage::InsertExchange, &IqxStorage::DeleteExchange, &IqxStorage::UpdateExchange,
        &IqxStorage::GetExchange, &IqxStorage::SelectSession, &IqxStorage::InsertSession,
        &IqxStorage::DeleteSession, &IqxStorage::UpdateSession, &IqxStorage::SelectSessionDetails,
        &IqxStorage::InsertSessionDetails, &IqxStorage::DeleteSessionDetails, &IqxStorage::SelectPortfolio,
        &IqxStorage::InsertPortfolio, &IqxStorage::DeletePortfolio, &IqxStorage::UpdatePortfolio,
        &IqxStorage::SelectDictionary, &IqxStorage::InsertDictionary, &IqxStorage::DeleteDictionary,
        &IqxStorage::UpdateDictionary, &IqxStorage::GetSymbol, &IqxStorage::GetAvailableSessions,
        &IqxStorage::GetSymbolByName, &IqxStorage::GetSymbolByDescription, &IqxStorage::SelectCustomFutures,
        &IqxStorage::InsertCustomFutures, &IqxStorage::DeleteCustomFutures, &IqxStorage::UpdateCustomFutures,
        &IqxStorage::UpdateCustomFuturesFormula);
    ExpectTableIsWhole<IqxStorage>(46);
}

TEST(Interfaces, PortfolioSlots) {
    ExpectSlotsInOrder(&IqxPortfolio::Advise, &IqxPortfolio::Unadvise, &IqxPortfolio::Fetch);
    ExpectTableIsWhole<IqxPortfolio>(3);
}

TEST(Interfaces, AscStorageSlots) {
    ExpectSlotsInOrder(&IascStorage::get_Datafeed, &IascStorage::Load, &IascStorage::Save);
    ExpectTableIsWhole<IascStorage>(3);
    EXPECT_EQ(DISPATCH_PROPERTYGET, platform::MethodsOf<IascStorage>()[0].Kind);
    EXPECT_STREQ(L"Datafeed", platform::MethodsOf<IascStorage>()[0].Name);
}

TEST(Interfaces, NotifySlots) {
    ExpectSlotsInOrder(&IqxStorageNotify::AdviseNotify, &IqxStorageNotify::UnadviseNotify);
    ExpectTableIsWhole<IqxStorageNotify>(2);
    ExpectSlotsInOrder(&IqxStorageNotifySink::DataChanged);
    ExpectTableIsWhole<IqxStorageNotifySink>(1);
}

TEST(Interfaces, AddingSymbolSlots) {
    ExpectSlotsInOrder(&IqxAddingSymbol::AddSymbol);
    ExpectTableIsWhole<IqxAddingSymbol>(1);
}

TEST(Interfaces, SmartNotifySlots) {
    ExpectSlotsInOrder(&IqxStorageSmartNotify::DeletePortfolioSmart, &IqxStorageSmartNotify::InsertPortfolioSmart,
                       &IqxStorageSmartNotify::UpdatePortfolioSmart, &IqxStorageSmartNotify::InsertSymbols,
                       &IqxStorageSmartNotify::SendNotify);
    ExpectTableIsWhole<IqxStorageSmartNotify>(5);
}

TEST(Interfaces, NativePortfolioSlots) {
    ExpectSlotsInOrder(&IqxNativePortfolio::UpdatePortfolioNative);
    ExpectTableIsWhole<IqxNativePortfolio>(1);
}

TEST(Interfaces, DictionarySlots) {
    ExpectSlotsInOrder(&IqxDictionary::SelectRootSettings, &IqxDictionary::InsertRootSettings,
                       &IqxDictionary::UpdateRootSettings, &IqxDictionary::DeleteRootSettings,
                       &IqxDictionary::GetRootDataFeedNameList, &IqxDictionary::AdjustRootSettings);
    ExpectTableIsWhole<IqxDictionary>(6);
}

TEST(Interfaces, ExpirationSlots) {
    ExpectSlotsInOrder(
        &IqxExpirationRuleSettings::SelectExpirationRule, &IqxExpirationRuleSettings::InsertExpirationRule,
        &IqxExpirationRuleSettings::UpdateExpirationRule, &IqxExpirationRuleSettings::DeleteExpirationRule);
    ExpectTableIsWhole<IqxExpirationRuleSettings>(4);
    ExpectSlotsInOrder(&IqxExpirationDateCalculator::Calculate);
    ExpectTableIsWhole<IqxExpirationDateCalculator>(1);
}

TEST(Interfaces, CurrencySlots) {
    ExpectSlotsInOrder(&IqxCurrency::SetCurrency, &IqxCurrency::GetCurrency, &IqxCurrency::DeleteCurrency,
                       &IqxCurrency::SelectCurrency);
    ExpectTableIsWhole<IqxCurrency>(4);
}

TEST(Interfaces, ArgumentsOfAnInsertedSymbolKeepTheirOrder) {
    const auto table = platform::MethodsOf<IqxStorage>();
    const auto insert = std::ranges::find(table, std::wstring_view(L"InsertPortfolio"),
                                          [](const auto& method) { return std::wstring_view(method.Name); });
    ASSERT_NE(table.end(), insert);
    std::vector<std::wstring> names;
    for (UINT i = 0; i < insert->ParameterCount(); ++i)
        names.emplace_back(insert->Names[i].Name);
    EXPECT_THAT(names, testing::ElementsAre(L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category",
                                            L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType",
                                            L"CustomSession", L"TemplateSession", L"ContractMonth", L"ContractYear",
                                            L"StrikePrice", L"CallPut", L"Margin", L"ExpirationDate", L"Expired",
                                            L"ExpirationRule", L"FirstNoticeDate", L"Delivery", L"Symbol"));
    EXPECT_EQ(VT_R8, insert->Types[14].Type);
    EXPECT_TRUE(insert->HasResult());
}

TEST(Interfaces, WhatMayBeMissingInACallIsOptional) {
    const auto table = platform::MethodsOf<IqxStorage>();
    for (const auto& method : table)
        if (std::wstring_view(method.Name) == L"SelectPortfolio") {
            EXPECT_FALSE(method.Names[0].IsOptional);
            EXPECT_TRUE(method.Names[1].IsOptional);
            EXPECT_FALSE(method.Names[2].IsOptional);
            EXPECT_EQ(UuidOf<IDM_dmudfcom::IdmRequest>, *method.Types[1].Object);
        }
}

} // namespace
