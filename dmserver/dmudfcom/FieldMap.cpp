#include "FieldMap.h"

#include <algorithm>
#include <array>

namespace IDM_dmudfcom {

namespace {

using enum EColumnType;

// Whole numbers are LONG even where the database has a smaller type: a count or a key may come under such a name.
constexpr std::array Map{
    tagFieldInfo{fieldPriceScale, "PRICE_SCALE", Long},
    tagFieldInfo{fieldExchangeName, "EXCHANGE_NAME", Text, 12},
    tagFieldInfo{fieldSymbolName, "SYMBOL_NAME", Text, 31},
    tagFieldInfo{fieldStrikePrice, "STRIKE_PRICE", Double},
    tagFieldInfo{fieldDescription, "DESCRIPTION", Text, 255},
    tagFieldInfo{fieldDelivery, "DELIVERY", Date},
    tagFieldInfo{fieldExpirationDate, "EXPIRATION_DATE", Date},
    tagFieldInfo{fieldCategory, "CATEGORY", Long},
    tagFieldInfo{fieldCallPut, "CALL_PUT", Long},
    tagFieldInfo{fieldCusip, "CUSIP", Text, 12},
    tagFieldInfo{fieldDataFeed, "DATA_FEED", Long},
    tagFieldInfo{fieldDataFeedName, "DATA_FEED_NAME", Text, 31},
    tagFieldInfo{fieldSymbolRoot, "SYMBOL_ROOT", Text, 31},
    tagFieldInfo{fieldFirstNoticeDate, "FIRST_NOTICE_DATE", Date},
    tagFieldInfo{fieldPointValue, "POINT_VALUE", Double},
    tagFieldInfo{fieldMinMovement, "MIN_MOVEMENT", Double},
    tagFieldInfo{fieldSessionsString, "SESSIONS_STRING", Text, 512},
    tagFieldInfo{fieldActive, "ACTIVE", Long},
    tagFieldInfo{fieldStrikePriceName, "STRIKE_PRICE_NAME", Text, 32},
    tagFieldInfo{fieldMargin, "MARGIN", Long},
    tagFieldInfo{fieldDailyLimit, "DAILY_LIMIT", Long},
    tagFieldInfo{fieldContractMonth, "CONTRACT_MONTH", Long},
    tagFieldInfo{fieldContractYear, "CONTRACT_YEAR", Long},
    tagFieldInfo{fieldExpired, "EXPIRED", Long},
    tagFieldInfo{fieldExchangeGmt, "EXCHANGE_GMT", Long},
    tagFieldInfo{fieldLocalGmt, "LOCAL_GMT", Long},
    tagFieldInfo{fieldDataFeedDllName, "DATA_FEED_DLL_NAME", Text, 255},
    tagFieldInfo{fieldDataFeedShortName, "DATA_FEED_SHORT_NAME", Text, 31},
    tagFieldInfo{fieldClsid, "CLSID", Text, 63},
    tagFieldInfo{fieldHoliday, "HOLIDAY", Long},
    tagFieldInfo{fieldHolidayStartDate, "HOLIDAY_START_DATE", Date},
    tagFieldInfo{fieldSetting, "SETTING", Long},
    tagFieldInfo{fieldSettingType, "SETTING_TYPE", Long},
    tagFieldInfo{fieldSession, "SESSION", Long},
    tagFieldInfo{fieldSessionType, "SESSION_TYPE", Long},
    tagFieldInfo{fieldCustomSession, "CUSTOM_SESSION", Long},
    tagFieldInfo{fieldTemplateSession, "TEMPLATE_SESSION", Long},
    tagFieldInfo{fieldTimeZone, "TIME_ZONE", Long},
    tagFieldInfo{fieldSessionsTimeZoneInformation, "SESSIONS_TIME_ZONE_INFORMATION", Text, 128},
    tagFieldInfo{fieldExchange, "EXCHANGE", Long},
    tagFieldInfo{fieldExchangeTimeZoneInformation, "EXCHANGE_TIME_ZONE_INFORMATION", Text, 128},
    tagFieldInfo{fieldSymbol, "SYMBOL", Long},
    tagFieldInfo{fieldGeneratedId, "GENERATED_ID", Long},
    tagFieldInfo{fieldDeleted, "DELETED", Long},
    tagFieldInfo{fieldStartDay, "START_DAY", Long},
    tagFieldInfo{fieldStartTime, "START_TIME", Long},
    tagFieldInfo{fieldEndDay, "END_DAY", Long},
    tagFieldInfo{fieldEndTime, "END_TIME", Long},
    tagFieldInfo{fieldValue5, "VALUE5", Long},
    tagFieldInfo{fieldValue6, "VALUE6", Long},
    tagFieldInfo{fieldValue7, "VALUE7", Long},
    tagFieldInfo{fieldCustomSetting, "CUSTOM_SETTING", Long},
    tagFieldInfo{fieldExpirationRule, "EXPIRATION_RULE", Long},
    tagFieldInfo{fieldName, "NAME", Text, 126},
    tagFieldInfo{fieldOffset, "OFFSET", Long},
    tagFieldInfo{fieldOffsetType, "OFFSETTYPE", Long},
    tagFieldInfo{fieldExpirationDateMethod, "EXPIRATIONDATEMETHOD", Long},
    tagFieldInfo{fieldByDaysNumber, "BYDAYSNUMBER", Long},
    tagFieldInfo{fieldByDaysMonthType, "BYDAYSMONTHTYPE", Long},
    tagFieldInfo{fieldByDaysOfWeekNumber, "BYDAYSOFWEEKNUMBER", Long},
    tagFieldInfo{fieldDayOfWeek, "DAYOFWEEK", Long},
    tagFieldInfo{fieldByDaysOfWeekMonthType, "BYDAYSOFWEEKMONTHTYPE", Long},
    tagFieldInfo{fieldExpirationMonthsMask, "EXPIRATION_MONTHS_MASK", Long},
    tagFieldInfo{fieldCf, "CF", Long},
    tagFieldInfo{fieldCurrencyCode, "CURRENCY_CODE", Long},
    tagFieldInfo{fieldId, "ID", Long},
    tagFieldInfo{fieldCfCode, "CF_CODE", Text, 126},
    tagFieldInfo{fieldPrimaryInstance, "PRIMARY_INSTANCE", Long},
    tagFieldInfo{fieldActivated, "ACTIVATED", Long},
    tagFieldInfo{fieldAscii, "ASCII", Long},
    tagFieldInfo{fieldMapId, "MAP_ID", Text, 63},
    tagFieldInfo{fieldUseDaylight, "USE_DAYLIGHT", Long},
    tagFieldInfo{fieldBias, "BIAS", Long},
    tagFieldInfo{fieldStandardBias, "STANDARD_BIAS", Long},
    tagFieldInfo{fieldStandardDayOfWeek, "STANDARD_DAY_OF_WEEK", Long},
    tagFieldInfo{fieldStandardDay, "STANDARD_DAY", Long},
    tagFieldInfo{fieldStandardMonth, "STANDARD_MONTH", Long},
    tagFieldInfo{fieldStandardTime, "STANDARD_TIME", Time},
    tagFieldInfo{fieldDaylightBias, "DAYLIGHT_BIAS", Long},
    tagFieldInfo{fieldDaylightDayOfWeek, "DAYLIGHT_DAY_OF_WEEK", Long},
    tagFieldInfo{fieldDaylightDay, "DAYLIGHT_DAY", Long},
    tagFieldInfo{fieldDaylightMonth, "DAYLIGHT_MONTH", Long},
    tagFieldInfo{fieldDaylightTime, "DAYLIGHT_TIME", Time},
    tagFieldInfo{fieldSessionName, "SESSION_NAME", Text, 63},
    tagFieldInfo{fieldHolidayName, "HOLIDAY_NAME", Text, 63},
    tagFieldInfo{fieldHolidayDescription, "HOLIDAY_DESCRIPTION", Text, 63},
    tagFieldInfo{fieldHolidayEndDate, "HOLIDAY_END_DATE", Date},
    tagFieldInfo{fieldFileName, "FILE_NAME", Text, 255},
    tagFieldInfo{fieldFileType, "FILE_TYPE", Long},
    tagFieldInfo{fieldBarInterval, "BAR_INTERVAL", Long},
    tagFieldInfo{fieldHeaderLines, "HEADER_LINES", Long},
    tagFieldInfo{fieldFieldSeparator, "FIELD_SEPARATOR", Text, 15},
    tagFieldInfo{fieldDecimalSeparator, "DECIMAL_SEPARATOR", Text, 15},
    tagFieldInfo{fieldDateFormat, "DATE_FORMAT", Text, 31},
    tagFieldInfo{fieldTimeFormat, "TIME_FORMAT", Text, 31},
    tagFieldInfo{fieldFileTimeZone, "FILE_TIME_ZONE", Long},
    tagFieldInfo{fieldStartDate, "START_DATE", Date},
    tagFieldInfo{fieldEndDate, "END_DATE", Date},
    tagFieldInfo{fieldFlags, "FLAGS", Long},
    tagFieldInfo{fieldFieldOrder, "FIELD_ORDER", Long},
    tagFieldInfo{fieldFieldType, "FIELD_TYPE", Long},
    tagFieldInfo{fieldFieldName, "FIELD_NAME", Text, 63},
    tagFieldInfo{fieldSchemaVersion, "SCHEMA_VERSION", Long},
};

consteval auto SortByName() {
    std::array<const tagFieldInfo*, Map.size()> sorted{};
    std::ranges::transform(Map, sorted.begin(), [](const tagFieldInfo& field) { return &field; });
    std::ranges::sort(sorted, [](const tagFieldInfo* left, const tagFieldInfo* right) {
        return CompareNames(left->Name, right->Name) < 0;
    });
    return sorted;
}

constexpr std::array ByName = SortByName();

static_assert(std::ranges::adjacent_find(Map, std::ranges::greater_equal{}, &tagFieldInfo::Id) == Map.end(),
              "the ids ascend, none twice");
static_assert(std::ranges::adjacent_find(ByName, {}, &tagFieldInfo::Name) == ByName.end(), "no name twice");
static_assert(Map.back().Id < FirstUnmappedField);

} // namespace

std::span<const tagFieldInfo> FieldMap() { return Map; }

const tagFieldInfo* FindField(LONG id) {
    const auto found = std::ranges::lower_bound(Map, id, {}, &tagFieldInfo::Id);
    return found != Map.end() && found->Id == id ? &*found : nullptr;
}

const tagFieldInfo* FindField(std::string_view name) {
    const auto found = std::lower_bound(
        ByName.begin(), ByName.end(), name,
        [](const tagFieldInfo* field, std::string_view sought) { return CompareNames(field->Name, sought) < 0; });
    return found != ByName.end() && IsSameName((*found)->Name, name) ? *found : nullptr;
}

LONG UnmappedFieldId(std::string_view name) {
    std::uint32_t hash = 2166136261U;
    for (const char c : name)
        hash = (hash ^ static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c)) * 16777619U;
    return FirstUnmappedField + static_cast<LONG>(hash % FirstUnmappedField);
}

bool IsSameName(std::string_view left, std::string_view right) {
    return left.size() == right.size() && CompareNames(left, right) == 0;
}

} // namespace IDM_dmudfcom
