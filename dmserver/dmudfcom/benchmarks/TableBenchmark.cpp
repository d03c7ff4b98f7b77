// Filling a table with rows as a select of the portfolio brings them, and what a row weighs.
//
// The baseline copies the same values into plain vectors, one per column: what no table can be quicker than.
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/dmudfcom/interface/TableRows.h"

#include "platform/com/activation.h"

#include <benchmark/benchmark.h>

#include <array>
#include <string>
#include <vector>

namespace {

using namespace IDM_dmudfcom;
using platform::CComPtr;

constexpr ULONG Rows = 100000;

struct tagColumn {
    const char* Name;
    char Kind; // d distinct text, r repeated text, n number, f real
};
constexpr std::array Columns{
    tagColumn{"SYMBOL", 'n'},
    tagColumn{"SYMBOL_NAME", 'd'},
    tagColumn{"SYMBOL_ROOT", 'r'},
    tagColumn{"DESCRIPTION", 'd'},
    tagColumn{"CUSIP", 'r'},
    tagColumn{"CATEGORY", 'n'},
    tagColumn{"DATA_FEED", 'n'},
    tagColumn{"EXCHANGE", 'n'},
    tagColumn{"SETTING_TYPE", 'n'},
    tagColumn{"SETTING", 'n'},
    tagColumn{"SESSION_TYPE", 'n'},
    tagColumn{"CUSTOM_SESSION", 'n'},
    tagColumn{"TEMPLATE_SESSION", 'n'},
    tagColumn{"CONTRACT_MONTH", 'n'},
    tagColumn{"CONTRACT_YEAR", 'n'},
    tagColumn{"STRIKE_PRICE", 'f'},
    tagColumn{"CALL_PUT", 'n'},
    tagColumn{"MARGIN", 'n'},
    tagColumn{"EXPIRATION_DATE", 'n'},
    tagColumn{"EXPIRED", 'n'},
    tagColumn{"EXPIRATION_RULE", 'n'},
    tagColumn{"FIRST_NOTICE_DATE", 'n'},
    tagColumn{"DELIVERY", 'n'},
};
static_assert(Columns.size() == 23);

struct tagTexts {
    std::vector<std::string> Distinct;
    std::vector<std::string> Repeated;
    tagTexts() {
        for (ULONG i = 0; i < Rows; ++i)
            Distinct.push_back("Symbol number " + std::to_string(i * 7919));
        for (ULONG i = 0; i < 300; ++i)
            Repeated.push_back("ROOT" + std::to_string(i));
    }
};
const tagTexts& Texts() {
    static const tagTexts texts;
    return texts;
}

CComPtr<ITableRows> MakeRows() {
    CComPtr<ITableRows> rows;
    platform::CreateInstance(CLSID_dmTable, rows);
    for (const tagColumn& column : Columns)
        rows->AddColumn(column.Name, EColumnType::Long);
    return rows;
}

void Fill(ITableRows& rows, ULONG count) {
    const tagTexts& texts = Texts();
    for (ULONG row = 0; row < count; ++row) {
        rows.AppendRow();
        for (ULONG column = 0; column < Columns.size(); ++column) {
            switch (Columns[column].Kind) {
            case 'd':
                rows.PutText(column, texts.Distinct[row]);
                break;
            case 'r':
                rows.PutText(column, texts.Repeated[row * 31 % texts.Repeated.size()]);
                break;
            case 'f':
                rows.PutReal(column, row * 0.25);
                break;
            default:
                rows.PutInteger(column, row + column);
            }
        }
    }
}

void FillVectors(benchmark::State& state) {
    const tagTexts& texts = Texts();
    for (auto _ : state) {
        std::array<std::vector<std::string>, 4> text;
        std::array<std::vector<LONG>, 18> number;
        std::vector<double> real;
        for (ULONG row = 0; row < Rows; ++row) {
            text[0].push_back(texts.Distinct[row]);
            text[1].push_back(texts.Distinct[row]);
            text[2].push_back(texts.Repeated[row * 31 % texts.Repeated.size()]);
            text[3].push_back(texts.Repeated[row * 31 % texts.Repeated.size()]);
            for (LONG column = 0; auto& values : number)
                values.push_back(static_cast<LONG>(row) + column++);
            real.push_back(row * 0.25);
        }
        benchmark::DoNotOptimize(real.data());
    }
    state.SetItemsProcessed(state.iterations() * Rows * Columns.size());
}
BENCHMARK(FillVectors)->Unit(benchmark::kMillisecond);

void FillTable(benchmark::State& state) {
    Texts();
    std::size_t memory = 0;
    for (auto _ : state) {
        const auto rows = MakeRows();
        Fill(*rows, Rows);
        memory = rows->MemoryUse();
    }
    state.SetItemsProcessed(state.iterations() * Rows * Columns.size());
    state.counters["bytes_per_row"] = static_cast<double>(memory) / Rows;
}
BENCHMARK(FillTable)->Unit(benchmark::kMillisecond);

void ReadHeldFields(benchmark::State& state) {
    const auto rows = MakeRows();
    Fill(*rows, Rows);
    const auto table = rows.As<IdmTable>();
    CComPtr<IdmField> symbol;
    CComPtr<IdmField> exchange;
    table->get_FieldById(fieldSymbol, symbol.Put());
    table->get_FieldById(fieldExchange, exchange.Put());
    for (auto _ : state) {
        LONG sum = 0;
        LONG eof = 0;
        for (table->First(); table->get_Eof(&eof), eof == 0; table->Next()) {
            LONG value = 0;
            symbol->get_AsLong(&value);
            sum ^= value;
            exchange->get_AsLong(&value);
            sum ^= value;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * Rows * 2);
}
BENCHMARK(ReadHeldFields)->Unit(benchmark::kMillisecond);

// As every test for existence makes it.
void OneRowTable(benchmark::State& state) {
    for (auto _ : state) {
        CComPtr<ITableRows> rows;
        platform::CreateInstance(CLSID_dmTable, rows);
        rows->AddColumn("DATA_FEED", EColumnType::Long);
        rows->AppendRow();
        rows->PutInteger(0, 1);
        benchmark::DoNotOptimize(rows->Integer(0, 0));
    }
}
BENCHMARK(OneRowTable);

void WriteAndReadBytes(benchmark::State& state) {
    const auto rows = MakeRows();
    Fill(*rows, Rows);
    const auto table = rows.As<IdmTable>();
    for (auto _ : state) {
        platform::CVariant bytes;
        table->get_AsVariant(bytes.Put());
        table->put_AsVariant(bytes.Get());
    }
}
BENCHMARK(WriteAndReadBytes)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
