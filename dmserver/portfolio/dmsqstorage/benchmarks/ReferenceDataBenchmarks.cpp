// Feeds, exchanges, sessions and currency codes: the selects, and the insertion of a whole reference set, through
// the interfaces and as the same statements in the same transactions on the bare database.
#include "BareDatabase.h"
#include "BenchmarkStore.h"
#include "Comparison.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"

namespace {

using namespace bench;
using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using IDM_qxStorage::IqxCurrency;
using IDM_qxStorage::IqxStorage;
using tests::CBstr;
using tests::CComPtr;

constexpr int FeedCount = 8;
constexpr int ExchangeCount = 40;
constexpr int SessionCount = 60;
constexpr int DetailCount = 7;
constexpr int HolidayCount = 10;
constexpr LONG DateCount = 40;
constexpr LONG CurrencyCount = 50;
constexpr LONG FirstDate = 46023; // 1 January 2026
constexpr std::int32_t EngineDayShift = 15018;
constexpr const wchar_t* Zone = L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000";
constexpr const char* ZoneColumns = "1,300,0,0,1,11,'02:00:00.0000',-60,0,2,3,'02:00:00.0000'";

std::string Number(int value) { return std::to_string(value); }

// Its names are the same ones each time, so that both sides store the same rows.
class CReferenceSet {
public:
    CReferenceSet() {
        for (int i = 0; i < SessionCount; ++i)
            m_Names.emplace_back(L"N" + std::to_wstring(i));
        for (const LONG id : {1006, 1027, 1028, 1029, 1030, 1031, 1032, 1033})
            m_Details->AddFieldById(id, 0, 0, 0);
        for (LONG i = 0; i < DetailCount; ++i)
            AppendRow(m_Details, {0, i, 34200, i, 57600, 0, 0, 1});
        for (const wchar_t* name : {L"HOLIDAY", L"HOLIDAY_DESCRIPTION", L"HOLIDAY_START_DATE", L"HOLIDAY_END_DATE"})
            m_Dates->AddFieldByName(CBstr(name).Get(), 0, 0, 0);
        for (LONG i = 0; i < DateCount; ++i)
            AppendRow(m_Dates, {0, std::nullopt, FirstDate + i * 7, FirstDate + i * 7});
    }

    void Insert(IqxStorage& storage, IqxCurrency& currency) {
        LONG key = 0;
        const CBstr dll(L"feed.dll");
        for (int i = 0; i < FeedCount; ++i)
            storage.InsertDataFeed(Name(i), Name(i), dll.Get(), Name(i), 0, &key);
        for (int i = 0; i < HolidayCount; ++i) {
            storage.InsertHoliday(Name(i), &key);
            SetKey(m_Dates, key);
            storage.InsertHolidayDetails(m_Dates.Get());
        }
        LONG session = 0;
        for (int i = 0; i < SessionCount; ++i) {
            storage.InsertSession(2, Name(i), 2, &session);
            SetKey(m_Details, session);
            storage.InsertSessionDetails(m_Details.Get());
        }
        const CBstr zone(Zone);
        LONG setting = 0;
        for (int i = 0; i < ExchangeCount; ++i) {
            storage.InsertSetting(100, 12.5, 1, 0.25, &setting);
            storage.InsertExchange(Name(i), Name(i), key, setting, session, 2, Name(i), zone.Get(), &key);
        }
        for (LONG i = 0; i < CurrencyCount; ++i)
            currency.SetCurrency(i, 840 + i);
    }

    static void Insert(CBareDatabase& bare) {
        for (int i = 0; i < FeedCount; ++i)
            InsertFeed(bare, BareName(i));
        int holiday = 0;
        for (int i = 0; i < HolidayCount; ++i)
            holiday = InsertHoliday(bare, BareName(i));
        int session = 0;
        for (int i = 0; i < SessionCount; ++i)
            session = InsertSession(bare, BareName(i));
        for (int i = 0; i < ExchangeCount; ++i)
            InsertExchange(bare, BareName(i), holiday, session);
        for (int i = 0; i < CurrencyCount; ++i) {
            bare.SelectOnce("SELECT * FROM CURRENCY WHERE ID=" + Number(i));
            bare.Write("INSERT INTO CURRENCY VALUES(" + Number(i) + "," + Number(840 + i) + ")");
        }
    }

    // And what the deleted rows have left behind, so that the next insertion does not pay for it.
    static void Remove(CBareDatabase& bare) {
        std::string deletes;
        for (const char* table : Tables)
            deletes += std::string("DELETE FROM ") + table + "; ";
        bare.Write("EXECUTE BLOCK AS BEGIN " + deletes + "END");
        for (const char* table : Tables)
            bare.SelectOnce(std::string("SELECT COUNT(*) FROM ") + table);
    }

private:
    static constexpr const char* Tables[] = {"DATA_FEEDS", "HOLIDAYS",        "HOLIDAY_DETAILS", "SETTINGS",
                                             "SESSIONS",   "SESSION_DETAILS", "EXCHANGES",       "CURRENCY"};

    BSTR Name(int i) const { return m_Names[static_cast<std::size_t>(i)].Get(); }
    static std::string BareName(int i) { return "'N" + Number(i) + "'"; }

    static void AppendRow(const CComPtr<IdmTable>& table, std::initializer_list<Value> values) {
        table->Append();
        LONG index = 0;
        for (const Value value : values) {
            CComPtr<IDM_dmudfcom::IdmField> field;
            table->get_Field(index++, field.Put());
            if (value)
                field->put_AsLong(*value);
        }
        table->Post();
    }
    static void SetKey(const CComPtr<IdmTable>& table, LONG key) {
        CComPtr<IDM_dmudfcom::IdmField> field;
        table->get_Field(0, field.Put());
        LONG eof = 0;
        for (table->First(); table->get_Eof(&eof) == S_OK && !eof; table->Next())
            field->put_AsLong(key);
        table->First();
    }

    static void InsertFeed(CBareDatabase& bare, const std::string& name) {
        bare.SelectOnce("SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID=" + name + " AND DELETED=1");
        bare.SelectOnce("SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID=" + name);
        bare.Write("INSERT INTO DATA_FEEDS VALUES(" + Number(bare.GenerateId()) + "," + name + ",'feed.dll'," +
                   name + ",1,1,0,0," + name + ")");
    }
    static int InsertHoliday(CBareDatabase& bare, const std::string& name) {
        const int key = bare.GenerateId();
        bare.Write("INSERT INTO HOLIDAYS VALUES(" + Number(key) + "," + name + ")");
        bare.Write("DELETE FROM HOLIDAY_DETAILS WHERE HOLIDAY=" + Number(key));
        std::vector<std::vector<Value>> rows;
        for (LONG i = 0; i < DateCount; ++i) {
            const std::int32_t day = FirstDate + i * 7 + EngineDayShift;
            rows.push_back({key, std::nullopt, day, day});
        }
        bare.WriteRows("INSERT INTO HOLIDAY_DETAILS VALUES(?,?,?,?)", rows);
        return key;
    }
    static int InsertSession(CBareDatabase& bare, const std::string& name) {
        bare.SelectOnce("SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER(" + name +
                        ")");
        const int key = bare.GenerateId();
        bare.Write("INSERT INTO SESSIONS VALUES(" + Number(key) + ",2," + name + ",2)");
        bare.Write("DELETE FROM SESSION_DETAILS WHERE SESSION=" + Number(key));
        std::vector<std::vector<Value>> rows;
        for (int i = 0; i < DetailCount; ++i)
            rows.push_back({key, i, 34200, i, 57600, 0, 0, 1});
        bare.WriteRows("INSERT INTO SESSION_DETAILS VALUES(?,?,?,?,?,?,?,?)", rows);
        return key;
    }
    static void InsertExchange(CBareDatabase& bare, const std::string& name, int holiday, int session) {
        const int setting = bare.GenerateId();
        bare.Write("INSERT INTO SETTINGS VALUES(" + Number(setting) + ",100,12.500000,1,0.250000)");
        bare.Write("INSERT INTO EXCHANGES VALUES(" + Number(bare.GenerateId()) + "," + name + "," +
                   Number(holiday) + "," + Number(setting) + "," + Number(session) + ",2," + name + "," +
                   ZoneColumns + "," + name + ")");
    }

    std::vector<CBstr> m_Names;
    const CComPtr<IdmTable> m_Details = tests::NewTable();
    const CComPtr<IdmTable> m_Dates = tests::NewTable();
};

void InsertReferenceSet(benchmark::State& state) {
    tagStore& store = Store();
    const auto currency = store.Storage.As<IqxCurrency>();
    CBareDatabase bare(store.Host.Connection().Path);
    CReferenceSet set;
    CComparison comparison;
    CReferenceSet::Remove(bare);
    for (auto _ : state)
        comparison.Round(
            state, [&] { set.Insert(*store.Storage, *currency); }, [&] { CReferenceSet::Insert(bare); },
            [&] { CReferenceSet::Remove(bare); });
    comparison.Report(state);
}
BENCHMARK(InsertReferenceSet)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(30);

// Fills the storage with the set, then runs a select of it through the interface and on the bare database.
template <class Call>
void Select(benchmark::State& state, const std::string& sql, int rows, Call&& call) {
    tagStore& store = Store();
    CBareDatabase bare(store.Host.Connection().Path);
    CReferenceSet::Remove(bare);
    CReferenceSet().Insert(*store.Storage, *store.Storage.As<IqxCurrency>());
    const auto table = tests::NewTable();
    CComparison comparison;
    int count = 0;
    for (auto _ : state)
        comparison.Round(
            state,
            [&] {
                table->Clear();
                call(*store.Storage, table.Get());
            },
            [&] { benchmark::DoNotOptimize(bare.Select(sql, &count)); });
    if (count != rows || tests::RecordCount(table) != rows)
        state.SkipWithError("the two sides did not read what they should");
    comparison.Report(state);
}

void SelectDataFeeds(benchmark::State& state) {
    const auto request = tests::NewRequest();
    Select(state,
           "SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, ACTIVATED AS "
           "\"ACTIVE\", DELETED FROM DATA_FEEDS WHERE DELETED=0",
           FeedCount, [&](IqxStorage& storage, IdmTable* table) { storage.SelectDataFeed(request.Get(), table); });
}
BENCHMARK(SelectDataFeeds)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(10000);

void SelectExchanges(benchmark::State& state) {
    const auto request = tests::NewRequest();
    Select(state, "SELECT * FROM SELECT_EXCHANGE(0)", ExchangeCount,
           [&](IqxStorage& storage, IdmTable* table) { storage.SelectExchange(request.Get(), table); });
}
BENCHMARK(SelectExchanges)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(3000);

void SelectSessions(benchmark::State& state) {
    const auto request = tests::NewRequest();
    request->put_SessionType(2);
    Select(state, "SELECT * FROM SESSIONS WHERE SESSION_TYPE=2", SessionCount,
           [&](IqxStorage& storage, IdmTable* table) { storage.SelectSession(request.Get(), table); });
}
BENCHMARK(SelectSessions)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(10000);

void SelectAllSessionDetails(benchmark::State& state) {
    const auto request = tests::NewRequest();
    Select(state, "SELECT * FROM SESSION_DETAILS", SessionCount * DetailCount,
           [&](IqxStorage& storage, IdmTable* table) { storage.SelectSessionDetails(request.Get(), table); });
}
BENCHMARK(SelectAllSessionDetails)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(5000);

void SelectCurrencies(benchmark::State& state) {
    const auto currency = Store().Storage.As<IqxCurrency>();
    Select(state, "SELECT * FROM CURRENCY", CurrencyCount,
           [&](IqxStorage&, IdmTable* table) { currency->SelectCurrency(nullptr, table); });
}
BENCHMARK(SelectCurrencies)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(10000);

// One row: the shortest call, where what is ours weighs most.
void GetCurrency(benchmark::State& state) {
    tagStore& store = Store();
    const auto currency = store.Storage.As<IqxCurrency>();
    CBareDatabase bare(store.Host.Connection().Path);
    currency->SetCurrency(7, 840);
    const std::string sql = "SELECT * FROM CURRENCY WHERE ID=7";
    CComparison comparison;
    LONG code = 0;
    for (auto _ : state)
        comparison.Round(
            state, [&] { currency->GetCurrency(7, &code); }, [&] { benchmark::DoNotOptimize(bare.Select(sql)); });
    comparison.Report(state);
}
BENCHMARK(GetCurrency)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(20000);

} // namespace
