// Rows to the standard output in the chosen format, a batch at a time and each at once, so that whoever reads sees
// the first rows before the last are known and none has to be kept.
//
// Together the batches give what CConsole::Print gives for all rows, but for the columns of a table: their widths
// are those of the first batch with rows, and a longer value moves the ones behind it to the right.
#pragma once

#include "Console.h"
#include "rows/TextTable.h"

#include <cstddef>
#include <optional>

namespace sqCli {

class CRowPrinter {
public:
    explicit CRowPrinter(const CConsole& console) : m_Console(console) {}

    // All batches have the same columns. Raises CCommandError when the output does not reach its place.
    void Print(const tagRowSet& batch);
    // Behind the last batch; there was one, if without rows.
    void Finish();

    [[nodiscard]] std::size_t Count() const noexcept { return m_Count; }

private:
    void PrintTable(const tagRowSet& batch);

    const CConsole& m_Console;
    std::optional<CTextTable> m_Table;
    std::size_t m_Count = 0;
    bool m_HasBegun = false;
};

} // namespace sqCli
