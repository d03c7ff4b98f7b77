// A CSV file that holds rows of one table, its columns known by name.
#pragma once

#include "apps/sqstorage/rows/Csv.h"

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sqCli {

struct tagColumnRule {
    std::string_view Name;
    bool Required;
};

// What is wrong with a row, or with the file at that line. The reason is the rest of a sentence.
struct tagRowProblem {
    std::size_t Line;
    std::string Reason;
    std::vector<std::size_t> OtherLines = {}; // whose rows are refused for it with that line's
    bool IsOfAll = false;                     // all rows of the file are
};

// A row is refused once, however many problems are its own or those of rows that it belongs with. `rows` are those
// of the file.
[[nodiscard]] std::size_t CountRefusedRows(std::span<const tagRowProblem> problems, std::size_t rows);

class CTableFile {
public:
    // Reads the file and finds the columns. What is wrong with the file as a whole, and each row that is not as
    // long as the header, is added to the problems; such a row is left out. Raises platform::CFileError when the
    // file cannot be read.
    CTableFile(const std::filesystem::path& path, std::span<const tagColumnRule> rules,
               std::vector<tagRowProblem>& problems);

    [[nodiscard]] const std::vector<tagCsvRecord>& Rows() const noexcept { return m_Rows; }
    // In the file, those left out included.
    [[nodiscard]] std::size_t RowCount() const noexcept { return m_RowCount; }
    // By the place of its rule; empty when the file lacks the column.
    [[nodiscard]] std::string_view Value(const tagCsvRecord& row, std::size_t rule) const;

private:
    void TakeHeader(const tagCsvRecord& header, std::span<const tagColumnRule> rules,
                    std::vector<tagRowProblem>& problems);
    void TakeRows(std::vector<tagCsvRecord>&& records, std::vector<tagRowProblem>& problems);

    static constexpr std::size_t Absent = static_cast<std::size_t>(-1);

    std::vector<std::size_t> m_Places; // of each rule, in the file
    std::vector<tagCsvRecord> m_Rows;
    std::size_t m_RowCount = 0;
};

} // namespace sqCli
