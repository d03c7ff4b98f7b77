#pragma once
// The process's one diagnostics client: it finds the debug library, keeps its root object, and gives it up at exit.
//
// The library is optional. A start that finds none is tried again by a later report, at most once in a second, so
// that reporting without a library stays cheap. A library that is there but cannot be used - its export is missing
// or fails, or its "INIT" does - is tried again at each report. Either failure is shown each time if the registry
// asks for it (SettingsKey has a default value). The client ends with the process's exit handlers, at the turn that
// its first use gave it among them: what comes later is dropped, and nothing is looked for any more.
//
// Any thread may use the client at any time. Nothing that the library throws gets out of it.

#include "diagnostics/interface/DebugObject.h"
#include "platform/clock.h"

#include <atomic>
#include <cstdint>
#include <mutex>

namespace BugSlayerUtil {

using IDM_BugSlayerUtil::IDebugObject;

// A counted pointer that one thread may replace while others take copies of it.
class CSharedDebugObject {
public:
    [[nodiscard]] platform::CComPtr<IDebugObject> Get() const;
    void Set(platform::CComPtr<IDebugObject> object);

private:
    mutable std::mutex m_Lock;
    platform::CComPtr<IDebugObject> m_Object; // guarded by m_Lock
};

// What every client of the debug library offers and holds: the operations that it is asked for, and the state in
// which its start left it. `Client` and `Version` keep the clients of several versions apart as types; they do
// nothing here.
template <class Client, int Version>
class BugSlayerInitializer {
public:
    BugSlayerInitializer(const BugSlayerInitializer&) = delete;
    BugSlayerInitializer& operator=(const BugSlayerInitializer&) = delete;

    // Fills Object.
    virtual HRESULT LoadObject() = 0;
    // Makes the client ready; 0 when it is, or when an earlier call has already been made.
    virtual HRESULT Init() = 0;
    // Sends "TERMINATE", then ends the process with exit code -1.
    virtual void Terminate() = 0;
    // Send "IS CLEAN", "DO CLEAN", "REPORTDIALOG"; E_FAIL when the client is inactive.
    virtual HRESULT IsClean() = 0;
    virtual HRESULT DoClean() = 0;
    virtual HRESULT ReportDialog() = 0;

    CSharedDebugObject Object;
    std::atomic<std::uint8_t> Inited{0};
    std::atomic<std::uint8_t> Active{0};
    std::atomic<std::uint8_t> ShowFailure{0};

protected:
    BugSlayerInitializer() = default;
    ~BugSlayerInitializer() = default;

    std::recursive_mutex m_CriticalSection; // start and shutdown; a starting library may itself report
};

class BugSlayerClient final : public BugSlayerInitializer<BugSlayerClient, 0> {
public:
    BugSlayerClient() = default;

    HRESULT LoadObject() override;
    HRESULT Init() override;
    void Terminate() override;
    HRESULT IsClean() override;
    HRESULT DoClean() override;
    HRESULT ReportDialog() override;

    // What every report asks first: starts the client if that was not done.
    [[nodiscard]] bool Ready() noexcept {
        return Inited.load() ? Active.load() != 0 : TryStart(platform::TickCount());
    }
    // The same at a moment of the caller's, in milliseconds as platform::TickCount counts them.
    [[nodiscard]] bool ReadyAt(DWORD now) noexcept { return Inited.load() ? Active.load() != 0 : TryStart(now); }
    // As Ready, and the library wants trace records of this kind: 1 enter, 0 line, WarningLine, -1 leave.
    [[nodiscard]] bool Wants(LONG ident) noexcept { return Ready() && IsWanted(ident); }
    // The library is there and does not want them: nothing need be made ready for such a record.
    [[nodiscard]] bool Drops(LONG ident) const noexcept { return Active.load() != 0 && !IsWanted(ident); }

    // Does what an answer to "PROCESS" asks for: breaks for 1, and for E_ABORT shuts down and ends the process.
    void ApplyAction(HRESULT code, int exitCode = -1);
    // Sends "DEINIT" if active and lets the library go for good: later reports are dropped.
    void Shutdown() noexcept;

private:
    static constexpr unsigned BitOf(LONG ident) noexcept { return 1u << (ident + 1); }
    [[nodiscard]] bool IsWanted(LONG ident) const noexcept {
        return (m_Dropped.load(std::memory_order_relaxed) & BitOf(ident)) == 0;
    }

    [[nodiscard]] bool TryStart(DWORD now) noexcept;
    [[nodiscard]] bool IsTooSoon(DWORD now) const noexcept;
    HRESULT StartObject();
    HRESULT SendStart(IDebugObject& object);
    void LearnWanted(IDebugObject& object);
    HRESULT Send(BSTR verb) noexcept;

    static constexpr std::int64_t Never = -1;

    std::atomic<unsigned> m_Dropped{0}; // kinds of trace records that the library does not want, by BitOf
    // The tick at which a report looked for the library and found none, or Never.
    std::atomic<std::int64_t> m_MissedAt{Never};
    bool m_IsFound = false; // the last look found a library; guarded by m_CriticalSection
};

// Built at the first call, and never destroyed: a report may come from anywhere in the process's end.
[[nodiscard]] BugSlayerClient& GetClient() noexcept;

} // namespace BugSlayerUtil
