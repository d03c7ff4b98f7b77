// The map of symbols to ASCII quote files and the templates of their fields, loaded and saved whole.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IascStorage : IDispatch {
    virtual HRESULT get_Datafeed(LONG* Value) = 0;
    virtual HRESULT Load(IdmTable* Table, IdmTable* TemplatesTable) = 0;
    virtual HRESULT Save(IdmTable* Table, IdmTable* TemplatesTable) = 0;

protected:
    ~IascStorage() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IascStorage> {
    static constexpr GUID Uuid = MakeGuid("d8678388-4bad-408f-b8bf-32dcc25bdc38");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IascStorage> {
    using IascStorage = IDM_qxStorage::IascStorage;
    static constexpr std::array Methods{
        PropertyGet<&IascStorage::get_Datafeed>(1, L"Datafeed", L"Value"),
        Method<&IascStorage::Load>(2, L"Load", L"Table", L"TemplatesTable"),
        Method<&IascStorage::Save>(3, L"Save", L"Table", L"TemplatesTable"),
    };
};

} // namespace platform
