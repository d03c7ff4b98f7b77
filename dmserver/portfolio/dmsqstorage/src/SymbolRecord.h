// A symbol as it is written: the columns of PORTFOLIO, and of its twin DICTIONARY, behind the key and in their
// order.
#pragma once

#include "platform/com/types.h"

namespace sqStorage {

// Every other category is carried without a meaning.
enum tagDMCATEGORIES : LONG {
    // May take its description from the dictionary of roots.
    categoryRooted = 0,
    // Both stand for none in a request and are never stored.
    categoryNone = 254,
    categoryAny = -1,
};

// Where a symbol's price setting comes from.
enum tagSETTINGTYPE : LONG {
    settingCustom = 0, // its own row of SETTINGS, which goes with it
    settingFromExchange = 1,
    settingFromRoot = 2,
};

// Where a symbol's trading session comes from.
enum tagSESSIONTYPE : LONG {
    sessionCustom = 0, // its own row of SESSIONS, which goes with it
    sessionFromExchange = 1,
    sessionTemplate = 2, // shared
    sessionFromRoot = 3,
};

// Whose clock a trading session goes by.
enum tagTIMEZONE : LONG {
    zoneLocal = 0, // that of this computer
    zoneGmt = 1,
    zoneExchange = 2,
};

// A client's mark on the zone of an exchange: every value is kept, and none has a meaning here.
enum tagEXCHANGETIMEZONE : LONG {};

// Texts belong to the caller. Dates are day numbers; what lies before 1 January 1900 is stored as that day.
struct tagSymbol {
    const wchar_t* SymbolName = nullptr;
    const wchar_t* SymbolRoot = nullptr;
    const wchar_t* Description = nullptr;
    const wchar_t* CUSIP = nullptr; // goes into statements as it is
    LONG Category = 0;              // tagDMCATEGORIES
    LONG Datafeed = 0;
    LONG Exchange = 0;
    LONG SettingType = 0; // tagSETTINGTYPE
    LONG Setting = 0;
    LONG SessionType = 0; // tagSESSIONTYPE
    LONG CustomSession = 0;
    LONG TemplateSession = 0;
    LONG ContractMonth = 0;
    LONG ContractYear = 0;
    double StrikePrice = 0;
    LONG CallPut = 0;
    LONG Margin = 0;
    LONG ExpirationDate = 0;
    LONG Expired = 0;
    LONG ExpirationRule = 0;
    LONG FirstNoticeDate = 0;
    LONG Delivery = 0;
};

} // namespace sqStorage
