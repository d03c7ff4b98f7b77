#include "CallPath.h"
#include "SymbolRecord.h"

using sqStorage::CStorage;
using sqStorage::tagSymbol;

HRESULT CqxStorageBase::InsertPortfolio(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                        LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                        LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                        LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                        LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                        LONG FirstNoticeDate, LONG Delivery, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    const tagSymbol row{SymbolName,    SymbolRoot,     Description,     CUSIP,       Category,      Datafeed,
                        Exchange,      SettingType,    Setting,         SessionType, CustomSession, TemplateSession,
                        ContractMonth, ContractYear,   StrikePrice,     CallPut,     Margin,        ExpirationDate,
                        Expired,       ExpirationRule, FirstNoticeDate, Delivery};
    const bool good = Setting >= 0 && SettingType >= 0 && SessionType >= 0 && Exchange > 0 && Symbol;
    return CCallPath(scope, *this).Result(good, [&](CStorage& storage) {
        return storage.InsertSymbol(L"PORTFOLIO", row, Symbol);
    });
}

HRESULT CqxStorageBase::DeletePortfolio(LONG Symbol) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Result(true, [&](CStorage& storage) {
        return storage.DeletePortfolio(Symbol) ? S_OK : S_FALSE;
    });
}

HRESULT CqxStorageBase::UpdatePortfolio(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                        LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType, LONG Setting,
                                        LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                        LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                        LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                        LONG FirstNoticeDate, LONG Delivery) {
    const BugSlayerUtil::CScope scope(this);
    const tagSymbol row{SymbolName,    SymbolRoot,     Description,     CUSIP,       Category,      Datafeed,
                        Exchange,      SettingType,    Setting,         SessionType, CustomSession, TemplateSession,
                        ContractMonth, ContractYear,   StrikePrice,     CallPut,     Margin,        ExpirationDate,
                        Expired,       ExpirationRule, FirstNoticeDate, Delivery};
    const bool good = Setting >= 0 && SettingType >= 0 && SessionType >= 0 && Exchange > 0 && Symbol > 0;
    return CCallPath(scope, *this).Run(good, [&](CStorage& storage) { storage.UpdatePortfolio(Symbol, row); });
}

HRESULT CqxStorageBase::AddSymbol(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP, LONG Category,
                                  LONG Datafeed, BSTR ExchangeName, LONG ContractMonth, LONG ContractYear,
                                  double StrikePrice, LONG CallPut, LONG Margin, LONG ExpirationDate, LONG Expired,
                                  LONG ExpirationRule, LONG FirstNoticeDate, LONG Delivery, LONG* pVal) {
    const BugSlayerUtil::CScope scope(this);
    if (!pVal)
        return E_POINTER;
    if (!m_Holder)
        *pVal = 0;
    const tagSymbol row{.SymbolName = SymbolName,
                        .SymbolRoot = SymbolRoot,
                        .Description = Description,
                        .CUSIP = CUSIP,
                        .Category = Category,
                        .Datafeed = Datafeed,
                        .ContractMonth = ContractMonth,
                        .ContractYear = ContractYear,
                        .StrikePrice = StrikePrice,
                        .CallPut = CallPut,
                        .Margin = Margin,
                        .ExpirationDate = ExpirationDate,
                        .Expired = Expired,
                        .ExpirationRule = ExpirationRule,
                        .FirstNoticeDate = FirstNoticeDate,
                        .Delivery = Delivery};
    return CCallPath(scope, *this).Notify([&](CStorage& storage) {
        storage.AddSymbol(row, ExchangeName, pVal);
        return S_OK;
    });
}
