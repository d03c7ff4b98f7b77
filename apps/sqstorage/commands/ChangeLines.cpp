#include "ChangeLines.h"

#include "apps/sqstorage/rows/Csv.h"
#include "apps/sqstorage/rows/Json.h"
#include "apps/sqstorage/rows/Moment.h"
#include "apps/sqstorage/store/ChangeKinds.h"
#include "platform/clock.h"

#include <algorithm>
#include <fmt/format.h>
#include <ranges>

namespace sqCli {

namespace {

// People read a column as one only when no line moves it.
std::string TableLine(const std::vector<Cell>& row) {
    static const std::size_t width = std::ranges::max(ChangeKinds | std::views::transform(&std::string_view::size));
    return fmt::format("{}  {:{}}  {}\n", TextOf(row[0]), TextOf(row[1]), width, TextOf(row[2]));
}

} // namespace

void CChangeLines::Tell(ULONG mask, LONG value) {
    const auto now = platform::WallClock();
    const tagRowSet rows{
        {"TIME", "CHANGE", "VALUE"},
        {{MomentText(now, platform::UtcOffset(now)), ChangeNames(mask), static_cast<std::int64_t>(value)}}};
    switch (m_Console.Format()) {
    case EFormat::Table:
        m_Console.PrintText(TableLine(rows.Rows.front()));
        break;
    case EFormat::Csv:
        m_Console.PrintText(m_IsFirst ? WriteCsv(rows) : WriteCsvRows(rows));
        break;
    case EFormat::Json:
        m_Console.PrintText(WriteJsonLines(rows));
        break;
    }
    m_IsFirst = false;
    try {
        m_Console.Flush();
    } catch (const COutputClosed&) {
        if (m_ReaderGone == EReaderGone::Raises)
            throw;
    }
}

void CChangeLines::Close() const {
    if (!m_IsFirst && m_Console.Format() != EFormat::Json)
        m_Console.PrintText("\n");
}

} // namespace sqCli
