// What a data-feed plug-in needs to add a symbol: the exchange is given by its name.
//
// pVal receives the key of the new symbol or of the one that exists. An unknown exchange adds nothing and leaves it.
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_dmSupplier {

struct IqxAddingSymbol : IDispatch {
    virtual HRESULT AddSymbol(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                              LONG Datafeed, BSTR ExchangeName, LONG ContractMonth, LONG ContractYear,
                              double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate, LONG Expired,
                              LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery, LONG* pVal) = 0;

protected:
    ~IqxAddingSymbol() = default;
};

} // namespace IDM_dmSupplier

namespace platform {

template <>
struct InterfaceTraits<IDM_dmSupplier::IqxAddingSymbol> {
    static constexpr GUID Uuid = MakeGuid("e39ec0b5-117a-405e-b532-495d1af03169");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmSupplier::IqxAddingSymbol> {
    using IqxAddingSymbol = IDM_dmSupplier::IqxAddingSymbol;
    static constexpr std::array Methods{
        Method<&IqxAddingSymbol::AddSymbol>(
            1, L"AddSymbol", L"SymbolName", L"SymbolRoot", L"Description", L"CUSIP", L"Category", L"Datafeed",
            L"ExchangeName", L"ContractMonth", L"ContractYear", L"StrikePrice", L"CallPut", L"Margin",
            L"ExpirationDate", L"Expired", L"ExpirationRule", L"FirstNoticeDate", L"Delivery", L"pVal"),
    };
};

} // namespace platform
