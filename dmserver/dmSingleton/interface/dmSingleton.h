// One object of T for the process, which lives from the first handle on it to the last.
//
//     dm::CProcessSingleton<CStorage> handle(false);
//     handle.GetObject()->...
//
// CProcessSingleton is the handle that a client holds, CSingleton the counted owner of the object. When clients
// come back after all have gone, a new object is built. While the last handle's object is still being destroyed,
// which happens outside the lock, a new handle already builds the next one: the two then exist side by side.
//
// T needs a default constructor, void FinalConstruct() called right after construction, and void FinalRelease()
// called right before destruction.
//
// Threads: any may make, use and destroy handles. Construction of T runs inside the lock, so a second client waits
// until the object stands; destruction does not. A pointer from GetObject is good while a handle is held.
// Errors: a T that cannot be built raises out of the handle's constructor, and nothing is left behind.
#pragma once

#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmSingleton/interface/CriticalSection.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace dm {

// What SingletonAccess does.
enum class tagSIGNLETONACCESS {
    GetOrCreate = 0, // the singleton, made if there is none
    Release = 1,     // drops one reference; gives the singleton if it must now be destroyed, else null
    Get = 2,         // the singleton as it is, which may be null
};

namespace detail {

// The qualified name of T, for reports.
template <class T>
std::wstring ClassName() {
    constexpr std::string_view signature = __PRETTY_FUNCTION__; // std::source_location leaves the argument out
    constexpr std::string_view mark = "T = ";
    constexpr auto begin = signature.find(mark) + mark.size();
    constexpr auto name = signature.substr(begin, signature.find_first_of(";]", begin) - begin);
    return std::wstring(name.begin(), name.end());
}

} // namespace detail

template <class T>
class CSingleton {
public:
    CSingleton() {
        BugSlayerUtil::Rethrowing(
            [&] {
                m_Object = std::make_unique<T>();
                const BugSlayerUtil::CScope scope(this);
                scope.Rethrowing(
                    [&] {
                        const BugSlayerUtil::CScope finalConstruct(m_Object.get());
                        m_Object->FinalConstruct();
                    },
                    detail::ClassName<T>() + L"::FinalConstruct failed");
            },
            L"Create dm::CSingleton<" + detail::ClassName<T>() + L"> failed");
    }

    ~CSingleton() {
        const BugSlayerUtil::CScope scope(this);
        scope.Guard([&] {
            if (!m_Object)
                scope.Throw(L"m_Object.get()");
            const BugSlayerUtil::CScope finalRelease(m_Object.get());
            m_Object->FinalRelease();
        });
        // Also when it could not be told.
        m_Object.reset();
    }

    CSingleton(const CSingleton&) = delete;
    CSingleton& operator=(const CSingleton&) = delete;

    T* Object() const { return m_Object.get(); }

    LONG AddRef() { return ++m_Count; }

    // Lowers the count and returns it. At 0 the process-wide pointer is nulled and the singleton handed to `out`;
    // with no `out` it is destroyed here. A count below 0 is reported and destroys nothing.
    LONG Release(CSingleton** instance, CSingleton** out) {
        if (out)
            *out = nullptr;
        const LONG Result = --m_Count;
        BugSlayerUtil::Assert(Result >= 0, L"Result>=0");
        if (Result == 0) {
            if (instance)
                *instance = nullptr;
            if (out)
                *out = this;
            else
                std::default_delete<CSingleton>()(this);
        }
        return Result;
    }

private:
    std::unique_ptr<T> m_Object;
    std::atomic<LONG> m_Count{0};
    std::set<std::wstring> m_Names; // part of the layout; nothing uses it
};

template <class T>
class CProcessSingleton {
public:
    // With `NoCreate` the handle only attaches to an object that exists already.
    explicit CProcessSingleton(bool NoCreate) : m_NoCreate(NoCreate) {
        const std::lock_guard lock(Lock());
        CSingleton<T>* Singleton =
            SingletonAccess(m_NoCreate ? tagSIGNLETONACCESS::Get : tagSIGNLETONACCESS::GetOrCreate);
        m_Held = Singleton != nullptr;
        if (Singleton)
            Singleton->AddRef();
    }

    ~CProcessSingleton() {
        if (!m_Held)
            return;
        CSingleton<T>* last = nullptr;
        {
            const std::lock_guard lock(Lock());
            last = SingletonAccess(tagSIGNLETONACCESS::Release);
        }
        // Outside the lock: what T does at its end may take long, and may make a new handle.
        std::default_delete<CSingleton<T>>()(last);
    }

    CProcessSingleton(const CProcessSingleton&) = delete;
    CProcessSingleton& operator=(const CProcessSingleton&) = delete;

    // Null when nothing is held. The count is not raised.
    T* GetObject() const {
        if (!m_Held)
            return nullptr;
        const std::lock_guard lock(Lock());
        const CSingleton<T>* Singleton = SingletonAccess(tagSIGNLETONACCESS::GetOrCreate);
        if (!Singleton->Object())
            BugSlayerUtil::Throw(L"m_Object.get()");
        return Singleton->Object();
    }

    bool IsHeld() const { return m_Held; }

    // To be called with the lock held. GetOrCreate never gives null: what cannot be made raises.
    CSingleton<T>* SingletonAccess(const tagSIGNLETONACCESS Access) const {
        CSingleton<T>*& instance = Instance();
        switch (Access) {
        case tagSIGNLETONACCESS::GetOrCreate:
            if (!instance)
                instance = std::make_unique<CSingleton<T>>().release();
            return instance;
        case tagSIGNLETONACCESS::Release: {
            if (!BugSlayerUtil::Assert(instance != nullptr, L"Singleton"))
                return nullptr;
            CSingleton<T>* last = nullptr;
            instance->Release(&instance, &last);
            return last;
        }
        case tagSIGNLETONACCESS::Get:
            break;
        }
        return instance;
    }

private:
    // Guarded by Lock().
    static CSingleton<T>*& Instance() {
        static CSingleton<T>* instance = nullptr;
        return instance;
    }
    static CCriticalSection& Lock() {
        static CCriticalSection lock;
        return lock;
    }

    bool m_NoCreate;
    bool m_Held = false;
};

} // namespace dm
