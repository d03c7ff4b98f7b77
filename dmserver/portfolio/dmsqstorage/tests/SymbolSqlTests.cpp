// The filtered select of symbols, as a statement.
#include "SelectStatements.h"
#include "StorageHost.h"
#include "diagnostics/tests/recorder/Recorder.h"

#include <gmock/gmock.h>
#include <stdexcept>

namespace {

using namespace tests;
using testing::ElementsAre;

constexpr LONG Mode = 3;

class SymbolSql : public testing::Test {
protected:
    SymbolSql() {
        Recorder::Clear();
        // A request in which nothing is written asks for category 0.
        m_Request->put_Category(Mode, -1);
    }

    std::wstring Statement(int full = 0, const wchar_t* table = L"PORTFOLIO") const {
        wchar_t sql[1024];
        sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 1024, table, full);
        return sql;
    }
    // What stands behind the join.
    std::wstring Filters() const {
        const std::wstring sql = Statement();
        const std::wstring join = L" WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED";
        const std::size_t at = sql.find(join);
        EXPECT_NE(sql.npos, at);
        return sql.substr(at + join.size());
    }
    void PutName(const std::wstring& name) { m_Request->put_SymbolName(Mode, CBstr(name).Get()); }
    void PutDescription(const std::wstring& text) { m_Request->put_Description(Mode, CBstr(text).Get()); }

    CComPtr<IdmRequest> m_Request = NewRequest();
};

TEST_F(SymbolSql, ShortAndFullColumns) {
    EXPECT_EQ(
        L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.CATEGORY,P.DESCRIPTION,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
        L"CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.EXPIRATION_DATE,E.EXCHANGE_NAME "
        L"FROM PORTFOLIO P, EXCHANGES E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED",
        Statement(0));
    EXPECT_EQ(
        L"SELECT P.SYMBOL,P.SYMBOL_NAME,P.SYMBOL_ROOT,P.DESCRIPTION,P.CUSIP,P.CATEGORY,P.DATA_FEED,"
        L"D.DATA_FEED_NAME,P.EXCHANGE,P.SETTING_TYPE,P.SETTING,P.SESSION_TYPE,P.CUSTOM_SESSION,"
        L"P.TEMPLATE_SESSION,P.CONTRACT_MONTH,P.CONTRACT_YEAR,CAST(P.STRIKE_PRICE AS FLOAT) AS STRIKE_PRICE,"
        L"CAST(P.STRIKE_PRICE AS VARCHAR(32)) AS STRIKE_PRICE_NAME,P.CALL_PUT,P.MARGIN,P.EXPIRATION_DATE,"
        L"P.EXPIRED,P.EXPIRATION_RULE,P.FIRST_NOTICE_DATE,P.DELIVERY,E.EXCHANGE_NAME FROM DICTIONARY P, EXCHANGES "
        L"E, DATA_FEEDS D WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED",
        Statement(7, L"DICTIONARY"));
}

TEST_F(SymbolSql, AKeyIsTheOnlyFilter) {
    PutName(L"ES");
    m_Request->put_Category(Mode, 1);
    m_Request->put_Symbol(Mode, 4711);
    EXPECT_EQ(L" AND P.SYMBOL=4711", Filters());
    m_Request->put_Symbol(Mode, -2);
    EXPECT_EQ(L" AND P.SYMBOL=-2", Filters());
}

TEST_F(SymbolSql, ZeroAndMinusOneAreNoKey) {
    for (const LONG none : {0, -1}) {
        m_Request->put_Symbol(Mode, none);
        EXPECT_EQ(L"", Filters());
    }
}

TEST_F(SymbolSql, AllFiltersStandInOneOrder) {
    m_Request->put_Datafeed(Mode, 7);
    m_Request->put_ExchangeId(Mode, 5);
    m_Request->put_Category(Mode, 1);
    PutName(L"es");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'ES%' AND P.CATEGORY=1 AND P.EXCHANGE=5 AND P.DATA_FEED=7",
              Filters());
}

TEST_F(SymbolSql, ANameIsEscapedAndPutInCapitals) {
    PutName(L"o'x\u0436\u00FC");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'O''X\u0416\u00DC%'", Filters());
}

TEST_F(SymbolSql, WildcardsInANameTakeEffect) {
    PutName(L"e_%z");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'E_%Z%'", Filters());
}

TEST_F(SymbolSql, ADescriptionFiltersOnlyWithoutAUsableName) {
    PutDescription(L"it's");
    EXPECT_EQ(L" AND UPPER(P.DESCRIPTION) STARTING WITH 'IT''S'", Filters());
    PutName(L"es");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE 'ES%'", Filters());
}

TEST_F(SymbolSql, AStarIsNoFilter) {
    PutName(L"*");
    EXPECT_EQ(L"", Filters());
    PutDescription(L"ab");
    EXPECT_EQ(L" AND UPPER(P.DESCRIPTION) STARTING WITH 'AB'", Filters());
    PutDescription(L"*");
    EXPECT_EQ(L"", Filters());
    PutName(L"**");
    EXPECT_EQ(L" AND UPPER(P.SYMBOL_NAME) LIKE '**%'", Filters());
}

TEST_F(SymbolSql, EveryCategoryFromZeroOnFilters) {
    for (const LONG category : {0, 18, 254}) {
        m_Request->put_Category(Mode, category);
        EXPECT_EQ(L" AND P.CATEGORY=" + std::to_wstring(category), Filters());
    }
    m_Request->put_Category(Mode, -1);
    EXPECT_EQ(L"", Filters());
}

TEST_F(SymbolSql, ExchangeAndFeedFilterFromOneOn) {
    for (const LONG none : {0, -1}) {
        m_Request->put_ExchangeId(Mode, none);
        m_Request->put_Datafeed(Mode, none);
        EXPECT_EQ(L"", Filters());
    }
}

TEST_F(SymbolSql, EverythingIsReadAtTheMode) {
    m_Request->put_Symbol(Mode + 1, 4711);
    m_Request->put_SymbolName(Mode + 1, CBstr(L"es").Get());
    m_Request->put_Category(Mode + 1, 1);
    m_Request->put_ExchangeId(Mode + 1, 5);
    m_Request->put_Datafeed(Mode + 1, 7);
    EXPECT_EQ(L"", Filters());
}

TEST_F(SymbolSql, ANullRequestOrTableNameIsReportedAndTheBufferStays) {
    wchar_t sql[] = L"as it was";
    sqStorage::SelectSymbol(Mode, nullptr, sql, 10, L"PORTFOLIO", 0);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request"));
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 10, nullptr, 0);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request", L"TableName"));
    sqStorage::SelectSymbol(Mode, nullptr, sql, 10, nullptr, 0);
    EXPECT_STREQ(L"as it was", sql);
    sqStorage::SelectSymbol(Mode, m_Request.Get(), nullptr, 10, L"PORTFOLIO", 0);
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 0, L"PORTFOLIO", 0);
    EXPECT_STREQ(L"as it was", sql);
}

TEST_F(SymbolSql, TheStatementIsCutAtTheSizeOfTheBuffer) {
    wchar_t sql[21];
    sql[20] = L'!';
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 20, L"PORTFOLIO", 0);
    EXPECT_STREQ(L"SELECT P.SYMBOL,P.SY", (std::wstring(sql) + L"Y").c_str());
    EXPECT_EQ(L'!', sql[20]);
    PutName(std::wstring(900, L'n'));
    EXPECT_EQ(1023U, Statement().size());
}

// However much room the statement has.
TEST_F(SymbolSql, TheFiltersAreCutAt1023CharactersOfTheirOwn) {
    const std::wstring head = Statement(1);
    const std::wstring join = L" WHERE P.EXCHANGE=E.EXCHANGE AND P.DATA_FEED=D.DATA_FEED";
    PutName(std::wstring(950, L'n'));
    m_Request->put_Category(Mode, 1);
    wchar_t sql[4096];
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 4096, L"PORTFOLIO", 1);
    const std::wstring clause = join + L" AND UPPER(P.SYMBOL_NAME) LIKE '" + std::wstring(950, L'N');
    EXPECT_EQ(head.substr(0, head.size() - join.size()) + clause.substr(0, 1023), sql);
    // One that just fits is whole.
    PutName(std::wstring(1023 - join.size() - std::wstring(L" AND UPPER(P.SYMBOL_NAME) LIKE '%'").size(), L'n'));
    m_Request->put_Category(Mode, -1);
    sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 4096, L"PORTFOLIO", 1);
    EXPECT_TRUE(std::wstring_view(sql).ends_with(L"NN%'"));
}

TEST_F(SymbolSql, AFilterHasUpTo1023Characters) {
    const std::size_t around = std::wstring(L"UPPER(P.SYMBOL_NAME) LIKE '%'").size();
    wchar_t sql[4096];
    PutName(std::wstring(1023 - around, L'n'));
    EXPECT_NO_THROW(sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 4096, L"PORTFOLIO", 1));
    PutName(std::wstring(1024 - around, L'n'));
    EXPECT_THROW(sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 4096, L"PORTFOLIO", 1), std::length_error);
}

TEST_F(SymbolSql, AFilterThatOverflowsItsBufferIsRefused) {
    PutName(std::wstring(1100, L'n'));
    wchar_t sql[1024];
    EXPECT_THROW(sqStorage::SelectSymbol(Mode, m_Request.Get(), sql, 1024, L"PORTFOLIO", 0), std::length_error);
}

} // namespace
