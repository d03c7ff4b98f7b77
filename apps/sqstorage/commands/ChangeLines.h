// Changes of the store as lines on the standard output, in the chosen format, each as soon as it is told.
#pragma once

#include "apps/sqstorage/Console.h"
#include "platform/com/types.h"

namespace sqCli {

class CChangeLines {
public:
    // What happens when nobody reads the lines any more: they are all there is to do, or there is more.
    enum class EReaderGone { Raises, DoesNotMatter };

    explicit CChangeLines(const CConsole& console, EReaderGone readerGone = EReaderGone::Raises)
        : m_Console(console), m_ReaderGone(readerGone) {}

    // Raises CCommandError when the line did not reach its place.
    void Tell(ULONG mask, LONG value);
    // Sets other results off from the lines, if there are any.
    void Close() const;

private:
    const CConsole& m_Console;
    EReaderGone m_ReaderGone;
    bool m_IsFirst = true;
};

} // namespace sqCli
