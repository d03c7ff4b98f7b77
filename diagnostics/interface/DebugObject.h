#pragma once
// The interface of the debug library "BugSlayerUtil3.0_x64.dll", which the diagnostics client loads when it is
// there.
//
// One interface serves the library's root object, which the export BS_InitObject hands out, and the records that
// the root creates: named VARIANT fields in the order in which they were written. The library must accept calls
// from any thread; a record is used by one thread at a time. Answers are status codes, of "PROCESS" an action code:
// 1 asks for a debug break, E_ABORT to end the process, anything else to go on.

#include "platform/com/dispatch.h"

namespace IDM_BugSlayerUtil {

struct IDebugObject : IDispatch {
    // With a record: "CREATE" (makes one; the caller owns the reference), "FILTER", "PROCESS", "INIT". Without
    // one, the pointer then leading to null: "DEINIT", "TERMINATE", "IS CLEAN", "DO CLEAN", "REPORTDIALOG".
    virtual HRESULT Command(IDebugObject** record, BSTR verb) = 0;
    // VT_EMPTY and S_FALSE for a field that was never written.
    virtual HRESULT GetValue(BSTR name, VARIANT* value) = 0;
    virtual HRESULT SetValue(BSTR name, VARIANT value) = 0;
    virtual HRESULT SetOption(BSTR name, BSTR text, LONG flag) = 0;

protected:
    ~IDebugObject() = default;
};

// A line that IsWarning() is a kind of its own for those who want no other; its record has the "$Ident" of a line.
inline constexpr LONG WarningLine = 2;

// Offered by a root object that can tell beforehand which trace records it drops, so that nobody builds them.
struct IDebugLevel : IUnknown {
    // `ident` is 1 for an enter, 0 for a line, WarningLine, or -1 for a leave. S_OK when wanted, S_FALSE when not.
    // Asked once, after "INIT".
    virtual HRESULT IsWanted(LONG ident) = 0;

protected:
    ~IDebugLevel() = default;
};

// The class under which the library is registered, and its export.
inline constexpr CLSID DebugObjectClass = platform::MakeGuid("cf3478aa-dd21-456c-98f2-5222d9b9cd75");
inline constexpr const wchar_t* DebugModuleName = L"BugSlayerUtil3.0_x64.dll";
inline constexpr const char* InitObjectExport = "BS_InitObject";
using InitObjectFunction = HRESULT (*)(IDebugObject** object);

// Under the user's registry root: what the user wants of the diagnostics.
inline constexpr const wchar_t* SettingsKey = L"Software\\DM Support\\BugSlayer";

} // namespace IDM_BugSlayerUtil

template <>
struct platform::InterfaceTraits<IDM_BugSlayerUtil::IDebugObject> {
    static constexpr GUID Uuid = MakeGuid("5e0c6f0d-2c5b-4b0e-9d6a-7d6f5c0f1a31");
    using Base = IDispatch;
};

template <>
struct platform::InterfaceTraits<IDM_BugSlayerUtil::IDebugLevel> {
    static constexpr GUID Uuid = MakeGuid("9f1b7a52-30c4-4c55-8a0b-6a2f4d7be8c2");
    using Base = IUnknown;
};

template <>
struct platform::DispatchTable<IDM_BugSlayerUtil::IDebugObject> {
    using I = IDM_BugSlayerUtil::IDebugObject;
    static constexpr std::array Methods{
        Method<&I::Command>(1, L"Command", L"Record", L"Verb"),
        Method<&I::GetValue>(2, L"GetValue", L"Name", L"Value"),
        Method<&I::SetValue>(3, L"SetValue", L"Name", L"Value"),
        Method<&I::SetOption>(4, L"SetOption", L"Name", L"Text", L"Flag"),
    };
};
