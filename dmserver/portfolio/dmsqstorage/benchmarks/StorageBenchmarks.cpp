// What the storage adds to the bare database, measured in the same run: each iteration makes one call through the
// interface and the same statements, in the same transactions, through the engine's own object interface in its
// best form. "ratio" is the storage's time over the bare time.
#include "StorageHost.h"
#include "platform/text.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstring>
#include <firebird/Interface.h>
#include <memory>
#include <string>
#include <vector>

namespace {

using Firebird::IMessageMetadata;
using Firebird::IStatement;
using Firebird::ITransaction;
using Status = Firebird::ThrowStatusWrapper;
using tests::CBstr;
using tests::CComPtr;
using tests::CStorageHost;

template <class Call>
double Seconds(Call&& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Counts both sides of a comparison.
class CComparison {
public:
    template <class Ours, class Bare>
    void Round(benchmark::State& state, Ours&& ours, Bare&& bare) {
        // The side that goes first changes, so that neither always pays for the other's traces in the caches.
        double oursNow = 0;
        double bareNow = 0;
        if (m_Rounds++ % 2) {
            bareNow = Seconds(bare);
            oursNow = Seconds(ours);
        } else {
            oursNow = Seconds(ours);
            bareNow = Seconds(bare);
        }
        m_Ours += oursNow;
        m_Bare += bareNow;
        state.SetIterationTime(oursNow);
    }
    void Report(benchmark::State& state) const {
        state.counters["bare_us"] = m_Bare / static_cast<double>(m_Rounds) * 1e6;
        state.counters["ratio"] = m_Ours / m_Bare;
    }

private:
    double m_Ours = 0;
    double m_Bare = 0;
    std::size_t m_Rounds = 0;
};

// The engine without anything of ours: what it is told once is kept.
class CBareDatabase {
public:
    explicit CBareDatabase(const std::wstring& path)
        : m_Master(Firebird::fb_get_master_interface()), m_Status(m_Master->getStatus()) {
        static constexpr unsigned char parameters[] = {isc_dpb_version1,
                                                       isc_dpb_lc_ctype,
                                                       4,
                                                       'U',
                                                       'T',
                                                       'F',
                                                       '8',
                                                       isc_dpb_user_name,
                                                       6,
                                                       'S',
                                                       'Y',
                                                       'S',
                                                       'D',
                                                       'B',
                                                       'A'};
        m_Attachment = m_Master->getDispatcher()->attachDatabase(&m_Status, platform::ToUtf8(path).c_str(),
                                                                 sizeof parameters, parameters);
        m_Generator = Start(Reading);
        m_Generate = Prepare(m_Generator, "SELECT * FROM GENERATE_ID(1)");
    }
    ~CBareDatabase() {
        m_Generate->free(&m_Status);
        if (m_Select)
            m_Select->free(&m_Status);
        m_Generator->commit(&m_Status);
        m_Attachment->detach(&m_Status);
    }

    int InsertHoliday(const char* name) {
        const int key = ReadInt(*m_Generate, m_Generator);
        const std::string sql = "INSERT INTO HOLIDAYS VALUES(" + std::to_string(key) + ",'" + name + "')";
        ITransaction* transaction = Start(Writing);
        m_Attachment->execute(&m_Status, transaction, static_cast<unsigned>(sql.size()), sql.c_str(), 3, nullptr,
                              nullptr, nullptr, nullptr);
        transaction->commit(&m_Status);
        return key;
    }
    int SelectHoliday(int key) {
        ITransaction* transaction = Start(Reading);
        if (!m_Select)
            m_Select = Prepare(transaction, "SELECT * FROM HOLIDAYS WHERE HOLIDAY=" + std::to_string(key));
        const int read = ReadInt(*m_Select, transaction);
        transaction->commit(&m_Status);
        return read;
    }

private:
    static constexpr unsigned char Reading[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed,
                                                isc_tpb_rec_version};
    static constexpr unsigned char Writing[] = {isc_tpb_version3, isc_tpb_write, isc_tpb_read_committed,
                                                isc_tpb_rec_version};

    template <std::size_t Size>
    ITransaction* Start(const unsigned char (&mode)[Size]) {
        return m_Attachment->startTransaction(&m_Status, Size, mode);
    }
    IStatement* Prepare(ITransaction* transaction, const std::string& sql) {
        return m_Attachment->prepare(&m_Status, transaction, static_cast<unsigned>(sql.size()), sql.c_str(), 3,
                                     IStatement::PREPARE_PREFETCH_METADATA);
    }
    // All rows; the first column of the last one.
    int ReadInt(IStatement& statement, ITransaction* transaction) {
        IMessageMetadata* metadata = statement.getOutputMetadata(&m_Status);
        m_Row.resize(metadata->getMessageLength(&m_Status));
        const unsigned offset = metadata->getOffset(&m_Status, 0);
        auto* rows = statement.openCursor(&m_Status, transaction, nullptr, nullptr, metadata, 0);
        metadata->release();
        int value = 0;
        while (rows->fetchNext(&m_Status, m_Row.data()) == Firebird::IStatus::RESULT_OK)
            std::memcpy(&value, m_Row.data() + offset, sizeof value);
        rows->close(&m_Status);
        return value;
    }

    Firebird::IMaster* m_Master;
    Status m_Status;
    Firebird::IAttachment* m_Attachment = nullptr;
    ITransaction* m_Generator = nullptr;
    IStatement* m_Generate = nullptr;
    IStatement* m_Select = nullptr;
    std::vector<unsigned char> m_Row;
};

// One storage for the program, as a host has it.
struct tagStore {
    tagStore() {
        Host.Install();
        CStorageHost::Create(Storage);
    }
    CStorageHost Host;
    CComPtr<IDM_qxStorage::IqxStorage> Storage;
};

tagStore& Store() {
    static tagStore store;
    return store;
}

void InsertHoliday(benchmark::State& state) {
    tagStore& store = Store();
    CBareDatabase bare(store.Host.Connection().Path);
    const CBstr name(L"Independence Day");
    CComparison comparison;
    for (auto _ : state) {
        LONG key = 0;
        comparison.Round(
            state, [&] { store.Storage->InsertHoliday(name.Get(), &key); },
            [&] { benchmark::DoNotOptimize(bare.InsertHoliday("Independence Day")); });
    }
    comparison.Report(state);
}
BENCHMARK(InsertHoliday)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);

void SelectHoliday(benchmark::State& state) {
    tagStore& store = Store();
    CBareDatabase bare(store.Host.Connection().Path);
    LONG key = 0;
    store.Storage->InsertHoliday(CBstr(L"Independence Day").Get(), &key);
    const auto request = tests::NewRequest();
    request->put_HolidayId(key);
    const auto table = tests::NewTable();
    CComparison comparison;
    for (auto _ : state)
        comparison.Round(
            state,
            [&] {
                table->Clear();
                store.Storage->SelectHoliday(request.Get(), table.Get());
            },
            [&] { benchmark::DoNotOptimize(bare.SelectHoliday(key)); });
    comparison.Report(state);
}
BENCHMARK(SelectHoliday)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(20000);

} // namespace

BENCHMARK_MAIN();
