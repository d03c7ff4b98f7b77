#pragma once
// Reports what nobody handles, each catcher remembering what it replaced and calling it afterwards:
//
//   invalid parameter      of the process; "PROCESS" may end it, with exit code 0xC000000D
//   unhandled exception    of the process; always ends it, with exit code -1
//   structured exception   hardware faults, of each thread that installed it
//
// Installs are counted: the first puts the catcher in place, the removal that takes the count to 0 puts back what
// was there. Any thread may call; Install and Remove of the structured-exception catcher concern the calling
// thread. Catching disturbs the thread's last error for no one: not for the handler that is called afterwards, nor
// for the caller.

#include "platform/crash.h"

namespace BugSlayerUtil {

enum class ECrashCatcher { InvalidParameter, UnhandledException, StructuredException };

template <ECrashCatcher Kind>
class CCrashCatcher {
public:
    static void Install();
    static void Remove();
    // Over all threads.
    [[nodiscard]] static LONG InstallCount();
};

using CInvalidParameterCatcher = CCrashCatcher<ECrashCatcher::InvalidParameter>;
using CUnhandledExceptionCatcher = CCrashCatcher<ECrashCatcher::UnhandledException>;
using CStructuredExceptionCatcher = CCrashCatcher<ECrashCatcher::StructuredException>;

extern template class CCrashCatcher<ECrashCatcher::InvalidParameter>;
extern template class CCrashCatcher<ECrashCatcher::UnhandledException>;
extern template class CCrashCatcher<ECrashCatcher::StructuredException>;

// All three, for the length of a thread: stands at the head of a thread's start function.
class CThreadCrashCatchers {
public:
    CThreadCrashCatchers();
    ~CThreadCrashCatchers();
    CThreadCrashCatchers(const CThreadCrashCatchers&) = delete;
    CThreadCrashCatchers& operator=(const CThreadCrashCatchers&) = delete;
};

} // namespace BugSlayerUtil
