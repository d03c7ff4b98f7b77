#include "SymbolImport.h"

#include "SymbolWriter.h"

#include <fmt/format.h>

namespace sqCli {

namespace {

using Reasons = std::vector<std::string>;

struct tagFileSymbol {
    tagSymbolRow Row;
    std::size_t Line;
    // The same symbol in the store; key 0 when it is not there.
    LONG Key = 0;
    tagSymbol Stored;
};

class CSymbolImport {
public:
    CSymbolImport(tagImportRun& run, const tagImportFile& file)
        : m_Run(run), m_File(file), m_References(run.Store), m_Writer(run.Store, m_References) {}

    tagImportCounts Run() {
        for (const tagCsvRecord& record : m_File.Table.Rows())
            Test(record);
        for (const tagKeyedExchange& exchange : m_References.Exchanges())
            if (m_Exchanges.contains(exchange.Exchange.Name))
                FindStored(exchange);
        tagImportCounts counts;
        if (!m_File.Problems.empty())
            return counts;
        CProgress progress(m_Run.Console, m_File.Label, m_Symbols.size());
        for (const tagFileSymbol& symbol : m_Symbols) {
            progress.Advance(1);
            BringIn(symbol, counts);
        }
        return counts;
    }

private:
    void Tell(std::size_t line, std::string reason) { m_File.Problems.push_back({line, std::move(reason)}); }

    void Test(const tagCsvRecord& record) {
        SymbolValues values;
        for (std::size_t column = 0; column < values.size(); ++column)
            values[column] = m_File.Table.Value(record, column);
        Reasons reasons;
        auto row = ParseSymbol(values, reasons);
        if (row)
            m_References.Test(m_Run, *row, reasons);
        if (row) {
            const auto [first, fresh] = m_Places.emplace(IdOf(*row), m_Symbols.size());
            if (!fresh)
                reasons.push_back(fmt::format("\"{}\" repeats line {} in name, category, feed and exchange: remove "
                                              "one of them",
                                              row->Symbol.Name, m_Symbols[first->second].Line));
            m_Exchanges.insert(row->Exchange);
            m_Symbols.push_back({std::move(*row), record.Line, 0, {}});
        }
        for (std::string& reason : reasons)
            Tell(record.Line, std::move(reason));
    }

    void FindStored(const tagKeyedExchange& exchange) {
        const CSymbolTable symbols(m_Run.Store, exchange.Key);
        for (ULONG row = 0; row < symbols.Count(); ++row) {
            const auto place = m_Places.find({std::string(symbols.Name(row)), symbols.Category(row),
                                              m_References.FeedName(symbols.Feed(row)), exchange.Exchange.Name});
            if (place == m_Places.end())
                continue;
            tagFileSymbol& symbol = m_Symbols[place->second];
            if (symbol.Key != 0)
                Tell(symbol.Line,
                     fmt::format("the store has \"{}\" twice in that category, feed and exchange, with "
                                 "the keys {} and {}: have a host delete one of them",
                                 symbol.Row.Symbol.Name, symbol.Key, symbols.Key(row)));
            symbol.Key = symbols.Key(row);
            symbol.Stored = symbols.At(row);
        }
    }

    void BringIn(const tagFileSymbol& symbol, tagImportCounts& counts) {
        try {
            if (symbol.Key == 0)
                Insert(symbol, counts);
            else
                Compare(symbol, counts);
        } catch (const CStoreRefusal& refusal) {
            Tell(symbol.Line, fmt::format("the store refused the row. {}", refusal.what()));
        }
    }

    void Insert(const tagFileSymbol& symbol, tagImportCounts& counts) {
        if (!m_Run.Options.DryRun)
            m_Writer.Insert(symbol.Row);
        ++counts.Added;
    }

    void Compare(const tagFileSymbol& symbol, tagImportCounts& counts) {
        const tagSymbolRow before = m_References.RowOf(symbol.Stored, symbol.Row.Exchange);
        if (before == symbol.Row) {
            ++counts.Unchanged;
        } else if (!m_Run.Options.Update) {
            ++counts.Different;
        } else {
            if (!m_Run.Options.DryRun)
                m_Writer.Update(symbol.Key, symbol.Stored, before, symbol.Row);
            ++counts.Updated;
        }
    }

    tagImportRun& m_Run;
    const tagImportFile& m_File;
    CSymbolReferences m_References;
    CSymbolWriter m_Writer;
    std::vector<tagFileSymbol> m_Symbols; // in the order of the file
    std::map<SymbolId, std::size_t> m_Places;
    std::set<std::string> m_Exchanges;
};

} // namespace

tagImportCounts ImportSymbols(tagImportRun& run, const tagImportFile& file) {
    return CSymbolImport(run, file).Run();
}

} // namespace sqCli
