// A symbol's update that came from its feed and not from a user: sinks are told of it by a bit of its own.
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_qxStorage {

struct IqxNativePortfolio : IDispatch {
    virtual HRESULT UpdatePortfolioNative(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description,
                                          BSTR CUSIP, LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType,
                                          LONG Setting, LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                          LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                          LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                          LONG FirstNoticeDate, LONG Delivery) = 0;

protected:
    ~IqxNativePortfolio() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxNativePortfolio> {
    static constexpr GUID Uuid = MakeGuid("6e225d79-39d1-4a9e-995d-41617be15a82");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxNativePortfolio> {
    using IqxNativePortfolio = IDM_qxStorage::IqxNativePortfolio;
    static constexpr std::array Methods{
        Method<&IqxNativePortfolio::UpdatePortfolioNative>(
            1, L"UpdatePortfolioNative", L"Symbol", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP",
            L"Category", L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery"),
    };
};

} // namespace platform
