// The many arguments of a symbol, with values for those that a test does not care for.
#pragma once

#include "StorageHost.h"

#include <optional>
#include <string>

namespace tests {

// The arguments of an insert or update; a text that is not there goes in as null.
struct tagSymbolArguments {
    std::optional<std::wstring> SymbolName = L"ESZ09";
    std::optional<std::wstring> SymbolRoot = L"ES";
    std::optional<std::wstring> Description = L"E-mini";
    std::optional<std::wstring> CUSIP = L"78378X107";
    LONG Category = 1;
    LONG Datafeed = 7;
    LONG Exchange = 5;
    LONG SettingType = 1;
    LONG Setting = 0;
    LONG SessionType = 1;
    LONG CustomSession = 0;
    LONG TemplateSession = 0;
    LONG ContractMonth = 12;
    LONG ContractYear = 2009;
    double StrikePrice = 0;
    LONG CallPut = 0;
    LONG Margin = 0;
    LONG ExpirationDate = 40165; // 18 December 2009
    LONG Expired = 0;
    LONG ExpirationRule = 0;
    LONG FirstNoticeDate = 2; // 1 January 1900
    LONG Delivery = 2;
};

inline CBstr OrNull(const std::optional<std::wstring>& text) { return text ? CBstr(*text) : CBstr(); }

// Calls `method` with all arguments; what stands before them and behind them is the caller's.
template <class Method, class... Behind>
HRESULT CallWith(const tagSymbolArguments& a, Method&& method, Behind... behind) {
    return method(OrNull(a.SymbolName).Get(), OrNull(a.SymbolRoot).Get(), OrNull(a.Description).Get(),
                  OrNull(a.CUSIP).Get(), a.Category, a.Datafeed, a.Exchange, a.SettingType, a.Setting,
                  a.SessionType, a.CustomSession, a.TemplateSession, a.ContractMonth, a.ContractYear, a.StrikePrice,
                  a.CallPut, a.Margin, a.ExpirationDate, a.Expired, a.ExpirationRule, a.FirstNoticeDate, a.Delivery,
                  behind...);
}

inline HRESULT InsertPortfolio(IqxStorage& storage, const tagSymbolArguments& arguments, LONG* key) {
    return CallWith(
        arguments, [&](auto... all) { return storage.InsertPortfolio(all...); }, key);
}
inline HRESULT UpdatePortfolio(IqxStorage& storage, LONG key, const tagSymbolArguments& arguments) {
    return CallWith(arguments, [&](auto... all) { return storage.UpdatePortfolio(key, all...); });
}
inline HRESULT InsertDictionary(IqxStorage& storage, const tagSymbolArguments& arguments, LONG* key) {
    return CallWith(
        arguments, [&](auto... all) { return storage.InsertDictionary(all...); }, key);
}
inline HRESULT UpdateDictionary(IqxStorage& storage, LONG key, const tagSymbolArguments& arguments) {
    return CallWith(arguments, [&](auto... all) { return storage.UpdateDictionary(key, all...); });
}

} // namespace tests
