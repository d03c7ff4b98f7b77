// A store with two feeds, F and G, two exchanges, E and X, and a template session T; no symbols.
#pragma once

#include "ImportFixture.h"

namespace sqCliTest {

class SymbolSandbox : public ImportSandbox {
protected:
    void SetUp() override {
        Create();
        WriteMarket("m");
        const tagEnd end = Run({"import", (Folder() / "m").string()});
        ASSERT_EQ(end.Status, 0) << end.Errors;
    }

    void WriteMarket(const std::string& folder) {
        Write(folder + "/feeds.csv", "DATA_FEED_NAME,DATA_FEED_SHORT_NAME,DATA_FEED_DLL_NAME,CLSID\nF,f,f.dll,{f}\n"
                                     "G,g,g.dll,{g}\n");
        Write(folder + "/sessions.csv", "SESSION_NAME,SESSION_TYPE,TIME_ZONE\nSE,1,2\nSX,1,1\nT,2,2\n");
        Write(folder + "/session_details.csv",
              "SESSION_NAME,START_DAY,START_TIME,END_DAY,END_TIME\nSE,Mon,09:00,Mon,17:00\nSX,Sun,17:00,Mon,16:00\n"
              "T,Fri,08:00,Fri,09:00:30\n");
        Write(folder + "/exchanges.csv",
              "EXCHANGE_NAME,SESSION_NAME,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,"
              "EXCHANGE_TIME_ZONE_INFORMATION\n"
              "E,SE,100,50,1000,0.25,\"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000\"\n"
              "X,SX,1,1,1,1,\"-540,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000\"\n");
    }

    // Imports symbols with these columns beside the names.
    tagEnd ImportSymbols(const std::string& columns, const std::string& rows,
                         const std::vector<std::string>& options = {}) {
        return Import("symbols.csv", Head(columns) + rows, options);
    }
    static std::string Head(const std::string& columns = {}) {
        return "SYMBOL_NAME,CATEGORY,DATA_FEED_NAME,EXCHANGE_NAME" + (columns.empty() ? "" : "," + columns) + "\n";
    }
    std::string Counts(const std::string& counts) { return Summary("symbols.csv", counts); }

    // symbols.csv of an export.
    std::string Exported() {
        const tagEnd end = Run({"export", (Folder() / "exported").string()});
        EXPECT_EQ(end.Status, 0);
        EXPECT_EQ(end.Errors, "");
        return Read(Folder() / "exported/symbols.csv");
    }
    LONG Number(std::wstring_view select) { return CHeldDatabase(Database()).Number(select); }
    // Rows of settings, sessions and their details.
    std::string OwnableRows() {
        CHeldDatabase database(Database());
        return std::to_string(database.Number(L"SELECT COUNT(*) FROM SETTINGS")) + " " +
               std::to_string(database.Number(L"SELECT COUNT(*) FROM SESSIONS")) + " " +
               std::to_string(database.Number(L"SELECT COUNT(*) FROM SESSION_DETAILS"));
    }

    static constexpr const char* AllColumns =
        "SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED_NAME,EXCHANGE_NAME,SETTING_TYPE,PRICE_SCALE,"
        "POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,SESSION_TYPE,SESSION_NAME,TIME_ZONE,SESSION_TIMES,CONTRACT_MONTH,"
        "CONTRACT_YEAR,STRIKE_PRICE,CALL_PUT,MARGIN,EXPIRATION_DATE,EXPIRED,EXPIRATION_RULE,FIRST_NOTICE_DATE,"
        "DELIVERY\n";
    // An own setting and an own session.
    static constexpr const char* OwnColumns =
        "SETTING_TYPE,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT,SESSION_TYPE,SESSION_TIMES";
};

} // namespace sqCliTest
