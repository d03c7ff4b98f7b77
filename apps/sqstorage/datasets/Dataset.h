// What the program lists, exports and imports: one dataset for each kind of reference data, one source file for
// each dataset. A dataset called "holidays" is the file holidays.csv and the argument of "list holidays".
#pragma once

#include "TableFile.h"
#include "apps/sqstorage/Console.h"
#include "apps/sqstorage/rows/RowSet.h"
#include "apps/sqstorage/store/Store.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

struct tagListFilter {
    std::optional<std::string> Calendar;
    std::optional<std::string> Session;
    std::optional<tagDay> From;
    std::optional<tagDay> To;
    std::optional<std::string> Feed;
    std::optional<std::string> Exchange;
    std::optional<LONG> Category;
    std::optional<std::string> Name;
    std::optional<std::string> Description;
};

struct tagImportOptions {
    bool DryRun = false;
    bool Update = false;
};

// What became of the rows of one file. In a dry run, what would have become of them.
struct tagImportCounts {
    std::size_t Rows = 0; // in the file
    std::size_t Added = 0;
    std::size_t Updated = 0;
    std::size_t Unchanged = 0;
    std::size_t Different = 0; // in the store with other values, which stay
    std::size_t Refused = 0;
    std::size_t Problems = 0; // told of, with rows or with the file itself

    [[nodiscard]] std::size_t Written() const { return Added + Updated; }

    tagImportCounts& operator+=(const tagImportCounts& other) {
        Rows += other.Rows;
        Added += other.Added;
        Updated += other.Updated;
        Unchanged += other.Unchanged;
        Different += other.Different;
        Refused += other.Refused;
        Problems += other.Problems;
        return *this;
    }
};

// One import over several files.
struct tagImportRun {
    CStore& Store;
    const CConsole& Console;
    tagImportOptions Options;
    // By dataset, the ids of the named rows that a dry run would have added, so that later files may refer to them.
    std::map<std::string_view, std::set<std::string>> Planned;

    [[nodiscard]] bool IsPlanned(std::string_view dataset, const std::string& id) const {
        const auto ids = Planned.find(dataset);
        return ids != Planned.end() && ids->second.contains(id);
    }
};

// One export over all files.
struct tagExportRun {
    CStore& Store;
    const CConsole& Console;
    // By dataset, the names of the rows that are written: later files refer to no others.
    std::map<std::string_view, std::set<std::string>> Written;

    [[nodiscard]] bool IsWritten(std::string_view dataset, const std::string& name) const {
        const auto names = Written.find(dataset);
        return names != Written.end() && names->second.contains(name);
    }
};

// One file of an import. `Problems` holds what is wrong so far; while there is something, nothing may be written.
struct tagImportFile {
    std::string Label; // for messages
    const CTableFile& Table;
    std::vector<tagRowProblem>& Problems;
};

// Takes a batch of rows. Each batch has the columns.
using TakeRows = std::function<void(const tagRowSet&)>;

class IDataset {
public:
    [[nodiscard]] virtual std::string_view Name() const = 0;
    [[nodiscard]] virtual std::span<const tagColumnRule> Columns() const = 0;
    // The options by which "list" may narrow the rows down.
    [[nodiscard]] virtual std::span<const std::string_view> Filters() const { return {}; }

    // In one batch or in many; one comes in any case, if without rows. Raises CStoreRefusal, and CCommandError for
    // a filter that names nothing.
    virtual void ListTo(CStore& store, const tagListFilter& filter, const TakeRows& take) const = 0;
    // The same, sorted, each row once, in the form in which Import takes it. A row that Import would refuse is left
    // out with a warning, and so is one that refers to a row left out before.
    virtual void ExportTo(tagExportRun& run, const TakeRows& take) const = 0;
    // Tests all rows, and adds to the problems; only when there are none, writes what the store lacks.
    virtual tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const = 0;

protected:
    ~IDataset() = default;
};

// A dataset of few rows, which all come at once. The first column of a named row is its name.
class ISmallDataset : public IDataset {
public:
    void ListTo(CStore& store, const tagListFilter& filter, const TakeRows& take) const final {
        take(List(store, filter));
    }
    void ExportTo(tagExportRun& run, const TakeRows& take) const final;

protected:
    ~ISmallDataset() = default;

private:
    // Sorted.
    [[nodiscard]] virtual tagRowSet List(CStore& store, const tagListFilter& filter) const = 0;
    [[nodiscard]] virtual tagRowSet Export(CStore& store, const CConsole& console) const = 0;
};

// All of them, each behind those it refers to.
[[nodiscard]] std::span<const IDataset* const> Datasets();
// Null when there is none of that name.
[[nodiscard]] const IDataset* FindDataset(std::string_view name);
// With commas between them.
[[nodiscard]] std::string DatasetNames();

[[nodiscard]] const IDataset& HolidaysDataset();
[[nodiscard]] const IDataset& HolidayDatesDataset();
[[nodiscard]] const IDataset& SettingsDataset();
[[nodiscard]] const IDataset& FeedsDataset();
[[nodiscard]] const IDataset& SessionsDataset();
[[nodiscard]] const IDataset& SessionDetailsDataset();
[[nodiscard]] const IDataset& ExchangesDataset();
[[nodiscard]] const IDataset& CurrenciesDataset();
[[nodiscard]] const IDataset& SymbolsDataset();

} // namespace sqCli
