// Import and export of a table whose rows are known by a name or a number. What one such table has of its own is
// told by a class with
//
//   Noun                        what a row is called in messages
//   Row                         a row as a file says it: a value with ==, and Id(), by which it is known
//   Rows()                      what the store holds, sorted
//   Parse(values, reasons)      the row that a file's values make, or nothing and why not
//   Cells(row)                  the values of a row, in the order of the dataset's columns
//   Insert(row), Update(stored, row)
//
// and, if there is such a thing,
//
//   Taken(row)                  the store has the row from now on, or would have it if this were no dry run
//   ExportProblem(key)          why an export leaves out a row that Parse would take
//
// Errors: CStoreRefusal out of Insert and Update is told of the row, and the other rows go on.
#pragma once

#include "Dataset.h"

#include <fmt/format.h>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace sqCli {

// In the order of the dataset's columns; one that the file lacks is empty.
using RowValues = std::vector<std::string_view>;
using Reasons = std::vector<std::string>;

template <class Row>
struct tagStoredRow {
    LONG Key;
    Row Value;
};

namespace detail {

template <class Row>
using RowId = std::decay_t<decltype(std::declval<const Row&>().Id())>;

template <class Row>
using StoredById = std::map<RowId<Row>, std::vector<tagStoredRow<Row>>>;

template <class Row>
struct tagLinedRow {
    Row Value;
    std::size_t Line;
};

// The rows of a good file, in its order.
template <class Table>
std::vector<tagLinedRow<typename Table::Row>> TestRows(const IDataset& dataset, const tagImportFile& file,
                                                       Table& table,
                                                       const StoredById<typename Table::Row>& stored) {
    using Row = typename Table::Row;
    std::vector<tagLinedRow<Row>> rows;
    std::map<RowId<Row>, std::size_t> lines;
    for (const tagCsvRecord& record : file.Table.Rows()) {
        RowValues values;
        for (std::size_t column = 0; column < dataset.Columns().size(); ++column)
            values.push_back(file.Table.Value(record, column));
        Reasons reasons;
        auto row = table.Parse(values, reasons);
        if (row) {
            const auto id = row->Id();
            if (const auto [first, fresh] = lines.emplace(id, record.Line); !fresh)
                reasons.push_back(
                    fmt::format("\"{}\" repeats line {}: remove one of them", values.front(), first->second));
            if (const auto there = stored.find(id); there != stored.end() && there->second.size() > 1)
                reasons.push_back(fmt::format("the store has {} {}s \"{}\": rename all but one of them",
                                              there->second.size(), Table::Noun, values.front()));
        }
        for (std::string& reason : reasons)
            file.Problems.push_back({record.Line, std::move(reason)});
        if (row)
            rows.push_back({std::move(*row), record.Line});
    }
    return rows;
}

// Counts what becomes of a row, and makes it so.
template <class Table, class Row>
void BringIn(const tagImportRun& run, Table& table, const tagStoredRow<Row>* there, const Row& row,
             tagImportCounts& counts) {
    if (there && there->Value == row) {
        ++counts.Unchanged;
    } else if (there && !run.Options.Update) {
        ++counts.Different;
    } else {
        if (!run.Options.DryRun)
            there ? table.Update(*there, row) : table.Insert(row);
        if constexpr (requires { table.Taken(row); })
            table.Taken(row);
        ++(there ? counts.Updated : counts.Added);
    }
}

} // namespace detail

template <class Table>
tagImportCounts ImportTable(const IDataset& dataset, tagImportRun& run, const tagImportFile& file, Table&& table) {
    using Row = typename std::decay_t<Table>::Row;
    detail::StoredById<Row> stored;
    for (tagStoredRow<Row>& row : table.Rows())
        stored[row.Value.Id()].push_back(std::move(row));
    const auto rows = detail::TestRows(dataset, file, table, stored);
    tagImportCounts counts;
    if (!file.Problems.empty())
        return counts;
    CProgress progress(run.Console, file.Label, rows.size());
    for (const auto& [row, line] : rows) {
        progress.Advance(1);
        const auto there = stored.find(row.Id());
        try {
            detail::BringIn(run, table, there == stored.end() ? nullptr : &there->second.front(), row, counts);
            // Nothing refers to rows that have no name.
            if constexpr (std::is_same_v<detail::RowId<Row>, std::string>)
                if (run.Options.DryRun)
                    run.Planned[dataset.Name()].insert(row.Id());
        } catch (const CStoreRefusal& refusal) {
            file.Problems.push_back({line, fmt::format("the store refused the row. {}", refusal.what())});
        }
    }
    return counts;
}

template <class Table>
tagRowSet ExportTable(const IDataset& dataset, const CConsole& console, Table&& table) {
    using Row = typename std::decay_t<Table>::Row;
    tagRowSet rows;
    for (const tagColumnRule& rule : dataset.Columns())
        rows.Columns.emplace_back(rule.Name);
    std::map<detail::RowId<Row>, Row> written;
    for (const tagStoredRow<Row>& stored : table.Rows()) {
        std::vector<Cell> cells = table.Cells(stored.Value);
        std::vector<std::string> texts;
        for (const Cell& cell : cells)
            texts.push_back(TextOf(cell));
        Reasons reasons;
        const auto row = table.Parse(RowValues(texts.begin(), texts.end()), reasons);
        if constexpr (requires { table.ExportProblem(stored.Key); })
            if (auto problem = table.ExportProblem(stored.Key))
                reasons.push_back(std::move(*problem));
        const auto [first, fresh] = written.emplace(stored.Value.Id(), stored.Value);
        if (row && !fresh && !(first->second == stored.Value))
            reasons.push_back(fmt::format("another {} is called \"{}\", too: rename one of them",
                                          std::decay_t<Table>::Noun, texts.front()));
        if (!reasons.empty())
            console.Warn(fmt::format("The {} with the key {} is left out, because {}.", std::decay_t<Table>::Noun,
                                     stored.Key, reasons.front()));
        else if (fresh)
            rows.Rows.push_back(std::move(cells));
    }
    return rows;
}

} // namespace sqCli
