// A portfolio with what it stands on, written past the storage: tests of selections do not rest on inserts.
#pragma once

#include "StorageFixture.h"
#include "platform/environment.h"

#include <map>

namespace tests {

// A row of PORTFOLIO: a symbol of exchange 10 and feed 5 that takes everything from its exchange.
struct tagSymbolRow {
    LONG Symbol = 1;
    std::wstring Name = L"ESH15";
    LONG Category = 1;
    LONG DataFeed = 5;
    LONG Exchange = 10;
    LONG SettingType = 1;
    LONG Setting = 0;
    LONG SessionType = 1;
    LONG CustomSession = 0;
    LONG TemplateSession = 0;
    std::wstring Description = L"S&P";

    std::wstring Insert() const {
        return L"INSERT INTO PORTFOLIO VALUES(" + std::to_wstring(Symbol) + L",'" + Name + L"','ES','" +
               Description + L"','cusip'," + std::to_wstring(Category) + L"," + std::to_wstring(DataFeed) + L"," +
               std::to_wstring(Exchange) + L"," + std::to_wstring(SettingType) + L"," + std::to_wstring(Setting) +
               L"," + std::to_wstring(SessionType) + L"," + std::to_wstring(CustomSession) + L"," +
               std::to_wstring(TemplateSession) +
               L",3,2015,1250.250000,2,9,'20.03.2015',0,4,'01.01.1900',"
               L"'21.03.2015')";
    }
};

inline constexpr const wchar_t* GmtZone = L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000";
inline constexpr const wchar_t* ChicagoZone = L"360,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";
// Of the machine, while a fixture of this file lives.
inline constexpr const wchar_t* LocalZone = L"-60,0,10,0,5,03:00:00.0000,-60,3,0,5,02:00:00.0000";

// Exchange 10 (Chicago, daylight saving) with setting 100 and session 200; setting 101 and session 201 for a symbol
// of its own, template 202; feeds 5 and 6.
inline constexpr const wchar_t* References[] = {
    L"INSERT INTO DATA_FEEDS VALUES(5,'Feed','d','{5}',1,1,0,0,'F')",
    L"INSERT INTO DATA_FEEDS VALUES(6,'Other','o','{6}',1,1,0,0,'O')",
    L"INSERT INTO EXCHANGES VALUES(10,'CME',0,100,200,0,'m',1,360,0,0,1,11,'02:00:00.0000',-60,0,2,3,"
    L"'02:00:00.0000','Chicago')",
    L"INSERT INTO SETTINGS VALUES(100,100,50.500000,7,0.250000)",
    L"INSERT INTO SETTINGS VALUES(101,1000,10.000000,8,0.125000)",
    L"INSERT INTO SESSIONS VALUES(200,1,'exchange',2)",
    L"INSERT INTO SESSIONS VALUES(201,0,'own',1)",
    L"INSERT INTO SESSIONS VALUES(202,2,'template',0)",
    L"INSERT INTO SESSION_DETAILS VALUES(200,1,30600,1,54900,5,6,7)",
    L"INSERT INTO SESSION_DETAILS VALUES(200,2,30600,2,54900,5,6,7)",
    L"INSERT INTO SESSION_DETAILS VALUES(201,0,60,0,120,0,0,0)",
};
inline constexpr const wchar_t* ExchangeSessions = L"2:1950,2355,6,7,5;3390,3795,6,7,5;";
inline constexpr const wchar_t* OwnSessions = L"1:1,2,0,0,0;";
inline constexpr const wchar_t* TemplateSessions = L"0:";

// Another environment variable for the length of a scope.
class CEnvironment {
public:
    CEnvironment(std::wstring name, const std::wstring& value)
        : m_Name(std::move(name)), m_Before(platform::GetEnvironment(m_Name)) {
        platform::SetEnvironment(m_Name, value);
    }
    ~CEnvironment() { platform::SetEnvironment(m_Name, m_Before); }
    CEnvironment(const CEnvironment&) = delete;
    CEnvironment& operator=(const CEnvironment&) = delete;

private:
    std::wstring m_Name;
    std::optional<std::wstring> m_Before;
};

// As many at a time as the engine takes in one block.
inline void Write(const CStorageHost& host, const std::vector<std::wstring>& statements) {
    constexpr std::size_t AtATime = 200;
    for (std::size_t first = 0; first < statements.size(); first += AtATime) {
        std::wstring block = L"EXECUTE BLOCK AS BEGIN ";
        for (std::size_t i = first; i < std::min(first + AtATime, statements.size()); ++i)
            block += statements[i] + L"; ";
        host.Sql(block + L"END");
    }
}

// The records of a table, each by the names of its fields.
using Record = std::map<std::wstring, std::wstring>;

inline std::vector<std::wstring> FieldNames(const CComPtr<IdmTable>& table) {
    std::vector<std::wstring> names;
    LONG count = 0;
    table->get_FieldCount(&count);
    for (LONG i = 0; i < count; ++i) {
        CComPtr<IdmField> field;
        CBstr name;
        table->get_Field(i, field.Put());
        field->get_Name(name.Put());
        names.emplace_back(name.View());
    }
    return names;
}

inline std::vector<Record> Records(const CComPtr<IdmTable>& table) {
    const std::vector<std::wstring> names = FieldNames(table);
    std::vector<Record> records;
    for (const Row& row : RowsOf(table)) {
        Record& record = records.emplace_back();
        for (std::size_t i = 0; i < names.size(); ++i)
            record[names[i]] = row[i];
    }
    return records;
}

// The values of one field, record by record.
inline std::vector<std::wstring> Column(const CComPtr<IdmTable>& table, const std::wstring& name) {
    std::vector<std::wstring> values;
    for (const Record& record : Records(table))
        values.push_back(record.at(name));
    return values;
}

inline CComPtr<IdmTable> SelectAll(IqxStorage& storage) {
    auto table = NewTable();
    EXPECT_EQ(S_OK, storage.SelectPortfolio(0, nullptr, table.Get()));
    return table;
}

class PortfolioTest : public StorageTest {
protected:
    void SetUp() override {
        StorageTest::SetUp();
        Write(Host(), {std::begin(References), std::end(References)});
        TakeAll();
    }

    void Add(const tagSymbolRow& row) { Sql(row.Insert()); }
    void AddAll(const std::vector<tagSymbolRow>& rows) {
        std::vector<std::wstring> statements;
        for (const tagSymbolRow& row : rows)
            statements.push_back(row.Insert());
        Write(Host(), statements);
    }
    CComPtr<IdmTable> All() { return SelectAll(*m_Storage); }
    CComPtr<IdmTable> Select(const CComPtr<IdmRequest>& request, LONG mode = 0) {
        auto table = NewTable();
        EXPECT_EQ(S_OK, m_Storage->SelectPortfolio(mode, request.Get(), table.Get()));
        return table;
    }
    // The one record of a symbol.
    Record SelectSymbol(LONG symbol) {
        const auto request = NewRequest();
        request->put_Symbol(0, symbol);
        const std::vector<Record> records = Records(Select(request));
        EXPECT_EQ(1U, records.size());
        return records.empty() ? Record() : records.front();
    }

private:
    // Before the storage: a connection is told of the zone when it opens.
    CEnvironment m_Zone{L"TZ", L"CET-1CEST,M3.5.0,M10.5.0/3"};
};

} // namespace tests
