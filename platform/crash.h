#pragma once
// Hooks for what a program cannot handle, and the means to end it.
//
// A hardware fault runs, in this order: the faulting thread's translator, the process-wide filter, and the handlers
// that were there before. A C++ exception that nobody catches runs the filter, then the earlier terminate handler.
// The process ends when all of them have returned. The system's handlers are taken over while a filter or any
// translator is set, and given back after that. Filter and translator run on the faulting thread, in a fault on a
// stack of its own if that thread set one of them: they may read and report, but must not throw or jump out.
//
// Codes: SIGSEGV 0xC0000005. SIGBUS 0xC0000006, misaligned access 0x80000002. SIGILL 0xC000001D.
// SIGFPE: integer division 0xC0000094, integer overflow 0xC0000095, floating-point division 0xC000008E, inexact
// 0xC000008F, invalid 0xC0000090, overflow 0xC0000091, underflow 0xC0000093, subscript 0xC000008C.
// An uncaught C++ exception, or any other call of std::terminate, 0xE06D7363.

#include "platform/com/types.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace platform {

// Registers of a thread at one moment. A plain value, free of pointers into the thread's stack frame.
struct CThreadContext {
    std::uintptr_t InstructionPointer = 0;
    std::uintptr_t StackPointer = 0;
    std::uintptr_t FramePointer = 0;
    // In the system's order; as many as RegisterCount says.
    std::array<std::uint64_t, 36> Registers{};
    std::size_t RegisterCount = 0;
};

// The calling thread at the place of the call.
[[nodiscard]] CThreadContext CaptureThreadContext() noexcept;

struct tagExceptionInfo {
    DWORD Code;
    const void* Address; // the instruction
    const void* Data;    // the memory it touched, for SIGSEGV and SIGBUS; else null
    bool Continuable;
    const CThreadContext* Context; // lives as long as the call
};

// An argument that a checked function refuses, such as a text too long for its buffer.
struct tagInvalidParameter {
    const wchar_t* Expression;
    const wchar_t* Function;
    const void* Address; // where the report was made
};

// Each setter returns what it replaces; null means none and uninstalls. They are for the whole process, the
// translator for the calling thread. Any thread may call.
using InvalidParameterHandler = void (*)(const tagInvalidParameter&);
InvalidParameterHandler SetInvalidParameterHandler(InvalidParameterHandler handler) noexcept;

using ExceptionFilter = void (*)(const tagExceptionInfo&);
ExceptionFilter SetUnhandledExceptionFilter(ExceptionFilter filter);

using ExceptionTranslator = void (*)(const tagExceptionInfo&);
ExceptionTranslator SetExceptionTranslator(ExceptionTranslator translator);

// Runs the handler, if there is one, and returns: the caller then refuses the call.
void ReportInvalidParameter(const wchar_t* expression, const wchar_t* function);

// Stops in the debugger. Without one the process ends with SIGTRAP, unless a break handler is set: it is then
// called instead, and execution goes on.
void DebugBreak();
using BreakHandler = void (*)();
BreakHandler SetBreakHandler(BreakHandler handler) noexcept;

// Ends the process at once: no destructors, nothing flushed. The system keeps the low 8 bits of the code, so that
// -1 shows as 255.
[[noreturn]] void TerminateProcess(int code) noexcept;

// Masks the floating-point exceptions, clears their flags, rounds to nearest: the state in which a thread starts.
void ResetFloatingPoint() noexcept;

} // namespace platform
