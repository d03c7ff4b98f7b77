// The portfolio's operations for clients that change many symbols: each may keep quiet (isNotify 0), and a whole
// table of symbols is inserted in one statement.
//
// A series of quiet deletions ends with one that is not quiet: it settles what the others left.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IqxStorageSmartNotify : IDispatch {
    virtual HRESULT DeletePortfolioSmart(LONG Symbol, LONG isNotify) = 0;
    virtual HRESULT InsertPortfolioSmart(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                         LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType,
                                         LONG Setting, LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                         LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                         LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                         LONG FirstNoticeDate, LONG Delivery, LONG* Symbol, LONG isNotify) = 0;
    virtual HRESULT UpdatePortfolioSmart(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description,
                                         BSTR CUSIP, LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType,
                                         LONG Setting, LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                         LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                         LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                         LONG FirstNoticeDate, LONG Delivery, LONG isNotify) = 0;
    // Table has the 22 columns behind the key, in their order; OutTable receives one key for each record.
    virtual HRESULT InsertSymbols(IdmTable* Table, IdmTable* OutTable, LONG UpdateExisting) = 0;
    // Tells all sinks of the mask that something changed.
    virtual HRESULT SendNotify(LONG Mask) = 0;

protected:
    ~IqxStorageSmartNotify() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxStorageSmartNotify> {
    static constexpr GUID Uuid = MakeGuid("ab8d2f78-594a-41bb-81c3-e2c2253e5904");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxStorageSmartNotify> {
    using IqxStorageSmartNotify = IDM_qxStorage::IqxStorageSmartNotify;
    static constexpr std::array Methods{
        Method<&IqxStorageSmartNotify::DeletePortfolioSmart>(1, L"DeletePortfolioSmart", L"Symbol", L"isNotify"),
        Method<&IqxStorageSmartNotify::InsertPortfolioSmart>(
            2, L"InsertPortfolioSmart", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category",
            L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery", L"Symbol",
            L"isNotify"),
        Method<&IqxStorageSmartNotify::UpdatePortfolioSmart>(
            3, L"UpdatePortfolioSmart", L"Symbol", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP",
            L"Category", L"Datafeed", L"Exchange", L"SettingType", L"Setting", L"SessionType", L"CustomSession",
            L"TemplateSession", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery", L"isNotify"),
        Method<&IqxStorageSmartNotify::InsertSymbols>(4, L"InsertSymbols", L"Table", L"OutTable",
                                                      L"UpdateExisting"),
        Method<&IqxStorageSmartNotify::SendNotify>(5, L"SendNotify", L"Mask"),
    };
};

} // namespace platform
