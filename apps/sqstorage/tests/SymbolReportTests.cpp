// What a report on one symbol asks the store for.
#include "apps/sqstorage/symbol/SymbolReport.h"

#include "HostFixture.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

class SymbolReport : public tests::HostTest {};

TEST_F(SymbolReport, ReadsTheDetailsOfItsSessionAlone) {
    for (const wchar_t* table : {L"PORTFOLIO", L"EXCHANGES", L"SESSIONS", L"SESSION_DETAILS"})
        Sql(std::wstring(L"DELETE FROM ") + table);
    Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(1,'E',0,72)");
    Sql(L"INSERT INTO SESSIONS VALUES(71,0,'own',2)");
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(71,2,32400,2,61200,0,0,0)");
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(71,1,32400,1,61200,0,0,0)");
    Sql(L"INSERT INTO SESSION_DETAILS VALUES(72,3,32400,3,61200,0,0,0)");
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SYMBOL_NAME,CATEGORY,DATA_FEED,EXCHANGE,SETTING_TYPE,SESSION_TYPE,"
        L"CUSTOM_SESSION) VALUES(100,'S',0,5,1,1,0,71)");
    sqCli::CStore store;
    const auto report = sqCli::ReportSymbol(store, "F", 100);
    const auto times =
        std::ranges::find(report.Values, std::string_view("SESSION_TIMES"), &sqCli::tagReportValue::Column);
    ASSERT_NE(times, report.Values.end());
    EXPECT_THAT(times->Lines, testing::ElementsAre("Mon 09:00-17:00", "Tue 09:00-17:00"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM SESSION_DETAILS WHERE SESSION=71"));
}

} // namespace
