// Registration of change sinks, by a mask of change kinds.
//
// A sink is held by a counted reference until it is taken off. S_OK when at least one bit changed, S_FALSE when
// none. DataChanged is called on the thread that created the storage, which must run its message loop.
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_qxStorage {

struct IqxStorageNotify : IDispatch {
    virtual HRESULT AdviseNotify(ULONG Mask, IDispatch* pSink) = 0;
    virtual HRESULT UnadviseNotify(ULONG Mask, IDispatch* pSink) = 0;

protected:
    ~IqxStorageNotify() = default;
};

// What a client implements. Mask has one bit set; ValueID is the key of what changed where the kind of change has
// one. Any answer but S_OK takes the sink off all masks.
struct IqxStorageNotifySink : IDispatch {
    virtual HRESULT DataChanged(ULONG Mask, LONG ValueID) = 0;

protected:
    ~IqxStorageNotifySink() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxStorageNotify> {
    static constexpr GUID Uuid = MakeGuid("cc4aa757-3054-482a-8474-e67c5e1e20c4");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxStorageNotify> {
    using IqxStorageNotify = IDM_qxStorage::IqxStorageNotify;
    static constexpr std::array Methods{
        Method<&IqxStorageNotify::AdviseNotify>(1, L"AdviseNotify", L"Mask", L"pSink"),
        Method<&IqxStorageNotify::UnadviseNotify>(2, L"UnadviseNotify", L"Mask", L"pSink"),
    };
};

template <>
struct InterfaceTraits<IDM_qxStorage::IqxStorageNotifySink> {
    static constexpr GUID Uuid = MakeGuid("213741a0-33a3-4125-b03b-59bc12c05f29");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxStorageNotifySink> {
    using IqxStorageNotifySink = IDM_qxStorage::IqxStorageNotifySink;
    static constexpr std::array Methods{
        Method<&IqxStorageNotifySink::DataChanged>(1, L"DataChanged", L"Mask", L"ValueID"),
    };
};

} // namespace platform
