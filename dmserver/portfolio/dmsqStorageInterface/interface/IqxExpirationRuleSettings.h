// Expiration rules: named recipes for a contract's last trading day.
//
// WeekNumber carries a weekday, 0 Sunday to 6 Saturday. The numbers are stored as they are given.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IqxExpirationRuleSettings : IDispatch {
    virtual HRESULT SelectExpirationRule(IdmRequest* pRequest, IdmTable* pAnswer) = 0;
    virtual HRESULT InsertExpirationRule(BSTR RuleName, LONG Offset, LONG OffsetType, LONG ExpirationDateMethod,
                                         LONG ByDaysNumber, LONG ByDaysMonthType, LONG ByDaysOfWeekNumber,
                                         LONG WeekNumber, LONG ByDaysOfWeekMonthType, LONG* RuleID) = 0;
    virtual HRESULT UpdateExpirationRule(LONG RuleID, BSTR RuleName, LONG Offset, LONG OffsetType,
                                         LONG ExpirationDateMethod, LONG ByDaysNumber, LONG ByDaysMonthType,
                                         LONG ByDaysOfWeekNumber, LONG WeekNumber, LONG ByDaysOfWeekMonthType) = 0;
    virtual HRESULT DeleteExpirationRule(LONG RuleID, LONG* IsDeleted) = 0;

protected:
    ~IqxExpirationRuleSettings() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxExpirationRuleSettings> {
    static constexpr GUID Uuid = MakeGuid("378c46d8-3fd9-4189-a9ea-4e172d1a7da6");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxExpirationRuleSettings> {
    using IqxExpirationRuleSettings = IDM_qxStorage::IqxExpirationRuleSettings;
    static constexpr std::array Methods{
        Method<&IqxExpirationRuleSettings::SelectExpirationRule>(1, L"SelectExpirationRule", Optional(L"pRequest"),
                                                                 L"pAnswer"),
        Method<&IqxExpirationRuleSettings::InsertExpirationRule>(
            2, L"InsertExpirationRule", L"RuleName", L"Offset", L"OffsetType", L"ExpirationDateMethod",
            L"ByDaysNumber", L"ByDaysMonthType", L"ByDaysOfWeekNumber", L"WeekNumber", L"ByDaysOfWeekMonthType",
            L"RuleID"),
        Method<&IqxExpirationRuleSettings::UpdateExpirationRule>(
            3, L"UpdateExpirationRule", L"RuleID", L"RuleName", L"Offset", L"OffsetType", L"ExpirationDateMethod",
            L"ByDaysNumber", L"ByDaysMonthType", L"ByDaysOfWeekNumber", L"WeekNumber", L"ByDaysOfWeekMonthType"),
        Method<&IqxExpirationRuleSettings::DeleteExpirationRule>(4, L"DeleteExpirationRule", L"RuleID",
                                                                 L"IsDeleted"),
    };
};

} // namespace platform
