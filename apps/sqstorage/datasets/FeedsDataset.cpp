// Data feeds, by name.
#include "KeyedTable.h"
#include "NumberRules.h"
#include "TextRules.h"
#include "apps/sqstorage/store/DataFeeds.h"

#include <algorithm>
#include <array>

namespace sqCli {

namespace {

enum Rule : std::size_t { RuleName, RuleShortName, RuleDllName, RuleClsid, RuleAscii, RuleActive };
constexpr std::array Rules{tagColumnRule{"DATA_FEED_NAME", true},
                           tagColumnRule{"DATA_FEED_SHORT_NAME", true},
                           tagColumnRule{"DATA_FEED_DLL_NAME", true},
                           tagColumnRule{"CLSID", true},
                           tagColumnRule{"ASCII", false},
                           tagColumnRule{"ACTIVE", false}};

// What the column holds, in characters.
constexpr std::size_t LongestFile = 255;

void Note(Reasons& reasons, std::optional<std::string> problem) {
    if (problem)
        reasons.push_back(std::move(*problem));
}

class CFeedTable {
public:
    static constexpr std::string_view Noun = "feed";

    struct Row : tagDataFeed {
        const std::string& Id() const { return Name; }
        friend bool operator==(const Row&, const Row&) = default;
    };

    // Without a run and its file for an export.
    explicit CFeedTable(CStore& store, const tagImportRun* run = nullptr, const tagImportFile* file = nullptr)
        : m_Store(store), m_Run(run), m_File(file) {}

    std::vector<tagStoredRow<Row>> Rows() {
        std::vector<tagStoredRow<Row>> rows;
        for (tagKeyedDataFeed& feed : SelectDataFeeds(m_Store)) {
            if (feed.Feed.ReadsText && !IsReleased(feed.Feed.Name))
                m_TextFeed = feed.Feed.Name;
            rows.push_back({feed.Key, {std::move(feed.Feed)}});
        }
        return rows;
    }

    std::optional<Row> Parse(const RowValues& values, Reasons& reasons) {
        const std::size_t before = reasons.size();
        Note(reasons, NameProblem(Rules[RuleName].Name, values[RuleName], LongestFeedName));
        Note(reasons, NameProblem(Rules[RuleShortName].Name, values[RuleShortName], LongestFeedName));
        Note(reasons, NameProblem(Rules[RuleDllName].Name, values[RuleDllName], LongestFile));
        Note(reasons, NameProblem(Rules[RuleClsid].Name, values[RuleClsid]));
        Note(reasons, QuoteProblem(Rules[RuleDllName].Name, values[RuleDllName]));
        Note(reasons, QuoteProblem(Rules[RuleClsid].Name, values[RuleClsid]));
        const auto ascii = ParseWholeOr(0, Rules[RuleAscii].Name, values[RuleAscii], 0, 1, reasons);
        const auto active = ParseWholeOr(1, Rules[RuleActive].Name, values[RuleActive], 0, 1, reasons);
        if (reasons.size() == before && *ascii == 1)
            Note(reasons, TextFeedProblem(std::string(values[RuleName])));
        if (reasons.size() != before)
            return std::nullopt;
        return Row{{std::string(values[RuleName]), std::string(values[RuleShortName]),
                    std::string(values[RuleDllName]), std::string(values[RuleClsid]), *ascii == 1, *active == 1}};
    }

    std::vector<Cell> Cells(const Row& row) {
        return {row.Name,
                row.ShortName,
                row.DllName,
                row.Clsid,
                std::int64_t{row.ReadsText ? 1 : 0},
                std::int64_t{row.IsActive ? 1 : 0}};
    }
    void Insert(const Row& row) { InsertDataFeed(m_Store, row); }
    void Update(const tagStoredRow<Row>& there, const Row& row) { UpdateDataFeed(m_Store, there.Key, row); }

private:
    // The file takes the flag from the feed, wherever the row of the next one stands.
    bool IsReleased(const std::string& name) const {
        if (!m_Run || !m_Run->Options.Update)
            return false;
        return std::ranges::any_of(m_File->Table.Rows(), [&](const tagCsvRecord& row) {
            Reasons ignored;
            return m_File->Table.Value(row, RuleName) == name &&
                   ParseWholeOr(0, Rules[RuleAscii].Name, m_File->Table.Value(row, RuleAscii), 0, 1, ignored) == 0;
        });
    }

    // The store asks for one and takes the first.
    std::optional<std::string> TextFeedProblem(const std::string& name) {
        if (m_TextFeed.empty())
            m_TextFeed = name;
        if (m_TextFeed == name)
            return std::nullopt;
        return fmt::format(
            "ASCII is 1 here and at the feed \"{}\", and one feed alone can read text files: make it "
            "0 at one of them",
            m_TextFeed);
    }

    CStore& m_Store;
    const tagImportRun* m_Run;
    const tagImportFile* m_File;
    std::string m_TextFeed;
};

class CFeedsDataset final : public ISmallDataset {
public:
    std::string_view Name() const override { return "feeds"; }
    std::span<const tagColumnRule> Columns() const override { return Rules; }

    tagRowSet List(CStore& store, const tagListFilter&) const override {
        CFeedTable table(store);
        tagRowSet rows{{"DATA_FEED"}, {}};
        for (const tagColumnRule& rule : Rules)
            rows.Columns.emplace_back(rule.Name);
        for (const auto& feed : table.Rows())
            rows.Rows.push_back(Joined({std::int64_t{feed.Key}}, table.Cells(feed.Value)));
        return rows;
    }

    tagRowSet Export(CStore& store, const CConsole& console) const override {
        const LONG textFeed = SelectTextFeed(store);
        const auto isIt = [&](const tagKeyedDataFeed& feed) { return feed.Key == textFeed; };
        if (textFeed != 0 && std::ranges::none_of(SelectDataFeeds(store), isIt))
            console.Warn(
                fmt::format("The feed that reads text files, with the key {}, is deleted, so ASCII is 0 in all "
                            "rows: make it 1 in that of the feed that is to read them.",
                            textFeed));
        return ExportTable(*this, console, CFeedTable(store));
    }

    tagImportCounts Import(tagImportRun& run, const tagImportFile& file) const override {
        return ImportTable(*this, run, file, CFeedTable(run.Store, &run, &file));
    }
};

} // namespace

const IDataset& FeedsDataset() {
    static const CFeedsDataset dataset;
    return dataset;
}

} // namespace sqCli
