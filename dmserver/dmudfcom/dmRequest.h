// The IdmRequest: a bag of plain values.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"
#include "dmserver/dmudfcom/interface/RequestText.h"

#include "platform/com/object.h"

namespace IDM_dmudfcom {

class CdmRequest final
    : public platform::CObject<CdmRequest, platform::ECounter::Interlocked, platform::CDispatchImpl<IdmRequest>> {
public:
    HRESULT get_Id(LONG* Value) override;
    HRESULT put_Id(LONG Value) override;
    HRESULT get_Type(LONG* Value) override;
    HRESULT get_UserData(LONG* Value) override;
    HRESULT put_UserData(LONG Value) override;
    HRESULT Assign(BSTR Request) override;
    HRESULT Advise(IDispatch* pSink) override;
    HRESULT Unadvise() override;
    HRESULT get_Request(BSTR* Value) override;
    HRESULT get_QueryType(LONG* Value) override;
    HRESULT get_SymbolListType(LONG* Value) override;
    HRESULT get_Datafeed(LONG Mode, LONG* Value) override;
    HRESULT put_Datafeed(LONG Mode, LONG Value) override;
    HRESULT get_Symbol(LONG Mode, LONG* Value) override;
    HRESULT put_Symbol(LONG Mode, LONG Value) override;
    HRESULT get_SymbolName(LONG Mode, BSTR* Value) override;
    HRESULT put_SymbolName(LONG Mode, BSTR Value) override;
    HRESULT get_SymbolRoot(LONG Mode, BSTR* Value) override;
    HRESULT put_SymbolRoot(LONG Mode, BSTR Value) override;
    HRESULT get_Description(LONG Mode, BSTR* Value) override;
    HRESULT put_Description(LONG Mode, BSTR Value) override;
    HRESULT get_Category(LONG Mode, LONG* Value) override;
    HRESULT put_Category(LONG Mode, LONG Value) override;
    HRESULT get_PriceScale(LONG Mode, LONG* Value) override;
    HRESULT put_PriceScale(LONG Mode, LONG Value) override;
    HRESULT get_Resolution(LONG* Value) override;
    HRESULT put_Resolution(LONG Value) override;
    HRESULT get_ResolutionSize(LONG* Value) override;
    HRESULT put_ResolutionSize(LONG Value) override;
    HRESULT get_FieldType(LONG* Value) override;
    HRESULT put_FieldType(LONG Value) override;
    HRESULT get_Sessions(BSTR* Value) override;
    HRESULT put_Sessions(BSTR Value) override;
    HRESULT get_StartDate(LONG* Value) override;
    HRESULT get_FinishDate(LONG* Value) override;
    HRESULT get_BackType(LONG* Value) override;
    HRESULT get_BackCapacity(LONG* Value) override;
    HRESULT get_TimeZone(LONG* Value) override;
    HRESULT get_SessionsTZI(BSTR* Value) override;
    HRESULT put_SessionsTZI(BSTR Value) override;
    HRESULT get_ExchangeTZI(BSTR* Value) override;
    HRESULT put_ExchangeTZI(BSTR Value) override;
    HRESULT get_ExactMatch(LONG* Value) override;
    HRESULT get_Expired(LONG* Value) override;
    HRESULT get_BrowseDirection(LONG* Value) override;
    HRESULT get_BrowseType(LONG* Value) override;
    HRESULT get_GroupBy(LONG* Value) override;
    HRESULT get_Contents(LONG* Value) override;
    HRESULT put_Contents(LONG Value) override;
    HRESULT Supplement(LONG Mode, VARIANT Data) override;
    HRESULT Send(VARIANT Data) override;
    HRESULT get_HolidayId(LONG* Value) override;
    HRESULT put_HolidayId(LONG Value) override;
    HRESULT get_SettingId(LONG* Value) override;
    HRESULT put_SettingId(LONG Value) override;
    HRESULT get_SessionId(LONG* Value) override;
    HRESULT put_SessionId(LONG Value) override;
    HRESULT get_SessionType(LONG* Value) override;
    HRESULT put_SessionType(LONG Value) override;
    HRESULT get_ExchangeId(LONG Mode, LONG* Value) override;
    HRESULT put_ExchangeId(LONG Mode, LONG Value) override;
    HRESULT get_ExchangeName(LONG Mode, BSTR* Value) override;
    HRESULT put_ExchangeName(LONG Mode, BSTR Value) override;
    HRESULT get_IncludeDeleted(LONG* Value) override;
    HRESULT put_IncludeDeleted(LONG Value) override;
    HRESULT get_ActiveOnly(LONG* Value) override;
    HRESULT put_ActiveOnly(LONG Value) override;
    HRESULT get_Gap(LONG* Value) override;
    HRESULT put_Gap(LONG Value) override;
    HRESULT get_HourType(LONG* Value) override;
    HRESULT put_HourType(LONG Value) override;
    HRESULT get_RequestType(LONG* Value) override;
    HRESULT put_RequestType(LONG Value) override;
    HRESULT get_LIBResolution(LONG* Value) override;
    HRESULT put_LIBResolution(LONG Value) override;
    HRESULT get_LIBResolutionSize(LONG* Value) override;
    HRESULT put_LIBResolutionSize(LONG Value) override;
    HRESULT get_LIBStartDate(LONG* Value) override;
    HRESULT get_LIBStartTime(LONG* Value) override;
    HRESULT get_LIBEndDate(LONG* Value) override;
    HRESULT get_LIBEndTime(LONG* Value) override;
    HRESULT get_LIBSkipIdenticalTicks(LONG* Value) override;
    HRESULT get_DataFeedName(BSTR* Value) override;
    HRESULT put_DataFeedName(BSTR Value) override;
    HRESULT get_ChartType(LONG* Value) override;
    HRESULT put_ChartType(LONG Value) override;
    HRESULT get_Attribute(LONG Id, VARIANT* Value) override;
    HRESULT put_Attribute(LONG Id, VARIANT Value) override;
    HRESULT get_IsCF_Data(LONG* Value) override;
    HRESULT get_BuildOnVolume(LONG* Value) override;

private:
    HRESULT Give(ERequestProperty property, LONG* value, LONG mode = 0) const;
    HRESULT Give(ERequestProperty property, BSTR* value, LONG mode = 0) const;
    HRESULT Keep(ERequestProperty property, LONG value, LONG mode = 0);
    HRESULT Keep(ERequestProperty property, BSTR value, LONG mode = 0);

    tagRequestData m_Data;
    platform::CComPtr<IDispatch> m_Sink;
};

} // namespace IDM_dmudfcom
