// A request: a bag of plain values that a client fills and a storage reads.
//
// No value has a meaning here. What was never written reads as 0 or an empty text, never a null BSTR; a null BSTR
// written reads as an empty text. Where there is a Mode, the values of one Mode are kept apart from those of every
// other. A property without a put is set through Assign, whose text is made by RequestText.h.
//
// Statuses: E_POINTER for a null out pointer; E_INVALIDARG for text that is no Unicode; DISP_E_BADVARTYPE for a
// VARIANT that cannot be carried to another process (an object, an array of anything but bytes); E_OUTOFMEMORY.
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_dmudfcom {

struct IdmRequest : IDispatch {
    virtual HRESULT get_Id(LONG* Value) = 0;
    virtual HRESULT put_Id(LONG Value) = 0;
    virtual HRESULT get_Type(LONG* Value) = 0;
    virtual HRESULT get_UserData(LONG* Value) = 0;
    virtual HRESULT put_UserData(LONG Value) = 0;

    // Replaces all values, but not the sink, with those of a request text. E_FAIL, and nothing changed, for any
    // other text.
    virtual HRESULT Assign(BSTR Request) = 0;

    // Holds a sink, counted, in place of the one before. Unadvise lets it go: S_FALSE when there is none. E_POINTER
    // for null. The request does not call the sink; it keeps it alive for whoever answers.
    virtual HRESULT Advise(IDispatch* pSink) = 0;
    virtual HRESULT Unadvise() = 0;

    // The whole request as a text, which Assign takes.
    virtual HRESULT get_Request(BSTR* Value) = 0;
    virtual HRESULT get_QueryType(LONG* Value) = 0;
    virtual HRESULT get_SymbolListType(LONG* Value) = 0;
    virtual HRESULT get_Datafeed(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_Datafeed(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_Symbol(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_Symbol(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_SymbolName(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_SymbolName(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_SymbolRoot(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_SymbolRoot(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_Description(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_Description(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_Category(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_Category(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_PriceScale(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_PriceScale(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_Resolution(LONG* Value) = 0;
    virtual HRESULT put_Resolution(LONG Value) = 0;
    virtual HRESULT get_ResolutionSize(LONG* Value) = 0;
    virtual HRESULT put_ResolutionSize(LONG Value) = 0;
    virtual HRESULT get_FieldType(LONG* Value) = 0;
    virtual HRESULT put_FieldType(LONG Value) = 0;
    virtual HRESULT get_Sessions(BSTR* Value) = 0;
    virtual HRESULT put_Sessions(BSTR Value) = 0;
    virtual HRESULT get_StartDate(LONG* Value) = 0;
    virtual HRESULT get_FinishDate(LONG* Value) = 0;
    virtual HRESULT get_BackType(LONG* Value) = 0;
    virtual HRESULT get_BackCapacity(LONG* Value) = 0;
    virtual HRESULT get_TimeZone(LONG* Value) = 0;
    virtual HRESULT get_SessionsTZI(BSTR* Value) = 0;
    virtual HRESULT put_SessionsTZI(BSTR Value) = 0;
    virtual HRESULT get_ExchangeTZI(BSTR* Value) = 0;
    virtual HRESULT put_ExchangeTZI(BSTR Value) = 0;
    virtual HRESULT get_ExactMatch(LONG* Value) = 0;
    virtual HRESULT get_Expired(LONG* Value) = 0;
    virtual HRESULT get_BrowseDirection(LONG* Value) = 0;
    virtual HRESULT get_BrowseType(LONG* Value) = 0;
    virtual HRESULT get_GroupBy(LONG* Value) = 0;
    virtual HRESULT get_Contents(LONG* Value) = 0;
    virtual HRESULT put_Contents(LONG Value) = 0;

    // Keeps a copy of the data, one for each Mode; VT_EMPTY takes it back. It is read through the request text
    // (tagRequestData::Supplements), as what Send kept is (tagRequestData::Sent).
    virtual HRESULT Supplement(LONG Mode, VARIANT Data) = 0;
    virtual HRESULT Send(VARIANT Data) = 0;
    virtual HRESULT get_HolidayId(LONG* Value) = 0;
    virtual HRESULT put_HolidayId(LONG Value) = 0;
    virtual HRESULT get_SettingId(LONG* Value) = 0;
    virtual HRESULT put_SettingId(LONG Value) = 0;
    virtual HRESULT get_SessionId(LONG* Value) = 0;
    virtual HRESULT put_SessionId(LONG Value) = 0;
    virtual HRESULT get_SessionType(LONG* Value) = 0;
    virtual HRESULT put_SessionType(LONG Value) = 0;
    virtual HRESULT get_ExchangeId(LONG Mode, LONG* Value) = 0;
    virtual HRESULT put_ExchangeId(LONG Mode, LONG Value) = 0;
    virtual HRESULT get_ExchangeName(LONG Mode, BSTR* Value) = 0;
    virtual HRESULT put_ExchangeName(LONG Mode, BSTR Value) = 0;
    virtual HRESULT get_IncludeDeleted(LONG* Value) = 0;
    virtual HRESULT put_IncludeDeleted(LONG Value) = 0;
    virtual HRESULT get_ActiveOnly(LONG* Value) = 0;
    virtual HRESULT put_ActiveOnly(LONG Value) = 0;
    virtual HRESULT get_Gap(LONG* Value) = 0;
    virtual HRESULT put_Gap(LONG Value) = 0;
    virtual HRESULT get_HourType(LONG* Value) = 0;
    virtual HRESULT put_HourType(LONG Value) = 0;
    virtual HRESULT get_RequestType(LONG* Value) = 0;
    virtual HRESULT put_RequestType(LONG Value) = 0;
    virtual HRESULT get_LIBResolution(LONG* Value) = 0;
    virtual HRESULT put_LIBResolution(LONG Value) = 0;
    virtual HRESULT get_LIBResolutionSize(LONG* Value) = 0;
    virtual HRESULT put_LIBResolutionSize(LONG Value) = 0;
    virtual HRESULT get_LIBStartDate(LONG* Value) = 0;
    virtual HRESULT get_LIBStartTime(LONG* Value) = 0;
    virtual HRESULT get_LIBEndDate(LONG* Value) = 0;
    virtual HRESULT get_LIBEndTime(LONG* Value) = 0;
    virtual HRESULT get_LIBSkipIdenticalTicks(LONG* Value) = 0;
    virtual HRESULT get_DataFeedName(BSTR* Value) = 0;
    virtual HRESULT put_DataFeedName(BSTR Value) = 0;
    virtual HRESULT get_ChartType(LONG* Value) = 0;
    virtual HRESULT put_ChartType(LONG Value) = 0;

    // Values by a free id. VT_EMPTY for one never written; a put of VT_EMPTY takes the value back.
    virtual HRESULT get_Attribute(LONG Id, VARIANT* Value) = 0;
    virtual HRESULT put_Attribute(LONG Id, VARIANT Value) = 0;
    virtual HRESULT get_IsCF_Data(LONG* Value) = 0;
    virtual HRESULT get_BuildOnVolume(LONG* Value) = 0;

protected:
    ~IdmRequest() = default;
};

} // namespace IDM_dmudfcom

namespace platform {

template <>
struct InterfaceTraits<IDM_dmudfcom::IdmRequest> {
    static constexpr GUID Uuid = MakeGuid("0cc15727-c930-484b-b934-3ff8a817bc39");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmRequest> {
    using IdmRequest = IDM_dmudfcom::IdmRequest;
    static constexpr std::array Methods{
        PropertyGet<&IdmRequest::get_Id>(1, L"Id", L"Value"),
        PropertyPut<&IdmRequest::put_Id>(1, L"Id", L"Value"),
        PropertyGet<&IdmRequest::get_Type>(2, L"Type", L"Value"),
        PropertyGet<&IdmRequest::get_UserData>(3, L"UserData", L"Value"),
        PropertyPut<&IdmRequest::put_UserData>(3, L"UserData", L"Value"),
        Method<&IdmRequest::Assign>(4, L"Assign", L"Request"),
        Method<&IdmRequest::Advise>(5, L"Advise", L"pSink"),
        Method<&IdmRequest::Unadvise>(6, L"Unadvise"),
        PropertyGet<&IdmRequest::get_Request>(7, L"Request", L"Value"),
        PropertyGet<&IdmRequest::get_QueryType>(8, L"QueryType", L"Value"),
        PropertyGet<&IdmRequest::get_SymbolListType>(9, L"SymbolListType", L"Value"),
        PropertyGet<&IdmRequest::get_Datafeed>(10, L"Datafeed", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Datafeed>(10, L"Datafeed", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Symbol>(11, L"Symbol", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Symbol>(11, L"Symbol", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_SymbolName>(12, L"SymbolName", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_SymbolName>(12, L"SymbolName", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_SymbolRoot>(13, L"SymbolRoot", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_SymbolRoot>(13, L"SymbolRoot", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Description>(14, L"Description", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Description>(14, L"Description", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Category>(15, L"Category", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_Category>(15, L"Category", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_PriceScale>(16, L"PriceScale", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_PriceScale>(16, L"PriceScale", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_Resolution>(17, L"Resolution", L"Value"),
        PropertyPut<&IdmRequest::put_Resolution>(17, L"Resolution", L"Value"),
        PropertyGet<&IdmRequest::get_ResolutionSize>(18, L"ResolutionSize", L"Value"),
        PropertyPut<&IdmRequest::put_ResolutionSize>(18, L"ResolutionSize", L"Value"),
        PropertyGet<&IdmRequest::get_FieldType>(19, L"FieldType", L"Value"),
        PropertyPut<&IdmRequest::put_FieldType>(19, L"FieldType", L"Value"),
        PropertyGet<&IdmRequest::get_Sessions>(20, L"Sessions", L"Value"),
        PropertyPut<&IdmRequest::put_Sessions>(20, L"Sessions", L"Value"),
        PropertyGet<&IdmRequest::get_StartDate>(21, L"StartDate", L"Value"),
        PropertyGet<&IdmRequest::get_FinishDate>(22, L"FinishDate", L"Value"),
        PropertyGet<&IdmRequest::get_BackType>(23, L"BackType", L"Value"),
        PropertyGet<&IdmRequest::get_BackCapacity>(24, L"BackCapacity", L"Value"),
        PropertyGet<&IdmRequest::get_TimeZone>(25, L"TimeZone", L"Value"),
        PropertyGet<&IdmRequest::get_SessionsTZI>(26, L"SessionsTZI", L"Value"),
        PropertyPut<&IdmRequest::put_SessionsTZI>(26, L"SessionsTZI", L"Value"),
        PropertyGet<&IdmRequest::get_ExchangeTZI>(27, L"ExchangeTZI", L"Value"),
        PropertyPut<&IdmRequest::put_ExchangeTZI>(27, L"ExchangeTZI", L"Value"),
        PropertyGet<&IdmRequest::get_ExactMatch>(28, L"ExactMatch", L"Value"),
        PropertyGet<&IdmRequest::get_Expired>(29, L"Expired", L"Value"),
        PropertyGet<&IdmRequest::get_BrowseDirection>(30, L"BrowseDirection", L"Value"),
        PropertyGet<&IdmRequest::get_BrowseType>(31, L"BrowseType", L"Value"),
        PropertyGet<&IdmRequest::get_GroupBy>(32, L"GroupBy", L"Value"),
        PropertyGet<&IdmRequest::get_Contents>(33, L"Contents", L"Value"),
        PropertyPut<&IdmRequest::put_Contents>(33, L"Contents", L"Value"),
        Method<&IdmRequest::Supplement>(34, L"Supplement", L"Mode", L"Data"),
        Method<&IdmRequest::Send>(35, L"Send", L"Data"),
        PropertyGet<&IdmRequest::get_HolidayId>(36, L"HolidayId", L"Value"),
        PropertyPut<&IdmRequest::put_HolidayId>(36, L"HolidayId", L"Value"),
        PropertyGet<&IdmRequest::get_SettingId>(37, L"SettingId", L"Value"),
        PropertyPut<&IdmRequest::put_SettingId>(37, L"SettingId", L"Value"),
        PropertyGet<&IdmRequest::get_SessionId>(38, L"SessionId", L"Value"),
        PropertyPut<&IdmRequest::put_SessionId>(38, L"SessionId", L"Value"),
        PropertyGet<&IdmRequest::get_SessionType>(39, L"SessionType", L"Value"),
        PropertyPut<&IdmRequest::put_SessionType>(39, L"SessionType", L"Value"),
        PropertyGet<&IdmRequest::get_ExchangeId>(40, L"ExchangeId", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_ExchangeId>(40, L"ExchangeId", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_ExchangeName>(41, L"ExchangeName", L"Mode", L"Value"),
        PropertyPut<&IdmRequest::put_ExchangeName>(41, L"ExchangeName", L"Mode", L"Value"),
        PropertyGet<&IdmRequest::get_IncludeDeleted>(42, L"IncludeDeleted", L"Value"),
        PropertyPut<&IdmRequest::put_IncludeDeleted>(42, L"IncludeDeleted", L"Value"),
        PropertyGet<&IdmRequest::get_ActiveOnly>(43, L"ActiveOnly", L"Value"),
        PropertyPut<&IdmRequest::put_ActiveOnly>(43, L"ActiveOnly", L"Value"),
        PropertyGet<&IdmRequest::get_Gap>(44, L"Gap", L"Value"),
        PropertyPut<&IdmRequest::put_Gap>(44, L"Gap", L"Value"),
        PropertyGet<&IdmRequest::get_HourType>(45, L"HourType", L"Value"),
        PropertyPut<&IdmRequest::put_HourType>(45, L"HourType", L"Value"),
        PropertyGet<&IdmRequest::get_RequestType>(46, L"RequestType", L"Value"),
        PropertyPut<&IdmRequest::put_RequestType>(46, L"RequestType", L"Value"),
        PropertyGet<&IdmRequest::get_LIBResolution>(47, L"LIBResolution", L"Value"),
        PropertyPut<&IdmRequest::put_LIBResolution>(47, L"LIBResolution", L"Value"),
        PropertyGet<&IdmRequest::get_LIBResolutionSize>(48, L"LIBResolutionSize", L"Value"),
        PropertyPut<&IdmRequest::put_LIBResolutionSize>(48, L"LIBResolutionSize", L"Value"),
        PropertyGet<&IdmRequest::get_LIBStartDate>(49, L"LIBStartDate", L"Value"),
        PropertyGet<&IdmRequest::get_LIBStartTime>(50, L"LIBStartTime", L"Value"),
        PropertyGet<&IdmRequest::get_LIBEndDate>(51, L"LIBEndDate", L"Value"),
        PropertyGet<&IdmRequest::get_LIBEndTime>(52, L"LIBEndTime", L"Value"),
        PropertyGet<&IdmRequest::get_LIBSkipIdenticalTicks>(53, L"LIBSkipIdenticalTicks", L"Value"),
        PropertyGet<&IdmRequest::get_DataFeedName>(54, L"DataFeedName", L"Value"),
        PropertyPut<&IdmRequest::put_DataFeedName>(54, L"DataFeedName", L"Value"),
        PropertyGet<&IdmRequest::get_ChartType>(55, L"ChartType", L"Value"),
        PropertyPut<&IdmRequest::put_ChartType>(55, L"ChartType", L"Value"),
        PropertyGet<&IdmRequest::get_Attribute>(56, L"Attribute", L"Id", L"Value"),
        PropertyPut<&IdmRequest::put_Attribute>(56, L"Attribute", L"Id", L"Value"),
        PropertyGet<&IdmRequest::get_IsCF_Data>(57, L"IsCF_Data", L"Value"),
        PropertyGet<&IdmRequest::get_BuildOnVolume>(58, L"BuildOnVolume", L"Value"),
    };
};

} // namespace platform
