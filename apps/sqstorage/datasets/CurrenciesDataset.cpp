// Currency codes, by id. Neither number has a meaning here.
#include "KeyedTable.h"
#include "NumberRules.h"
#include "apps/sqstorage/store/Currencies.h"

#include <array>

namespace sqCli {

namespace {

constexpr std::array Rules{tagColumnRule{"ID", true}, tagColumnRule{"CURRENCY_CODE", true}};

class CCurrencyTable {
public:
    static constexpr std::string_view Noun = "currency";

    struct Row : tagCurrency {
        LONG Id() const { return tagCurrency::Id; }
        friend bool operator==(const Row&, const Row&) = default;
    };

    explicit CCurrencyTable(CStore& store) : m_Store(store) {}

    std::vector<tagStoredRow<Row>> Rows() {
        std::vector<tagStoredRow<Row>> rows;
        for (const tagCurrency& currency : SelectCurrencies(m_Store))
            rows.push_back({currency.Id, {currency}});
        return rows;
    }

    std::optional<Row> Parse(const RowValues& values, Reasons& reasons) {
        constexpr LONG least = std::numeric_limits<LONG>::min();
        const auto id = ParseWhole(Rules[0].Name, values[0], least, LargestLong, reasons);
        const auto code = ParseWhole(Rules[1].Name, values[1], least, LargestLong, reasons);
        return id && code ? std::optional(Row{{*id, *code}}) : std::nullopt;
    }

    std::vector<Cell> Cells(const Row& row) { return {std::int64_t{row.Id()}, std::int64_t{row.Code}}; }
    void Insert(const Row& row) { SetCurrency(m_Store, row); }
    void Update(const tagStoredRow<Row>&, const Row& row) { SetCurrency(m_Store, row); }

private:
    CStore& m_Store;
};

class CCurrenciesDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "currencies"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }

    tagRowSet List(CStore& store, const tagListFilter&) const override {
        tagRowSet rows{{"ID", "CURRENCY_CODE"}, {}};
        for (const tagCurrency& currency : SelectCurrencies(store))
            rows.Rows.push_back({std::int64_t{currency.Id}, std::int64_t{currency.Code}});
        return rows;
    }

    tagRowSet Export(CStore& store, const CConsole& console) const override {
        return ExportTable(*this, console, CCurrencyTable(store));
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        return ImportTable(*this, run, file, CCurrencyTable(run.Store));
    }
};

} // namespace

const IDataset& CurrenciesDataset() {
    static const CCurrenciesDataset dataset;
    return dataset;
}

} // namespace sqCli
