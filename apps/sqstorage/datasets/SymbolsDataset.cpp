// Symbols of the portfolio, by name, category, feed and exchange. A row says the price setting and the session that
// the symbol owns itself; a template it names. There may be very many of them.
#include "Batches.h"
#include "Dataset.h"
#include "SymbolExport.h"
#include "SymbolImport.h"
#include "SymbolRules.h"
#include "apps/sqstorage/ExitStatus.h"
#include "apps/sqstorage/store/DataFeeds.h"
#include "apps/sqstorage/store/Exchanges.h"
#include "apps/sqstorage/store/SymbolCursor.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

constexpr std::array<std::string_view, 5> ListFilters{"--feed", "--exchange", "--category", "--name",
                                                      "--description"};

std::vector<tagKeyedDataFeed> FeedsOf(CStore& store, const std::optional<std::string>& name) {
    auto feeds = SelectDataFeeds(store);
    if (name)
        std::erase_if(feeds, [&](const tagKeyedDataFeed& feed) { return feed.Feed.Name != *name; });
    if (name && feeds.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is no feed \"{}\": see \"sqstorage list feeds\".", *name));
    return feeds;
}

// The key 0, for any of them, without a name.
std::vector<LONG> ExchangesOf(CStore& store, const std::optional<std::string>& name) {
    if (!name)
        return {0};
    std::vector<LONG> keys;
    for (const tagKeyedExchange& exchange : SelectExchanges(store))
        if (exchange.Exchange.Name == *name)
            keys.push_back(exchange.Key);
    if (keys.empty())
        throw CCommandError(EExitStatus::Refused,
                            fmt::format("There is no exchange \"{}\": see \"sqstorage list exchanges\".", *name));
    return keys;
}

// The cursor's rows do not say their feed, so that each feed has a cursor of its own.
void ListFeed(CStore& store, const tagSymbolFilter& filter, const std::string& feed, CBatches& batches) {
    CSymbolCursor cursor(store, filter);
    while (cursor.Fetch()) {
        for (const tagListedSymbol& symbol : cursor.Symbols())
            batches.Add({std::int64_t{symbol.Key}, symbol.Name, feed, symbol.ExchangeName,
                         std::int64_t{symbol.Category}, symbol.StrikePrice, std::int64_t{symbol.CallPut},
                         symbol.ExpirationDate, symbol.Description});
        batches.Flush();
    }
}

class CSymbolsDataset final : public IDataset {
public:
    std::string_view Name() const override { return "symbols"; }
    std::span<const tagColumnRule> Columns() const override { return SymbolColumns; }
    std::span<const std::string_view> Filters() const override { return ListFilters; }

    void ListTo(CStore& store, const tagListFilter& filter, const TakeRows& take) const override {
        CBatches batches({"SYMBOL", "SYMBOL_NAME", "DATA_FEED_NAME", "EXCHANGE_NAME", "CATEGORY", "STRIKE_PRICE",
                          "CALL_PUT", "EXPIRATION_DATE", "DESCRIPTION"},
                         take);
        const auto exchanges = ExchangesOf(store, filter.Exchange);
        for (const tagKeyedDataFeed& feed : FeedsOf(store, filter.Feed))
            for (const LONG exchange : exchanges)
                ListFeed(store,
                         {.Feed = feed.Key,
                          .Exchange = exchange,
                          .Category = filter.Category.value_or(-1),
                          .Name = filter.Name.value_or(std::string()),
                          .Description = filter.Description.value_or(std::string())},
                         feed.Feed.Name, batches);
        batches.Finish();
    }

    void ExportTo(tagExportRun& run, const TakeRows& take) const override { ExportSymbols(run, take); }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        return ImportSymbols(run, file);
    }
};

} // namespace

const IDataset& SymbolsDataset() {
    static const CSymbolsDataset dataset;
    return dataset;
}

} // namespace sqCli
