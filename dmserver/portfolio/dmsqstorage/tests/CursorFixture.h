// Requests with a Type, which a client writes as text.
#pragma once

#include "PortfolioFixture.h"
#include "dmserver/dmudfcom/interface/RequestText.h"

namespace tests {

struct tagCursorRequest {
    LONG Type = 0;
    LONG Mode = 0;
    LONG Symbol = 0;
    LONG Datafeed = 0;
    std::wstring SymbolName = {};
    std::wstring Description = {};
    LONG Category = -1;
    LONG ExchangeId = 0;
    std::wstring SymbolRoot = {};
    LONG ActiveOnly = 0;

    CComPtr<IdmRequest> Make() const {
        using IDM_dmudfcom::ERequestProperty;
        IDM_dmudfcom::tagRequestData data;
        data.Number(ERequestProperty::Type) = Type;
        data.Number(ERequestProperty::Symbol, Mode) = Symbol;
        data.Number(ERequestProperty::Datafeed, Mode) = Datafeed;
        data.Text(ERequestProperty::SymbolName, Mode) = SymbolName;
        data.Text(ERequestProperty::SymbolRoot, Mode) = SymbolRoot;
        data.Text(ERequestProperty::Description, Mode) = Description;
        data.Number(ERequestProperty::Category, Mode) = Category;
        data.Number(ERequestProperty::ExchangeId, Mode) = ExchangeId;
        data.Number(ERequestProperty::ActiveOnly) = ActiveOnly;
        auto request = NewRequest();
        EXPECT_EQ(S_OK, request->Assign(CBstr(IDM_dmudfcom::MakeRequestText(data)).Get()));
        return request;
    }
};

enum ECursorType : LONG { Symbols = 0, DataFeeds = 1, Symbol = 2, CustomFutures = 9, CustomFuture = 10 };

inline constexpr const wchar_t* ShortSymbolHead =
    L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.CATEGORY,P.DESCRIPTION,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
    L"CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.EXPIRATION_DATE,E.EXCHANGE_NAME FROM "
    L"PORTFOLIO P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED";
inline constexpr const wchar_t* CustomFutureHead =
    L"SELECT P.CF,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.CF_CODE,P.DESCRIPTION,P.CATEGORY,P.DATA_FEED,D.DATA_FEED_NAME,"
    L"P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,P.TEMPLATE_SESSION,P.MARGIN,E.EXCHANGE_"
    L"NAME "
    L"FROM CUSTOM_FUTURES P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED";
inline constexpr const wchar_t* DataFeedHead =
    L"SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, ACTIVATED AS \"ACTIVE\", "
    L"DELETED FROM DATA_FEEDS WHERE ";

// In order.
inline const std::vector<LONG> SymbolInfoFields{
    219, 62,   190, 196, 17,  32,   224,  102,  5,    217,  218,  230,  213,  66,   512,  511, 519, 222, 207, 440,
    441, 1016, 31,  209, 199, 1013, 1015, 1005, 1004, 1054, 1007, 1009, 1010, 1012, 1060, 240, 241, 225, 294};
inline const std::vector<LONG> CustomFutureInfoFields{219,  62,   190,  17,   5,    217,  218,  230,
                                                      207,  440,  441,  1102, 31,   209,  1013, 1015,
                                                      1005, 1004, 1054, 1007, 1009, 1010, 1012, 225};

inline std::vector<LONG> FieldIds(const CComPtr<IdmTable>& table) {
    std::vector<LONG> ids;
    LONG count = 0;
    table->get_FieldCount(&count);
    for (LONG i = 0; i < count; ++i) {
        CComPtr<IdmField> field;
        LONG id = 0;
        table->get_Field(i, field.Put());
        field->get_Id(&id);
        ids.push_back(id);
    }
    return ids;
}

} // namespace tests
