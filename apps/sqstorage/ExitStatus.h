// How the program ends, and the error that carries the end from where it is known to where it is told.
#pragma once

#include <stdexcept>
#include <string>

namespace sqCli {

// What scripts rely on.
enum class EExitStatus : int {
    Done = 0,
    Refused = 1,    // nothing found, refused, or check has something to say
    WrongUsage = 2, // also a file that cannot be read or written
    NotOpened = 3,  // the store could not be opened
    RowsRefused = 4 // of an import
};

// One sentence, in UTF-8, that says what happened and what to do.
class CCommandError : public std::runtime_error {
public:
    CCommandError(EExitStatus status, const std::string& sentence)
        : std::runtime_error(sentence), m_Status(status) {}
    [[nodiscard]] EExitStatus Status() const noexcept { return m_Status; }

private:
    EExitStatus m_Status;
};

} // namespace sqCli
