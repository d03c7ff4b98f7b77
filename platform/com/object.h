// IUnknown for an implementation class, from the list of the interfaces it offers.
//
//     class CThing final : public CObject<CThing, ECounter::Interlocked, IThing, IOther> { ... };
//     CComPtr<IThing> thing = MakeObject<CThing>(arguments);
//
// The first interface is the object's identity: its IUnknown. An object is made by MakeObject, which is the one
// place that allocates it, and deletes itself when its last reference goes.
#pragma once

#include "platform/com/com_ptr.h"

#include <atomic>
#include <memory>
#include <utility>

namespace platform {

// Interlocked for objects used from several threads; Plain where the contract says that the counter is plain.
enum class ECounter { Plain, Interlocked };

// Objects and locks that keep a module in memory.
class CModuleCount {
public:
    static void Add();
    static void Remove();
    static LONG Value();
};

namespace detail {

template <ECounter Kind>
class CCounter;

template <>
class CCounter<ECounter::Plain> {
public:
    ULONG Up() { return ++m_Value; }
    ULONG Down() { return --m_Value; }

private:
    ULONG m_Value = 0;
};

template <>
class CCounter<ECounter::Interlocked> {
public:
    ULONG Up() { return m_Value.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG Down() { return m_Value.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<ULONG> m_Value{0};
};

// Answers for an interface and for those it derives from.
template <class Interface, class Traits = InterfaceTraits<Interface>>
bool Answers(REFIID iid) {
    if (iid == Traits::Uuid)
        return true;
    if constexpr (std::is_void_v<typename Traits::Base>)
        return false;
    else
        return Answers<typename Traits::Base>(iid);
}

} // namespace detail

// `Implementations` are interfaces or classes derived from one that name it as  using Implemented = I .
template <class Derived, ECounter Kind, class... Implementations>
class CObject : public Implementations... {
public:
    HRESULT QueryInterface(REFIID iid, void** object) override {
        if (!object)
            return E_POINTER;
        *object = nullptr;
        (void)(Find<Implementations>(iid, object) || ...);
        if (!*object)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return m_Count.Up(); }
    ULONG Release() override {
        const ULONG left = m_Count.Down();
        if (left == 0)
            std::default_delete<Derived>()(static_cast<Derived*>(this));
        return left;
    }

protected:
    CObject() { CModuleCount::Add(); }
    ~CObject() { CModuleCount::Remove(); }
    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

private:
    template <class T>
    struct Implemented {
        using Type = T;
    };
    template <class T>
    requires requires { typename T::Implemented; }
    struct Implemented<T> {
        using Type = typename T::Implemented;
    };

    template <class Implementation>
    bool Find(REFIID iid, void** object) {
        using Interface = typename Implemented<Implementation>::Type;
        if (!detail::Answers<Interface>(iid))
            return false;
        *object = static_cast<Interface*>(static_cast<Implementation*>(this));
        return true;
    }

    detail::CCounter<Kind> m_Count;
};

// The only way an object comes to life: the pointer holds the first reference.
template <class Class, class... Arguments>
CComPtr<Class> MakeObject(Arguments&&... arguments) {
    return CComPtr<Class>(std::make_unique<Class>(std::forward<Arguments>(arguments)...).release());
}

} // namespace platform
