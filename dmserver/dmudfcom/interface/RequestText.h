// A request as one line of text: what IdmRequest::Assign takes and IdmRequest::Request gives.
//
// This is how a request gets the properties that have no put, Type among them:
//
//     tagRequestData data;
//     data.Number(ERequestProperty::Type) = 2;
//     data.Text(ERequestProperty::SymbolName, mode) = L"ESZ5";
//     request->Assign(CBstr(MakeRequestText(data)).Get());
//
// The text holds the whole request, Attributes and the data of Supplement and Send with it, but not the sink of
// Advise. It is base64 of sealed bytes (Carriers.proto): a text that was cut or altered is refused as a whole.
//
// Ownership: values are copied in and out. Threads: any.
#pragma once

#include "platform/com/variant.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace IDM_dmudfcom {

// The properties of IdmRequest that hold a number or a text. The numbers are the dispatch ids.
enum class ERequestProperty : LONG {
    Id = 1,
    Type = 2,
    UserData = 3,
    QueryType = 8,
    SymbolListType = 9,
    Datafeed = 10,
    Symbol = 11,
    SymbolName = 12,
    SymbolRoot = 13,
    Description = 14,
    Category = 15,
    PriceScale = 16,
    Resolution = 17,
    ResolutionSize = 18,
    FieldType = 19,
    Sessions = 20,
    StartDate = 21,
    FinishDate = 22,
    BackType = 23,
    BackCapacity = 24,
    TimeZone = 25,
    SessionsTZI = 26,
    ExchangeTZI = 27,
    ExactMatch = 28,
    Expired = 29,
    BrowseDirection = 30,
    BrowseType = 31,
    GroupBy = 32,
    Contents = 33,
    HolidayId = 36,
    SettingId = 37,
    SessionId = 38,
    SessionType = 39,
    ExchangeId = 40,
    ExchangeName = 41,
    IncludeDeleted = 42,
    ActiveOnly = 43,
    Gap = 44,
    HourType = 45,
    RequestType = 46,
    LIBResolution = 47,
    LIBResolutionSize = 48,
    LIBStartDate = 49,
    LIBStartTime = 50,
    LIBEndDate = 51,
    LIBEndTime = 52,
    LIBSkipIdenticalTicks = 53,
    DataFeedName = 54,
    ChartType = 55,
    IsCF_Data = 57,
    BuildOnVolume = 58,
};

// Whether the property holds a text, and whether it takes a Mode.
bool IsTextProperty(ERequestProperty property);
bool IsModeProperty(ERequestProperty property);

// All that a request holds. What is not in a map was never written.
struct tagRequestData {
    using Key = std::pair<ERequestProperty, LONG>; // with the Mode; 0 for a property that takes none

    std::map<Key, LONG> Numbers;
    std::map<Key, std::wstring> Texts;
    std::map<LONG, platform::CVariant> Attributes;
    std::map<LONG, platform::CVariant> Supplements; // by Mode
    platform::CVariant Sent;                        // VT_EMPTY when nothing was sent

    LONG& Number(ERequestProperty property, LONG mode = 0) { return Numbers[{property, mode}]; }
    std::wstring& Text(ERequestProperty property, LONG mode = 0) { return Texts[{property, mode}]; }
};

// Throws std::invalid_argument, whose text names the value at fault: a text for a property of numbers or the other
// way round, a Mode for a property that takes none, text that is no Unicode, a VARIANT that cannot be carried.
std::wstring MakeRequestText(const tagRequestData& data);

// Nothing for a text that MakeRequestText did not make.
std::optional<tagRequestData> ReadRequestText(std::wstring_view text);

// Numbers, BSTR, VARIANT_BOOL, dates, VT_EMPTY, VT_NULL and arrays of bytes can; objects and other arrays cannot.
bool CanBeCarried(const VARIANT& value);

} // namespace IDM_dmudfcom
