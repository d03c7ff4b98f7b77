// IUnknown, IClassFactory and the traits that tie an interface to its identifier.
//
// No interface has a virtual destructor: it would shift every slot. An object is destroyed by its own Release.
#pragma once

#include "platform/com/guid.h"

#include <type_traits>

struct IUnknown {
    virtual HRESULT QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};

struct IClassFactory : IUnknown {
    virtual HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** object) = 0;
    virtual HRESULT LockServer(BOOL lock) = 0;

protected:
    ~IClassFactory() = default;
};

namespace platform {

// Specialised once for each interface, with  static constexpr GUID Uuid  and  using Base = ... . A trait is not
// inherited, so an interface that was given no identifier does not compile where one is needed.
template <class Interface>
struct InterfaceTraits;

template <class Interface>
inline constexpr const GUID& UuidOf = InterfaceTraits<Interface>::Uuid;

template <>
struct InterfaceTraits<IUnknown> {
    static constexpr GUID Uuid = MakeGuid("00000000-0000-0000-c000-000000000046");
    using Base = void;
};

template <>
struct InterfaceTraits<IClassFactory> {
    static constexpr GUID Uuid = MakeGuid("00000001-0000-0000-c000-000000000046");
    using Base = IUnknown;
};

} // namespace platform
