#include "SymbolInfoTable.h"

#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"

#include <array>

namespace sqStorage {

namespace {

using namespace IDM_dmudfcom;

constexpr std::array<LONG, 39> SymbolInfoFields{fieldSessionsString,
                                                fieldDescription,
                                                fieldCategory,
                                                fieldCallPut,
                                                fieldExchangeName,
                                                fieldStrikePrice,
                                                fieldStrikePriceName,
                                                fieldExpirationDate,
                                                fieldPriceScale,
                                                fieldPointValue,
                                                fieldMinMovement,
                                                fieldDailyLimit,
                                                fieldFirstNoticeDate,
                                                fieldDelivery,
                                                fieldDataFeedShortName,
                                                fieldDataFeedDllName,
                                                fieldClsid,
                                                fieldActive,
                                                fieldDataFeed,
                                                fieldExchangeGmt,
                                                fieldLocalGmt,
                                                fieldSymbol,
                                                fieldSymbolName,
                                                fieldSymbolRoot,
                                                fieldCusip,
                                                fieldExchange,
                                                fieldExchangeTimeZoneInformation,
                                                fieldSettingType,
                                                fieldSetting,
                                                fieldCustomSetting,
                                                fieldSessionType,
                                                fieldCustomSession,
                                                fieldTemplateSession,
                                                fieldSessionsTimeZoneInformation,
                                                fieldExpirationRule,
                                                fieldContractMonth,
                                                fieldContractYear,
                                                fieldMargin,
                                                fieldExpired};

constexpr std::array<LONG, 24> CustomFutureInfoFields{fieldSessionsString,
                                                      fieldDescription,
                                                      fieldCategory,
                                                      fieldExchangeName,
                                                      fieldPriceScale,
                                                      fieldPointValue,
                                                      fieldMinMovement,
                                                      fieldDailyLimit,
                                                      fieldDataFeed,
                                                      fieldExchangeGmt,
                                                      fieldLocalGmt,
                                                      fieldCf,
                                                      fieldSymbolName,
                                                      fieldSymbolRoot,
                                                      fieldExchange,
                                                      fieldExchangeTimeZoneInformation,
                                                      fieldSettingType,
                                                      fieldSetting,
                                                      fieldCustomSetting,
                                                      fieldSessionType,
                                                      fieldCustomSession,
                                                      fieldTemplateSession,
                                                      fieldSessionsTimeZoneInformation,
                                                      fieldMargin};

constexpr LONG HasStatus = 1;
constexpr LONG StatusBytes = 4;

} // namespace

void FillSymbolInfoTable(IdmTable* Table, const LONG* const Fields, const LONG Count) {
    const BugSlayerUtil::CScope scope;
    LONG FieldCount = 0;
    Table->get_FieldCount(&FieldCount);
    if (!scope.Assert(FieldCount == 0, L"!FieldCount"))
        return;
    for (LONG i = 0; i < Count; ++i)
        scope.Check(Table->AddFieldById(Fields[i], 0, HasStatus, StatusBytes), L"AddFieldById");
}

void FillSymbolInfoTable(IdmTable* Table) {
    FillSymbolInfoTable(Table, SymbolInfoFields.data(), static_cast<LONG>(SymbolInfoFields.size()));
}

void FillCustomFutureInfoTable(IdmTable* Table) {
    FillSymbolInfoTable(Table, CustomFutureInfoFields.data(), static_cast<LONG>(CustomFutureInfoFields.size()));
}

} // namespace sqStorage
