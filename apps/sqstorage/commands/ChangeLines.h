// Changes of the store as lines on the standard output, in the chosen format, each as soon as it is told.
#pragma once

#include "apps/sqstorage/Console.h"
#include "platform/com/types.h"

namespace sqCli {

class CChangeLines {
public:
    explicit CChangeLines(const CConsole& console) : m_Console(console) {}

    // Raises CCommandError when the line did not reach its place.
    void Tell(ULONG mask, LONG value);
    // Sets other results off from the lines, if there are any.
    void Close() const;

private:
    const CConsole& m_Console;
    bool m_IsFirst = true;
};

} // namespace sqCli
