// A counted interface pointer: holds one reference, releases it by scope.
#pragma once

#include "platform/com/unknown.h"

#include <concepts>
#include <cstddef>
#include <utility>

namespace platform {

template <class Interface>
class CComPtr {
public:
    CComPtr() = default;
    CComPtr(std::nullptr_t) {}
    // Adds a reference.
    CComPtr(Interface* object) : m_Object(object) {
        if (m_Object)
            m_Object->AddRef();
    }
    CComPtr(const CComPtr& other) : CComPtr(other.m_Object) {}
    CComPtr(CComPtr&& other) noexcept : m_Object(std::exchange(other.m_Object, nullptr)) {}
    // To an interface that the other one, or the class, derives from.
    template <class Other>
    requires std::convertible_to<Other*, Interface*> CComPtr(const CComPtr<Other>& other) : CComPtr(other.Get()) {}
    template <class Other>
    requires std::convertible_to<Other*, Interface*> CComPtr(CComPtr<Other>&& other)
    noexcept : m_Object(other.Detach()) {}
    CComPtr& operator=(CComPtr other) noexcept {
        std::swap(m_Object, other.m_Object);
        return *this;
    }
    ~CComPtr() { Reset(); }

    // Takes over a reference that the caller held.
    static CComPtr Adopt(Interface* object) {
        CComPtr pointer;
        pointer.m_Object = object;
        return pointer;
    }

    Interface* Get() const { return m_Object; }
    Interface* operator->() const { return m_Object; }
    Interface& operator*() const { return *m_Object; }
    explicit operator bool() const { return m_Object != nullptr; }
    friend bool operator==(const CComPtr& left, const CComPtr& right) { return left.m_Object == right.m_Object; }
    friend bool operator==(const CComPtr& left, std::nullptr_t) { return left.m_Object == nullptr; }

    // For an out parameter: releases what is held first.
    Interface** Put() {
        Reset();
        return &m_Object;
    }
    void** PutVoid() { return reinterpret_cast<void**>(Put()); }
    void Attach(Interface* object) {
        Reset();
        m_Object = object;
    }
    Interface* Detach() { return std::exchange(m_Object, nullptr); }
    void Reset() {
        if (Interface* object = std::exchange(m_Object, nullptr))
            object->Release();
    }
    // Adds a reference for the receiver of an out parameter.
    void CopyTo(Interface** target) const {
        if (m_Object)
            m_Object->AddRef();
        *target = m_Object;
    }

    // The object's other interface, null when it has none.
    template <class Other>
    CComPtr<Other> As() const {
        CComPtr<Other> other;
        if (m_Object)
            m_Object->QueryInterface(UuidOf<Other>, other.PutVoid());
        return other;
    }

private:
    Interface* m_Object = nullptr;
};

} // namespace platform
