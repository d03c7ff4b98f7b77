#include "diagnostics/interface/BugSlayerClient.h"

#include "RecordWriter.h"
#include "WithoutException.h"
#include "diagnostics/interface/ReportText.h"
#include "platform/crash.h"
#include "platform/file.h"
#include "platform/last_error.h"
#include "platform/message_box.h"
#include "platform/module.h"
#include "platform/process.h"
#include "platform/registry.h"

#include <array>
#include <cstdlib>
#include <exception>
#include <optional>

namespace BugSlayerUtil {

namespace {

constexpr const wchar_t* ClientVersion = L"2.2 05.05.2006";
constexpr LONG LookInterval = 1000; // milliseconds

// The file of the registry may be damaged or out of reach; a start goes on without it.
std::optional<std::wstring> ReadDefaultValue(platform::ERegistryRoot root, std::wstring_view path) {
    try {
        const auto key = platform::CRegistryKey::Open(root, path);
        return key ? key->ReadText(L"") : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<platform::CModule> FindLibrary() {
    if (auto loaded = platform::CModule::FindLoaded(IDM_BugSlayerUtil::DebugModuleName))
        return loaded;
    if (auto found = platform::CModule::Load(IDM_BugSlayerUtil::DebugModuleName))
        return found;
    const std::wstring key =
        L"CLSID\\" + platform::ToText(IDM_BugSlayerUtil::DebugObjectClass) + L"\\InprocServer32";
    const auto path = ReadDefaultValue(platform::ERegistryRoot::Classes, key);
    return path ? platform::CModule::Load(*path) : std::nullopt;
}

int ShutDownAtExit() noexcept {
    return std::atexit([] { GetClient().Shutdown(); });
}

// Never destroyed, because a report may come after all static objects are gone.
union CLastingClient {
    CLastingClient() : Client() { ShutDownAtExit(); }
    ~CLastingClient() {}

    BugSlayerClient Client;
};

std::wstring ModuleName() { return platform::FromPath(platform::ToPath(platform::ExecutablePath()).stem()); }

} // namespace

platform::CComPtr<IDebugObject> CSharedDebugObject::Get() const {
    const std::lock_guard lock(m_Lock);
    return m_Object;
}

void CSharedDebugObject::Set(platform::CComPtr<IDebugObject> object) {
    {
        const std::lock_guard lock(m_Lock);
        std::swap(m_Object, object);
    }
    // The old one is released outside the lock, since its end may do anything.
}

HRESULT BugSlayerClient::LoadObject() {
    const auto module = FindLibrary();
    m_IsFound = module.has_value();
    if (!module)
        return E_FAIL;
    const auto initObject = reinterpret_cast<IDM_BugSlayerUtil::InitObjectFunction>(
        module->Symbol(IDM_BugSlayerUtil::InitObjectExport));
    if (!initObject)
        return E_FAIL;
    Object.Set(nullptr);
    platform::CComPtr<IDebugObject> object;
    const HRESULT status = initObject(object.Put());
    Object.Set(std::move(object));
    return status;
}

HRESULT BugSlayerClient::Init() {
    const std::lock_guard lock(m_CriticalSection);
    if (Inited)
        return S_OK;
    Inited = 1;
    Active = 0;
    ShowFailure = ReadDefaultValue(platform::ERegistryRoot::User, IDM_BugSlayerUtil::SettingsKey).has_value();
    const HRESULT status = WithoutException([&] { return StartObject(); });
    if (status == S_OK) {
        Active = 1;
        return S_OK;
    }
    if (ShowFailure)
        platform::ShowMessageBox(L"BugSlayer Init Failed.", platform::EMessageIcon::Error);
    Active = 0;
    Object.Set(nullptr);
    Inited = 0;
    return status;
}

HRESULT BugSlayerClient::StartObject() {
    m_Dropped = 0;
    HRESULT status = LoadObject();
    const auto object = Object.Get();
    if (status == S_OK && !object)
        status = E_FAIL;
    if (status != S_OK)
        return status;
    // The library has its static objects by now. Handlers run in the reverse order of their registration, so that
    // it is let go before its static objects are.
    static const int atExit = ShutDownAtExit();
    (void)atExit;
    Active = 1;
    status = SendStart(*object);
    if (status == S_OK)
        LearnWanted(*object);
    return status;
}

HRESULT BugSlayerClient::SendStart(IDebugObject& object) {
    CRecordWriter start(&object, nullptr);
    start.Text(Name::LogDirectory.Get(), L"");
    start.Pointer(Name::ModuleAddr.Get(), this);
    start.Text(Name::ModuleName.Get(), ModuleName());
    start.Flag(Name::ReleaseMode.Get(), true);
    start.Text(Name::ClientVersion.Get(), ClientVersion);
    start.Init();
    if (start.Code() == S_OK)
        return S_OK;
    // "%i" shows the low 32 bits of an address.
    const std::array arguments{CArgument(static_cast<LONG>(reinterpret_cast<std::intptr_t>(this)))};
    const platform::CBstr address(FormatReport(L"%i", arguments));
    const platform::CBstr name(std::wstring_view{});
    return object.SetOption(name.Get(), address.Get(), 1);
}

void BugSlayerClient::LearnWanted(IDebugObject& object) {
    platform::CComPtr<IDM_BugSlayerUtil::IDebugLevel> level;
    if (FAILED(object.QueryInterface(platform::UuidOf<IDM_BugSlayerUtil::IDebugLevel>, level.PutVoid())) || !level)
        return;
    unsigned dropped = 0;
    for (const LONG ident : {1, 0, IDM_BugSlayerUtil::WarningLine, -1})
        if (level->IsWanted(ident) != S_OK)
            dropped |= BitOf(ident);
    m_Dropped = dropped;
}

bool BugSlayerClient::IsTooSoon(DWORD now) const noexcept {
    const std::int64_t missedAt = m_MissedAt.load(std::memory_order_relaxed);
    if (missedAt == Never)
        return false;
    // Ticks go round; and who has waited for the lock comes with a tick from before the look.
    const auto passed = static_cast<LONG>(now - static_cast<DWORD>(missedAt));
    return passed > -LookInterval && passed < LookInterval;
}

bool BugSlayerClient::TryStart(DWORD now) noexcept {
    if (IsTooSoon(now))
        return false;
    const platform::CLastErrorKeeper keeper;
    const std::lock_guard lock(m_CriticalSection);
    // Another thread may have looked while this one waited.
    if (!Inited && IsTooSoon(now))
        return false;
    const bool isStarted = WithoutException([&] { return Init(); }) == S_OK;
    m_MissedAt = isStarted || m_IsFound ? Never : std::int64_t{now};
    return Active != 0;
}

HRESULT BugSlayerClient::Send(BSTR verb) noexcept {
    if (!Ready())
        return E_FAIL;
    return WithoutException([&] {
        const auto object = Object.Get();
        IDebugObject* none = nullptr;
        return object ? object->Command(&none, verb) : E_FAIL;
    });
}

void BugSlayerClient::Terminate() {
    Send(Verb::Terminate.Get());
    platform::TerminateProcess(-1);
}

HRESULT BugSlayerClient::IsClean() { return Send(Verb::IsClean.Get()); }

HRESULT BugSlayerClient::DoClean() { return Send(Verb::DoClean.Get()); }

HRESULT BugSlayerClient::ReportDialog() { return Send(Verb::ReportDialog.Get()); }

void BugSlayerClient::ApplyAction(HRESULT code, int exitCode) {
    if (code == 1) {
        platform::DebugBreak();
    } else if (code == E_ABORT) {
        (void)Ready();
        Shutdown();
        platform::TerminateProcess(exitCode);
    }
}

void BugSlayerClient::Shutdown() noexcept {
    const std::lock_guard lock(m_CriticalSection);
    if (Active)
        Send(Verb::Deinit.Get());
    Inited = 1;
    Active = 0;
    Object.Set(nullptr);
}

BugSlayerClient& GetClient() noexcept {
    static CLastingClient client;
    return client.Client;
}

} // namespace BugSlayerUtil
