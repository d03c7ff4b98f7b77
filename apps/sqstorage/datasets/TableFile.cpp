#include "TableFile.h"

#include "platform/file.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <set>

namespace sqCli {

namespace {

std::string Listed(std::span<const tagColumnRule> rules) {
    std::string text;
    for (const tagColumnRule& rule : rules)
        text += fmt::format("{}{}{}", text.empty() ? "" : ", ", rule.Name, rule.Required ? "" : " (optional)");
    return text;
}

} // namespace

std::size_t CountRefusedRows(std::span<const tagRowProblem> problems, std::size_t rows) {
    std::set<std::size_t> lines;
    for (const tagRowProblem& problem : problems) {
        if (problem.IsOfAll)
            return rows;
        lines.insert(problem.Line);
        lines.insert(problem.OtherLines.begin(), problem.OtherLines.end());
    }
    return lines.size();
}

CTableFile::CTableFile(const std::filesystem::path& path, std::span<const tagColumnRule> rules,
                       std::vector<tagRowProblem>& problems)
    : m_Places(rules.size(), Absent) {
    try {
        std::vector<tagCsvRecord> records = ParseCsv(platform::ReadFile(path));
        m_RowCount = records.empty() ? 0 : records.size() - 1;
        if (records.empty()) {
            problems.push_back(
                {1, fmt::format("the file is empty: begin it with the header {}", Listed(rules)), {}, true});
            return;
        }
        const std::size_t before = problems.size();
        TakeHeader(records.front(), rules, problems);
        if (problems.size() == before)
            TakeRows(std::move(records), problems);
    } catch (const CCsvError& error) {
        problems.push_back({error.Line(), error.what(), {}, true});
    }
}

void CTableFile::TakeHeader(const tagCsvRecord& header, std::span<const tagColumnRule> rules,
                            std::vector<tagRowProblem>& problems) {
    for (std::size_t place = 0; place < header.Fields.size(); ++place) {
        const auto rule = std::find_if(rules.begin(), rules.end(), [&](const tagColumnRule& candidate) {
            return candidate.Name == header.Fields[place];
        });
        if (rule == rules.end())
            problems.push_back({header.Line,
                                fmt::format("the header has an unknown column \"{}\": the columns are {}",
                                            header.Fields[place], Listed(rules)),
                                {},
                                true});
        else if (auto& known = m_Places[static_cast<std::size_t>(rule - rules.begin())]; known != Absent)
            problems.push_back(
                {header.Line, fmt::format("the header names {} twice: remove one", rule->Name), {}, true});
        else
            known = place;
    }
    for (std::size_t rule = 0; rule < rules.size(); ++rule)
        if (rules[rule].Required && m_Places[rule] == Absent)
            problems.push_back(
                {header.Line,
                 fmt::format("the header lacks the column {}: the columns are {}", rules[rule].Name, Listed(rules)),
                 {},
                 true});
}

void CTableFile::TakeRows(std::vector<tagCsvRecord>&& records, std::vector<tagRowProblem>& problems) {
    const std::size_t width = records.front().Fields.size();
    for (auto record = records.begin() + 1; record != records.end(); ++record) {
        if (record->Fields.size() == width)
            m_Rows.push_back(std::move(*record));
        else
            problems.push_back({record->Line, fmt::format("the row has {} value(s) where the header has {}: add or "
                                                          "remove a comma, or put a value with a comma in quotes",
                                                          record->Fields.size(), width)});
    }
}

std::string_view CTableFile::Value(const tagCsvRecord& row, std::size_t rule) const {
    return m_Places[rule] == Absent ? std::string_view() : std::string_view(row.Fields[m_Places[rule]]);
}

} // namespace sqCli
