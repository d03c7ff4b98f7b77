// A storage with what symbols stand on: two data feeds, two exchanges with their settings and sessions.
#pragma once

#include "StorageFixture.h"
#include "SymbolArguments.h"

namespace tests {

// Data feeds 7 and 8, exchanges 5 "CME" and 6 "CBOT", their settings 51 and 61 and sessions 52 and 62.
inline const wchar_t* const SymbolGround =
    L"EXECUTE BLOCK AS BEGIN DELETE FROM ASC_MAP; DELETE FROM ASC_TEMPLATES; "
    L"INSERT INTO DATA_FEEDS VALUES(7,'Feed','feed.dll','{7}',1,1,0,0,'F'); "
    L"INSERT INTO DATA_FEEDS VALUES(8,'Other','other.dll','{8}',1,1,0,0,'O'); "
    L"INSERT INTO SETTINGS VALUES(51,100,50,0,25); INSERT INTO SETTINGS VALUES(61,32,1000,0,1); "
    L"INSERT INTO SESSIONS VALUES(52,1,'CME day',0); INSERT INTO SESSIONS VALUES(62,1,'CBOT day',0); "
    L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(5,'CME',51,52); "
    L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,SETTING,SESSION) VALUES(6,'CBOT',61,62); END";

class SymbolTest : public StorageTest {
protected:
    void SetUp() override {
        StorageTest::SetUp();
        Host().Sql(SymbolGround);
        TakeAll();
    }

    // A row that the test expects to be written; its key.
    LONG Insert(const tagSymbolArguments& arguments) {
        LONG key = 0;
        EXPECT_EQ(S_OK, InsertPortfolio(*m_Storage.Get(), arguments, &key));
        EXPECT_GE(key, 1);
        return key;
    }
    HRESULT Update(LONG key, const tagSymbolArguments& arguments) {
        return UpdatePortfolio(*m_Storage.Get(), key, arguments);
    }
    // Rows of the portfolio, written past the storage.
    static void Write(LONG key, const std::wstring& name, const std::wstring& description = L"", LONG category = 1,
                      LONG feed = 7, LONG exchange = 5) {
        Sql(L"INSERT INTO PORTFOLIO VALUES(" + Text(key) + L",'" + name + L"','R','" + description + L"',''," +
            Text(category) + L"," + Text(feed) + L"," + Text(exchange) +
            L",1,0,1,0,0,0,0,0,0,0,NULL,0,0,NULL,NULL)");
    }
    static std::vector<Row> Column(const std::wstring& column, const std::wstring& table = L"PORTFOLIO") {
        return Sql(L"SELECT " + column + L" FROM " + table + L" ORDER BY SYMBOL");
    }
};

} // namespace tests
