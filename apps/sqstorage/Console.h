// What the program says. Results go to the standard output, everything else to the standard error stream.
//
// Colours only on a terminal and not when NO_COLOR is set to something. One thread uses it.
#pragma once

#include "ExitStatus.h"
#include "platform/com/types.h"
#include "rows/RowSet.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace sqCli {

enum class EFormat { Table, Csv, Json };

// Nobody reads the output any more: whoever did has all that was wanted. A command that only shows something ends
// with this, as done.
class COutputClosed : public CCommandError {
public:
    using CCommandError::CCommandError;
};

class CConsole {
public:
    CConsole(EFormat format, bool quiet);

    // Rows in the chosen format.
    void Print(const tagRowSet& rows) const;
    // Text as it stands.
    void PrintText(std::string_view text) const;

    // Nothing with --quiet.
    void Note(std::string_view sentence) const;
    void Warn(std::string_view sentence) const;
    void Error(std::string_view sentence) const;

    // Raises CCommandError when the output did not reach its place, as on a full disk, and COutputClosed behind a
    // reader that has ended.
    void Flush() const;

    [[nodiscard]] EFormat Format() const noexcept { return m_Format; }
    [[nodiscard]] bool ColoursOutput() const noexcept { return m_ColoursOutput; }
    [[nodiscard]] bool ShowsProgress() const noexcept { return m_ShowsProgress; }

private:
    EFormat m_Format;
    bool m_Quiet;
    bool m_ColoursOutput;
    bool m_ColoursErrors;
    bool m_ShowsProgress;
    mutable DWORD m_WriteError = 0; // the first of the standard output
};

// A bar on the standard error stream, on a terminal only; it is wiped off at the end.
class CProgress {
public:
    CProgress(const CConsole& console, std::string label, std::size_t total);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    void Advance(std::size_t steps);

private:
    void Draw() const;

    bool m_Shown;
    std::string m_Label;
    std::size_t m_Total;
    std::size_t m_Done = 0;
    std::size_t m_Drawn = 0; // per cent
};

} // namespace sqCli
