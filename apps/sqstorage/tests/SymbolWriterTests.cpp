// Symbols that end halfway, in the process in which exceptions can be had.
#include "apps/sqstorage/datasets/SymbolWriter.h"

#include "HostFixture.h"

#include <gmock/gmock.h>
#include <stdexcept>

namespace {

using namespace sqCli;

class SymbolWriter : public tests::HostTest {
protected:
    void SetUp() override {
        for (const wchar_t* table : {L"PORTFOLIO", L"EXCHANGES", L"DATA_FEEDS", L"SETTINGS", L"SESSIONS"})
            Sql(std::wstring(L"DELETE FROM ") + table);
        Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(1,'E',10,11)");
        Sql(L"INSERT INTO DATA_FEEDS (DATA_FEED,DATA_FEED_NAME,DELETED) VALUES(5,'F',0)");
    }

    // With a price setting and a session of its own.
    static tagSymbolRow Owning() {
        SymbolValues values{};
        values[SymbolName] = "S";
        values[SymbolCategory] = "0";
        values[SymbolFeed] = "F";
        values[SymbolExchange] = "E";
        values[SymbolSettingType] = "0";
        for (std::size_t price = 0; price < 4; ++price)
            values[SymbolPrices + price] = "1";
        values[SymbolSessionType] = "0";
        values[SymbolTimes] = "Mon 09:00-17:00";
        std::vector<std::string> reasons;
        return ParseSymbol(values, reasons).value();
    }

    CStore m_Store;
};

TEST_F(SymbolWriter, WhatIsRaisedAfterEachCallReachesItsCallerAndEndsNothingElse) {
    const CSymbolReferences references(m_Store);
    CSymbolWriter writer(m_Store, references);
    int calls = 0;
    m_Store.AfterCalls([&] {
        if (++calls > 1)
            throw std::runtime_error("nobody is told");
    });
    EXPECT_THROW(writer.Insert(Owning()), std::runtime_error);
    EXPECT_EQ(3, calls) << "the setting, the session, and the setting's end";
    EXPECT_THAT(Sql(L"SELECT SETTING FROM SETTINGS"), testing::IsEmpty());
    EXPECT_THAT(Sql(L"SELECT SYMBOL FROM PORTFOLIO"), testing::IsEmpty());
}

} // namespace
