#include "SymbolExport.h"

#include "Batches.h"
#include "SymbolReferences.h"

#include <algorithm>
#include <compare>
#include <fmt/format.h>
#include <iterator>
#include <numeric>

namespace sqCli {

namespace {

using Reasons = std::vector<std::string>;

std::optional<tagSymbolRow> Reparsed(const std::vector<Cell>& cells, Reasons& reasons) {
    std::array<std::string, SymbolColumnCount> texts;
    std::ranges::transform(cells, texts.begin(), TextOf);
    SymbolValues values;
    std::ranges::copy(texts, values.begin());
    return ParseSymbol(values, reasons);
}

class CSymbolExport {
public:
    CSymbolExport(const tagExportRun& run, const TakeRows& take)
        : m_Run(run), m_References(run.Store), m_Batches(ColumnNames(), take) {}

    void Run() {
        const auto& exchanges = m_References.Exchanges();
        for (auto exchange = exchanges.begin(); exchange != exchanges.end(); ++exchange) {
            if (exchange != exchanges.begin() && exchange->Exchange.Name == std::prev(exchange)->Exchange.Name)
                RefuseAll(*exchange, "another exchange has its name, too: rename one of them");
            else if (!m_Run.IsWritten("exchanges", exchange->Exchange.Name))
                RefuseAll(*exchange, "the exchange is left out, too: correct it as its own warning says");
            else
                Export(*exchange);
        }
        TellOfFeeds();
        m_Batches.Finish();
    }

private:
    static std::vector<std::string> ColumnNames() {
        std::vector<std::string> names;
        for (const tagColumnRule& rule : SymbolColumns)
            names.emplace_back(rule.Name);
        return names;
    }

    void RefuseAll(const tagKeyedExchange& exchange, std::string_view why) const {
        if (const ULONG count = CSymbolTable(m_Run.Store, exchange.Key).Count(); count > 0)
            m_Run.Console.Warn(
                fmt::format("{} symbol(s) of the exchange \"{}\" with the key {} are left out, because {}.", count,
                            exchange.Exchange.Name, exchange.Key, why));
    }

    void TellOfFeeds() const {
        for (const auto& [feed, count] : m_LeftOutByFeed)
            m_Run.Console.Warn(
                m_References.HasFeed(feed)
                    ? fmt::format("{} symbol(s) of the feed \"{}\" with the key {} are left out, because the feed "
                                  "is left out, too: correct it as its own warning says.",
                                  count, m_References.FeedName(feed), feed)
                    : fmt::format("{} symbol(s) of the feed with the key {} are left out, because the feed is "
                                  "deleted: import one of its CLSID to have it back.",
                                  count, feed));
    }

    void Export(const tagKeyedExchange& exchange) {
        const CSymbolTable symbols(m_Run.Store, exchange.Key);
        std::optional<tagSymbolRow> last;
        for (const ULONG row : Sorted(symbols)) {
            if (!m_References.IsFeedWritten(m_Run, symbols.Feed(row))) {
                ++m_LeftOutByFeed[symbols.Feed(row)];
                continue;
            }
            const tagSymbol symbol = symbols.At(row);
            Reasons reasons;
            auto line = Importable(symbol, exchange.Exchange.Name, reasons);
            const bool repeats = line && last && IdOf(*line) == IdOf(*last);
            if (repeats && !(*line == *last))
                reasons.push_back("another symbol has its name, category, feed and exchange: rename one of them");
            if (!reasons.empty())
                m_Run.Console.Warn(fmt::format("The symbol \"{}\" with the key {} is left out, because {}.",
                                               symbol.Name, symbols.Key(row), reasons.front()));
            else if (!repeats)
                m_Batches.Add(CellsOf(*line));
            if (line && !repeats)
                last = std::move(line);
        }
    }

    // By name, category and feed; equal ones by key.
    std::vector<ULONG> Sorted(const CSymbolTable& symbols) const {
        const auto behindName = [&](ULONG row) {
            return std::tuple(symbols.Category(row), std::string_view(m_References.FeedName(symbols.Feed(row))),
                              symbols.Key(row));
        };
        std::vector<ULONG> rows(symbols.Count());
        std::iota(rows.begin(), rows.end(), 0U);
        std::ranges::sort(rows, [&](ULONG left, ULONG right) {
            const auto order = symbols.Name(left) <=> symbols.Name(right);
            return order != 0 ? order < 0 : behindName(left) < behindName(right);
        });
        return rows;
    }

    // As an import would read it.
    std::optional<tagSymbolRow> Importable(const tagSymbol& symbol, const std::string& exchange,
                                           Reasons& reasons) const {
        if (auto gap = m_References.Gap(m_Run, symbol)) {
            reasons.push_back(std::move(*gap));
            return std::nullopt;
        }
        return Reparsed(CellsOf(m_References.RowOf(symbol, exchange)), reasons);
    }

    const tagExportRun& m_Run;
    CSymbolReferences m_References;
    CBatches m_Batches;
    std::map<LONG, std::size_t> m_LeftOutByFeed; // symbols, by the key of their feed
};

} // namespace

void ExportSymbols(const tagExportRun& run, const TakeRows& take) { CSymbolExport(run, take).Run(); }

} // namespace sqCli
