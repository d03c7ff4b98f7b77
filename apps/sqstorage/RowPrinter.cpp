#include "RowPrinter.h"

#include "rows/Csv.h"
#include "rows/Json.h"

namespace sqCli {

void CRowPrinter::Print(const tagRowSet& batch) {
    switch (m_Console.Format()) {
    case EFormat::Table:
        PrintTable(batch);
        break;
    case EFormat::Csv:
        m_Console.PrintText(m_HasBegun ? WriteCsvRows(batch) : WriteCsv(batch));
        break;
    case EFormat::Json:
        m_Console.PrintText((m_HasBegun ? "" : "[") + WriteJsonItems(batch, m_Count == 0));
        break;
    }
    m_HasBegun = true;
    m_Count += batch.Rows.size();
    m_Console.Flush();
}

void CRowPrinter::PrintTable(const tagRowSet& batch) {
    if (batch.Rows.empty())
        return;
    if (!m_Table) {
        m_Table.emplace(batch);
        m_Console.PrintText(m_Table->Head(m_Console.ColoursOutput()));
    }
    m_Console.PrintText(m_Table->Lines(batch));
}

void CRowPrinter::Finish() {
    if (m_Console.Format() == EFormat::Json)
        m_Console.PrintText(m_Count == 0 ? "]\n" : "\n]\n");
}

} // namespace sqCli
