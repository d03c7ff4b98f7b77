#include "platform/posix/crash_fault.h"

#include <algorithm>

namespace platform {

namespace {

DWORD CodeOfArithmeticFault(int signalCode) noexcept {
    switch (signalCode) {
    case FPE_INTDIV:
        return 0xC0000094;
    case FPE_INTOVF:
        return 0xC0000095;
    case FPE_FLTDIV:
        return 0xC000008E;
    case FPE_FLTRES:
        return 0xC000008F;
    case FPE_FLTOVF:
        return 0xC0000091;
    case FPE_FLTUND:
        return 0xC0000093;
    case FPE_FLTSUB:
        return 0xC000008C;
    default: // FPE_FLTINV, and a signal that was sent
        return 0xC0000090;
    }
}

} // namespace

DWORD CodeOfFault(int signal, int signalCode) noexcept {
    switch (signal) {
    case SIGFPE:
        return CodeOfArithmeticFault(signalCode);
    case SIGILL:
        return 0xC000001D;
    case SIGBUS:
        return signalCode == BUS_ADRALN ? 0x80000002 : 0xC0000006;
    default:
        return 0xC0000005;
    }
}

#if defined(__x86_64__)

CThreadContext MakeThreadContext(const ucontext_t& native) noexcept {
    const auto& registers = native.uc_mcontext.gregs;
    CThreadContext context;
    context.InstructionPointer = static_cast<std::uintptr_t>(registers[REG_RIP]);
    context.StackPointer = static_cast<std::uintptr_t>(registers[REG_RSP]);
    context.FramePointer = static_cast<std::uintptr_t>(registers[REG_RBP]);
    std::copy(std::begin(registers), std::end(registers), context.Registers.begin());
    context.RegisterCount = std::size(registers);
    return context;
}

#elif defined(__aarch64__)

CThreadContext MakeThreadContext(const ucontext_t& native) noexcept {
    const auto& machine = native.uc_mcontext;
    CThreadContext context;
    context.InstructionPointer = machine.pc;
    context.StackPointer = machine.sp;
    context.FramePointer = machine.regs[29];
    std::copy(std::begin(machine.regs), std::end(machine.regs), context.Registers.begin());
    context.RegisterCount = std::size(machine.regs);
    return context;
}

#else
#error "MakeThreadContext is to be written for this processor"
#endif

} // namespace platform
