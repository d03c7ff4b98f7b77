#include "CallPath.h"
#include "SymbolRecord.h"

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using sqStorage::CStorage;
using sqStorage::tagSymbol;

HRESULT CqxStorageBase::SelectDictionary(LONG Mode, IdmRequest* Request, IdmTable* Table) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this).Run(Request && Table, [&](CStorage& storage) {
        storage.SelectDictionary(Mode, Request, Table);
    });
}

HRESULT CqxStorageBase::InsertDictionary(BSTR SymbolName, BSTR SymbolRoot, BSTR Description, BSTR CUSIP,
                                         LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType,
                                         LONG Setting, LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                         LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                         LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                         LONG FirstNoticeDate, LONG Delivery, LONG* Symbol) {
    const BugSlayerUtil::CScope scope(this);
    const tagSymbol row{SymbolName,    SymbolRoot,     Description,     CUSIP,       Category,      Datafeed,
                        Exchange,      SettingType,    Setting,         SessionType, CustomSession, TemplateSession,
                        ContractMonth, ContractYear,   StrikePrice,     CallPut,     Margin,        ExpirationDate,
                        Expired,       ExpirationRule, FirstNoticeDate, Delivery};
    // Unlike a row of the portfolio, one of the dictionary needs its texts and a setting.
    const bool good = IsNotEmpty(SymbolName) && IsNotEmpty(SymbolRoot) && Setting >= 1 && SettingType >= 0 &&
                      SessionType >= 0 && Exchange > 0;
    return CCallPath(scope, *this).Insert(good, Symbol, [&](CStorage& storage) {
        LONG key = 0;
        storage.InsertSymbol(L"DICTIONARY", row, &key);
        return key;
    });
}

HRESULT CqxStorageBase::DeleteDictionary(LONG Symbol) {
    const BugSlayerUtil::CScope scope(this);
    return CCallPath(scope, *this)
        .Change(
            true, [&] { return ExistsDictionary(Symbol); },
            [&](CStorage& storage) { storage.DeleteDictionary(Symbol); });
}

HRESULT CqxStorageBase::UpdateDictionary(LONG Symbol, BSTR SymbolName, BSTR SymbolRoot, BSTR Description,
                                         BSTR CUSIP, LONG Category, LONG Datafeed, LONG Exchange, LONG SettingType,
                                         LONG Setting, LONG SessionType, LONG CustomSession, LONG TemplateSession,
                                         LONG ContractMonth, LONG ContractYear, double StrikePrice, LONG CallPut,
                                         LONG Margin, LONG ExpirationDate, LONG Expired, LONG ExpirationRule,
                                         LONG FirstNoticeDate, LONG Delivery) {
    const BugSlayerUtil::CScope scope(this);
    const tagSymbol row{SymbolName,    SymbolRoot,     Description,     CUSIP,       Category,      Datafeed,
                        Exchange,      SettingType,    Setting,         SessionType, CustomSession, TemplateSession,
                        ContractMonth, ContractYear,   StrikePrice,     CallPut,     Margin,        ExpirationDate,
                        Expired,       ExpirationRule, FirstNoticeDate, Delivery};
    const bool good = IsNotEmpty(SymbolName) && IsNotEmpty(SymbolRoot) && Setting > 0 && SettingType >= 0 &&
                      SessionType >= 0 && Exchange > 0 && Symbol > 0;
    return CCallPath(scope, *this)
        .Change(
            good, [&] { return ExistsDictionary(Symbol); },
            [&](CStorage& storage) { storage.UpdateSymbol(L"DICTIONARY", Symbol, row); });
}
