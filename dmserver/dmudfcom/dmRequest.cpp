#include "dmRequest.h"

#include "CarrierText.h"
#include "Guarded.h"

namespace IDM_dmudfcom {

namespace {

using enum ERequestProperty;

// A copy of what can be carried to another process. By-reference values are taken by value.
HRESULT CopyCarried(const VARIANT& value, platform::CVariant& copy) {
    if (const HRESULT status = VariantCopyInd(copy.Put(), &value); FAILED(status))
        return status;
    if (!CanBeCarried(copy.Get()))
        return DISP_E_BADVARTYPE;
    const bool isText = copy.Type() != VT_BSTR || ToStored(platform::ViewOf(copy.Get().bstrVal));
    return isText ? S_OK : E_INVALIDARG;
}

HRESULT KeepCarried(std::map<LONG, platform::CVariant>& values, LONG id, const VARIANT& value) {
    return Guarded([&] {
        platform::CVariant copy;
        const HRESULT status = CopyCarried(value, copy);
        if (status != S_OK)
            return status;
        if (copy.Type() == VT_EMPTY)
            values.erase(id);
        else
            values[id] = std::move(copy);
        return S_OK;
    });
}

} // namespace

HRESULT CdmRequest::Give(ERequestProperty property, LONG* value, LONG mode) const {
    if (!value)
        return E_POINTER;
    const auto found = m_Data.Numbers.find({property, mode});
    *value = found != m_Data.Numbers.end() ? found->second : 0;
    return S_OK;
}

HRESULT CdmRequest::Give(ERequestProperty property, BSTR* value, LONG mode) const {
    if (!value)
        return E_POINTER;
    const auto found = m_Data.Texts.find({property, mode});
    *value = found != m_Data.Texts.end()
                 ? SysAllocStringLen(found->second.data(), static_cast<UINT>(found->second.size()))
                 : SysAllocString(L"");
    return *value ? S_OK : E_OUTOFMEMORY;
}

HRESULT CdmRequest::Keep(ERequestProperty property, LONG value, LONG mode) {
    return Guarded([&] {
        m_Data.Number(property, mode) = value;
        return S_OK;
    });
}

HRESULT CdmRequest::Keep(ERequestProperty property, BSTR value, LONG mode) {
    return Guarded([&]() -> HRESULT {
        if (!ToStored(platform::ViewOf(value)))
            return E_INVALIDARG;
        m_Data.Text(property, mode) = platform::ViewOf(value);
        return S_OK;
    });
}

HRESULT CdmRequest::Assign(BSTR Request) {
    return Guarded([&]() -> HRESULT {
        auto data = ReadRequestText(platform::ViewOf(Request));
        if (!data)
            return E_FAIL;
        m_Data = std::move(*data);
        return S_OK;
    });
}

HRESULT CdmRequest::get_Request(BSTR* Value) {
    if (!Value)
        return E_POINTER;
    *Value = nullptr;
    return Guarded([&] {
        *Value = platform::CBstr(std::wstring_view(MakeRequestText(m_Data))).Detach();
        return S_OK;
    });
}

HRESULT CdmRequest::Advise(IDispatch* pSink) {
    if (!pSink)
        return E_POINTER;
    m_Sink = pSink;
    return S_OK;
}

HRESULT CdmRequest::Unadvise() {
    const bool wasHeld = m_Sink != nullptr;
    m_Sink.Reset();
    return wasHeld ? S_OK : S_FALSE;
}

HRESULT CdmRequest::Supplement(LONG Mode, VARIANT Data) { return KeepCarried(m_Data.Supplements, Mode, Data); }

HRESULT CdmRequest::Send(VARIANT Data) {
    return Guarded([&] {
        platform::CVariant copy;
        const HRESULT status = CopyCarried(Data, copy);
        if (status == S_OK)
            m_Data.Sent = std::move(copy);
        return status;
    });
}

HRESULT CdmRequest::get_Attribute(LONG Id, VARIANT* Value) {
    if (!Value)
        return E_POINTER;
    VariantInit(Value);
    const auto found = m_Data.Attributes.find(Id);
    return found != m_Data.Attributes.end() ? VariantCopy(Value, &found->second.Get()) : S_OK;
}

HRESULT CdmRequest::put_Attribute(LONG Id, VARIANT Value) { return KeepCarried(m_Data.Attributes, Id, Value); }

// The properties

HRESULT CdmRequest::get_Id(LONG* Value) { return Give(Id, Value); }
HRESULT CdmRequest::put_Id(LONG Value) { return Keep(Id, Value); }
HRESULT CdmRequest::get_Type(LONG* Value) { return Give(Type, Value); }
HRESULT CdmRequest::get_UserData(LONG* Value) { return Give(UserData, Value); }
HRESULT CdmRequest::put_UserData(LONG Value) { return Keep(UserData, Value); }
HRESULT CdmRequest::get_QueryType(LONG* Value) { return Give(QueryType, Value); }
HRESULT CdmRequest::get_SymbolListType(LONG* Value) { return Give(SymbolListType, Value); }
HRESULT CdmRequest::get_Datafeed(LONG Mode, LONG* Value) { return Give(Datafeed, Value, Mode); }
HRESULT CdmRequest::put_Datafeed(LONG Mode, LONG Value) { return Keep(Datafeed, Value, Mode); }
HRESULT CdmRequest::get_Symbol(LONG Mode, LONG* Value) { return Give(Symbol, Value, Mode); }
HRESULT CdmRequest::put_Symbol(LONG Mode, LONG Value) { return Keep(Symbol, Value, Mode); }
HRESULT CdmRequest::get_SymbolName(LONG Mode, BSTR* Value) { return Give(SymbolName, Value, Mode); }
HRESULT CdmRequest::put_SymbolName(LONG Mode, BSTR Value) { return Keep(SymbolName, Value, Mode); }
HRESULT CdmRequest::get_SymbolRoot(LONG Mode, BSTR* Value) { return Give(SymbolRoot, Value, Mode); }
HRESULT CdmRequest::put_SymbolRoot(LONG Mode, BSTR Value) { return Keep(SymbolRoot, Value, Mode); }
HRESULT CdmRequest::get_Description(LONG Mode, BSTR* Value) { return Give(Description, Value, Mode); }
HRESULT CdmRequest::put_Description(LONG Mode, BSTR Value) { return Keep(Description, Value, Mode); }
HRESULT CdmRequest::get_Category(LONG Mode, LONG* Value) { return Give(Category, Value, Mode); }
HRESULT CdmRequest::put_Category(LONG Mode, LONG Value) { return Keep(Category, Value, Mode); }
HRESULT CdmRequest::get_PriceScale(LONG Mode, LONG* Value) { return Give(PriceScale, Value, Mode); }
HRESULT CdmRequest::put_PriceScale(LONG Mode, LONG Value) { return Keep(PriceScale, Value, Mode); }
HRESULT CdmRequest::get_Resolution(LONG* Value) { return Give(Resolution, Value); }
HRESULT CdmRequest::put_Resolution(LONG Value) { return Keep(Resolution, Value); }
HRESULT CdmRequest::get_ResolutionSize(LONG* Value) { return Give(ResolutionSize, Value); }
HRESULT CdmRequest::put_ResolutionSize(LONG Value) { return Keep(ResolutionSize, Value); }
HRESULT CdmRequest::get_FieldType(LONG* Value) { return Give(FieldType, Value); }
HRESULT CdmRequest::put_FieldType(LONG Value) { return Keep(FieldType, Value); }
HRESULT CdmRequest::get_Sessions(BSTR* Value) { return Give(Sessions, Value); }
HRESULT CdmRequest::put_Sessions(BSTR Value) { return Keep(Sessions, Value); }
HRESULT CdmRequest::get_StartDate(LONG* Value) { return Give(StartDate, Value); }
HRESULT CdmRequest::get_FinishDate(LONG* Value) { return Give(FinishDate, Value); }
HRESULT CdmRequest::get_BackType(LONG* Value) { return Give(BackType, Value); }
HRESULT CdmRequest::get_BackCapacity(LONG* Value) { return Give(BackCapacity, Value); }
HRESULT CdmRequest::get_TimeZone(LONG* Value) { return Give(TimeZone, Value); }
HRESULT CdmRequest::get_SessionsTZI(BSTR* Value) { return Give(SessionsTZI, Value); }
HRESULT CdmRequest::put_SessionsTZI(BSTR Value) { return Keep(SessionsTZI, Value); }
HRESULT CdmRequest::get_ExchangeTZI(BSTR* Value) { return Give(ExchangeTZI, Value); }
HRESULT CdmRequest::put_ExchangeTZI(BSTR Value) { return Keep(ExchangeTZI, Value); }
HRESULT CdmRequest::get_ExactMatch(LONG* Value) { return Give(ExactMatch, Value); }
HRESULT CdmRequest::get_Expired(LONG* Value) { return Give(Expired, Value); }
HRESULT CdmRequest::get_BrowseDirection(LONG* Value) { return Give(BrowseDirection, Value); }
HRESULT CdmRequest::get_BrowseType(LONG* Value) { return Give(BrowseType, Value); }
HRESULT CdmRequest::get_GroupBy(LONG* Value) { return Give(GroupBy, Value); }
HRESULT CdmRequest::get_Contents(LONG* Value) { return Give(Contents, Value); }
HRESULT CdmRequest::put_Contents(LONG Value) { return Keep(Contents, Value); }
HRESULT CdmRequest::get_HolidayId(LONG* Value) { return Give(HolidayId, Value); }
HRESULT CdmRequest::put_HolidayId(LONG Value) { return Keep(HolidayId, Value); }
HRESULT CdmRequest::get_SettingId(LONG* Value) { return Give(SettingId, Value); }
HRESULT CdmRequest::put_SettingId(LONG Value) { return Keep(SettingId, Value); }
HRESULT CdmRequest::get_SessionId(LONG* Value) { return Give(SessionId, Value); }
HRESULT CdmRequest::put_SessionId(LONG Value) { return Keep(SessionId, Value); }
HRESULT CdmRequest::get_SessionType(LONG* Value) { return Give(SessionType, Value); }
HRESULT CdmRequest::put_SessionType(LONG Value) { return Keep(SessionType, Value); }
HRESULT CdmRequest::get_ExchangeId(LONG Mode, LONG* Value) { return Give(ExchangeId, Value, Mode); }
HRESULT CdmRequest::put_ExchangeId(LONG Mode, LONG Value) { return Keep(ExchangeId, Value, Mode); }
HRESULT CdmRequest::get_ExchangeName(LONG Mode, BSTR* Value) { return Give(ExchangeName, Value, Mode); }
HRESULT CdmRequest::put_ExchangeName(LONG Mode, BSTR Value) { return Keep(ExchangeName, Value, Mode); }
HRESULT CdmRequest::get_IncludeDeleted(LONG* Value) { return Give(IncludeDeleted, Value); }
HRESULT CdmRequest::put_IncludeDeleted(LONG Value) { return Keep(IncludeDeleted, Value); }
HRESULT CdmRequest::get_ActiveOnly(LONG* Value) { return Give(ActiveOnly, Value); }
HRESULT CdmRequest::put_ActiveOnly(LONG Value) { return Keep(ActiveOnly, Value); }
HRESULT CdmRequest::get_Gap(LONG* Value) { return Give(Gap, Value); }
HRESULT CdmRequest::put_Gap(LONG Value) { return Keep(Gap, Value); }
HRESULT CdmRequest::get_HourType(LONG* Value) { return Give(HourType, Value); }
HRESULT CdmRequest::put_HourType(LONG Value) { return Keep(HourType, Value); }
HRESULT CdmRequest::get_RequestType(LONG* Value) { return Give(RequestType, Value); }
HRESULT CdmRequest::put_RequestType(LONG Value) { return Keep(RequestType, Value); }
HRESULT CdmRequest::get_LIBResolution(LONG* Value) { return Give(LIBResolution, Value); }
HRESULT CdmRequest::put_LIBResolution(LONG Value) { return Keep(LIBResolution, Value); }
HRESULT CdmRequest::get_LIBResolutionSize(LONG* Value) { return Give(LIBResolutionSize, Value); }
HRESULT CdmRequest::put_LIBResolutionSize(LONG Value) { return Keep(LIBResolutionSize, Value); }
HRESULT CdmRequest::get_LIBStartDate(LONG* Value) { return Give(LIBStartDate, Value); }
HRESULT CdmRequest::get_LIBStartTime(LONG* Value) { return Give(LIBStartTime, Value); }
HRESULT CdmRequest::get_LIBEndDate(LONG* Value) { return Give(LIBEndDate, Value); }
HRESULT CdmRequest::get_LIBEndTime(LONG* Value) { return Give(LIBEndTime, Value); }
HRESULT CdmRequest::get_LIBSkipIdenticalTicks(LONG* Value) { return Give(LIBSkipIdenticalTicks, Value); }
HRESULT CdmRequest::get_DataFeedName(BSTR* Value) { return Give(DataFeedName, Value); }
HRESULT CdmRequest::put_DataFeedName(BSTR Value) { return Keep(DataFeedName, Value); }
HRESULT CdmRequest::get_ChartType(LONG* Value) { return Give(ChartType, Value); }
HRESULT CdmRequest::put_ChartType(LONG Value) { return Keep(ChartType, Value); }
HRESULT CdmRequest::get_IsCF_Data(LONG* Value) { return Give(IsCF_Data, Value); }
HRESULT CdmRequest::get_BuildOnVolume(LONG* Value) { return Give(BuildOnVolume, Value); }

} // namespace IDM_dmudfcom
