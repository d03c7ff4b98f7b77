// A request of which every property refuses to tell, with E_ABORT; what describes a symbol answers as OnGet wants.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"
#include "platform/com/bstr.h"
#include "platform/com/object.h"

#include <functional>
#include <optional>
#include <string>

namespace tests {

class CRefusingRequest final : public platform::CObject<CRefusingRequest, platform::ECounter::Interlocked,
                                                        platform::CDispatchImpl<IDM_dmudfcom::IdmRequest>> {
public:
    // The status of the property of that name. Its value stays as the caller left it.
    std::function<HRESULT(const std::wstring&)> OnGet = [](const std::wstring&) { return E_ABORT; };
    // What it tells all the same.
    std::optional<LONG> Datafeed;
    std::optional<std::wstring> SymbolName;

    HRESULT get_Id(LONG*) override { return E_ABORT; }
    HRESULT put_Id(LONG) override { return E_ABORT; }
    HRESULT get_Type(LONG*) override { return E_ABORT; }
    HRESULT get_UserData(LONG*) override { return E_ABORT; }
    HRESULT put_UserData(LONG) override { return E_ABORT; }
    HRESULT Assign(BSTR) override { return E_ABORT; }
    HRESULT Advise(IDispatch*) override { return E_ABORT; }
    HRESULT Unadvise() override { return E_ABORT; }
    HRESULT get_Request(BSTR*) override { return E_ABORT; }
    HRESULT get_QueryType(LONG*) override { return E_ABORT; }
    HRESULT get_SymbolListType(LONG*) override { return E_ABORT; }
    HRESULT get_Datafeed(LONG, LONG* value) override {
        *value = Datafeed.value_or(*value);
        return OnGet(L"Datafeed");
    }
    HRESULT put_Datafeed(LONG, LONG) override { return E_ABORT; }
    HRESULT get_Symbol(LONG, LONG*) override { return OnGet(L"Symbol"); }
    HRESULT put_Symbol(LONG, LONG) override { return E_ABORT; }
    HRESULT get_SymbolName(LONG, BSTR* value) override {
        if (SymbolName)
            *value = platform::CBstr(*SymbolName).Detach();
        return OnGet(L"SymbolName");
    }
    HRESULT put_SymbolName(LONG, BSTR) override { return E_ABORT; }
    HRESULT get_SymbolRoot(LONG, BSTR*) override { return E_ABORT; }
    HRESULT put_SymbolRoot(LONG, BSTR) override { return E_ABORT; }
    HRESULT get_Description(LONG, BSTR*) override { return E_ABORT; }
    HRESULT put_Description(LONG, BSTR) override { return E_ABORT; }
    HRESULT get_Category(LONG, LONG*) override { return OnGet(L"Category"); }
    HRESULT put_Category(LONG, LONG) override { return E_ABORT; }
    HRESULT get_PriceScale(LONG, LONG*) override { return E_ABORT; }
    HRESULT put_PriceScale(LONG, LONG) override { return E_ABORT; }
    HRESULT get_Resolution(LONG*) override { return E_ABORT; }
    HRESULT put_Resolution(LONG) override { return E_ABORT; }
    HRESULT get_ResolutionSize(LONG*) override { return E_ABORT; }
    HRESULT put_ResolutionSize(LONG) override { return E_ABORT; }
    HRESULT get_FieldType(LONG*) override { return E_ABORT; }
    HRESULT put_FieldType(LONG) override { return E_ABORT; }
    HRESULT get_Sessions(BSTR*) override { return E_ABORT; }
    HRESULT put_Sessions(BSTR) override { return E_ABORT; }
    HRESULT get_StartDate(LONG*) override { return E_ABORT; }
    HRESULT get_FinishDate(LONG*) override { return E_ABORT; }
    HRESULT get_BackType(LONG*) override { return E_ABORT; }
    HRESULT get_BackCapacity(LONG*) override { return E_ABORT; }
    HRESULT get_TimeZone(LONG*) override { return E_ABORT; }
    HRESULT get_SessionsTZI(BSTR*) override { return E_ABORT; }
    HRESULT put_SessionsTZI(BSTR) override { return E_ABORT; }
    HRESULT get_ExchangeTZI(BSTR*) override { return E_ABORT; }
    HRESULT put_ExchangeTZI(BSTR) override { return E_ABORT; }
    HRESULT get_ExactMatch(LONG*) override { return E_ABORT; }
    HRESULT get_Expired(LONG*) override { return E_ABORT; }
    HRESULT get_BrowseDirection(LONG*) override { return E_ABORT; }
    HRESULT get_BrowseType(LONG*) override { return E_ABORT; }
    HRESULT get_GroupBy(LONG*) override { return E_ABORT; }
    HRESULT get_Contents(LONG*) override { return E_ABORT; }
    HRESULT put_Contents(LONG) override { return E_ABORT; }
    HRESULT Supplement(LONG, VARIANT) override { return E_ABORT; }
    HRESULT Send(VARIANT) override { return E_ABORT; }
    HRESULT get_HolidayId(LONG*) override { return E_ABORT; }
    HRESULT put_HolidayId(LONG) override { return E_ABORT; }
    HRESULT get_SettingId(LONG*) override { return E_ABORT; }
    HRESULT put_SettingId(LONG) override { return E_ABORT; }
    HRESULT get_SessionId(LONG*) override { return E_ABORT; }
    HRESULT put_SessionId(LONG) override { return E_ABORT; }
    HRESULT get_SessionType(LONG*) override { return E_ABORT; }
    HRESULT put_SessionType(LONG) override { return E_ABORT; }
    HRESULT get_ExchangeId(LONG, LONG*) override { return OnGet(L"ExchangeId"); }
    HRESULT put_ExchangeId(LONG, LONG) override { return E_ABORT; }
    HRESULT get_ExchangeName(LONG, BSTR*) override { return E_ABORT; }
    HRESULT put_ExchangeName(LONG, BSTR) override { return E_ABORT; }
    HRESULT get_IncludeDeleted(LONG*) override { return E_ABORT; }
    HRESULT put_IncludeDeleted(LONG) override { return E_ABORT; }
    HRESULT get_ActiveOnly(LONG*) override { return E_ABORT; }
    HRESULT put_ActiveOnly(LONG) override { return E_ABORT; }
    HRESULT get_Gap(LONG*) override { return E_ABORT; }
    HRESULT put_Gap(LONG) override { return E_ABORT; }
    HRESULT get_HourType(LONG*) override { return E_ABORT; }
    HRESULT put_HourType(LONG) override { return E_ABORT; }
    HRESULT get_RequestType(LONG*) override { return E_ABORT; }
    HRESULT put_RequestType(LONG) override { return E_ABORT; }
    HRESULT get_LIBResolution(LONG*) override { return E_ABORT; }
    HRESULT put_LIBResolution(LONG) override { return E_ABORT; }
    HRESULT get_LIBResolutionSize(LONG*) override { return E_ABORT; }
    HRESULT put_LIBResolutionSize(LONG) override { return E_ABORT; }
    HRESULT get_LIBStartDate(LONG*) override { return E_ABORT; }
    HRESULT get_LIBStartTime(LONG*) override { return E_ABORT; }
    HRESULT get_LIBEndDate(LONG*) override { return E_ABORT; }
    HRESULT get_LIBEndTime(LONG*) override { return E_ABORT; }
    HRESULT get_LIBSkipIdenticalTicks(LONG*) override { return E_ABORT; }
    HRESULT get_DataFeedName(BSTR*) override { return E_ABORT; }
    HRESULT put_DataFeedName(BSTR) override { return E_ABORT; }
    HRESULT get_ChartType(LONG*) override { return E_ABORT; }
    HRESULT put_ChartType(LONG) override { return E_ABORT; }
    HRESULT get_Attribute(LONG, VARIANT*) override { return E_ABORT; }
    HRESULT put_Attribute(LONG, VARIANT) override { return E_ABORT; }
    HRESULT get_IsCF_Data(LONG*) override { return E_ABORT; }
    HRESULT get_BuildOnVolume(LONG*) override { return E_ABORT; }
};

} // namespace tests
