#include "Console.h"

#include "platform/environment.h"
#include "platform/last_error.h"
#include "platform/terminal.h"
#include "platform/text.h"
#include "rows/Csv.h"
#include "rows/Json.h"
#include "rows/TextTable.h"

#include <algorithm>
#include <cstdio>
#include <fmt/format.h>

namespace sqCli {

namespace {

using platform::EStandardStream;

bool ColoursAllowed() { return platform::GetEnvironment(L"NO_COLOR").value_or(std::wstring()).empty(); }

bool Write(std::FILE* stream, std::string_view text) {
    return std::fwrite(text.data(), 1, text.size(), stream) == text.size();
}

void Say(const char* colour, bool colours, std::string_view kind, std::string_view sentence) {
    const std::string text = Printable(std::string(sentence));
    Write(stderr,
          colours ? fmt::format("{}{}:\x1b[0m {}\n", colour, kind, text) : fmt::format("{}: {}\n", kind, text));
}

} // namespace

CConsole::CConsole(EFormat format, bool quiet)
    : m_Format(format), m_Quiet(quiet),
      m_ColoursOutput(platform::IsTerminal(EStandardStream::Output) && ColoursAllowed()),
      m_ColoursErrors(platform::IsTerminal(EStandardStream::Error) && ColoursAllowed()),
      m_ShowsProgress(!quiet && platform::IsTerminal(EStandardStream::Error)) {}

void CConsole::Print(const tagRowSet& rows) const {
    switch (m_Format) {
    case EFormat::Table:
        PrintText(WriteTextTable(rows, m_ColoursOutput));
        break;
    case EFormat::Csv:
        PrintText(WriteCsv(rows));
        break;
    case EFormat::Json:
        PrintText(WriteJson(rows));
        break;
    }
}

void CConsole::PrintText(std::string_view text) const {
    if (!Write(stdout, text) && m_WriteError == 0)
        m_WriteError = platform::GetLastError();
}

void CConsole::Note(std::string_view sentence) const {
    if (!m_Quiet)
        Say("", false, "note", sentence);
}

void CConsole::Warn(std::string_view sentence) const { Say("\x1b[33m", m_ColoursErrors, "warning", sentence); }

void CConsole::Error(std::string_view sentence) const { Say("\x1b[31m", m_ColoursErrors, "error", sentence); }

void CConsole::Flush() const {
    if (std::fflush(stdout) != 0 && m_WriteError == 0)
        m_WriteError = platform::GetLastError();
    if (m_WriteError == 0)
        return;
    const std::string sentence = fmt::format("The result could not be written ({}): check where the output goes.",
                                             platform::ToUtf8(platform::SystemErrorText(m_WriteError)));
    if (platform::IsReaderGone(m_WriteError))
        throw COutputClosed(EExitStatus::Done, sentence);
    throw CCommandError(EExitStatus::WrongUsage, sentence);
}

CProgress::CProgress(const CConsole& console, std::string label, std::size_t total)
    : m_Shown(console.ShowsProgress() && total > 0), m_Label(std::move(label)), m_Total(total) {
    Draw();
}

CProgress::~CProgress() {
    if (m_Shown)
        Write(stderr, "\r\x1b[K");
}

void CProgress::Advance(std::size_t steps) {
    m_Done = std::min(m_Done + steps, m_Total);
    if (m_Total == 0 || m_Done * 100 / m_Total == m_Drawn)
        return;
    m_Drawn = m_Done * 100 / m_Total;
    Draw();
}

void CProgress::Draw() const {
    if (!m_Shown || m_Total == 0)
        return;
    const std::string text = fmt::format(" {}/{} {}", m_Done, m_Total, m_Label);
    const auto width = static_cast<std::size_t>(platform::TerminalWidth(EStandardStream::Error));
    const std::size_t room = width > text.size() + 12 ? std::min<std::size_t>(width - text.size() - 3, 40) : 0;
    const std::size_t filled = room * m_Done / m_Total;
    Write(stderr, fmt::format("\r[{}{}]{}", std::string(filled, '#'), std::string(room - filled, '.'), text));
}

} // namespace sqCli
