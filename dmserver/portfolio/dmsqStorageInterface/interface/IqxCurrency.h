// One currency code for an id. Neither number has a meaning here.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IqxCurrency : IDispatch {
    virtual HRESULT SetCurrency(LONG Id, LONG CurrencyCode) = 0;
    virtual HRESULT GetCurrency(LONG Id, LONG* pCurrencyCode) = 0;
    virtual HRESULT DeleteCurrency(LONG Id) = 0;
    virtual HRESULT SelectCurrency(IdmRequest* Request, IdmTable* Table) = 0;

protected:
    ~IqxCurrency() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxCurrency> {
    static constexpr GUID Uuid = MakeGuid("868632a7-f887-42bb-bc1f-30518d27d274");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxCurrency> {
    using IqxCurrency = IDM_qxStorage::IqxCurrency;
    static constexpr std::array Methods{
        Method<&IqxCurrency::SetCurrency>(1, L"SetCurrency", L"Id", L"CurrencyCode"),
        Method<&IqxCurrency::GetCurrency>(2, L"GetCurrency", L"Id", L"pCurrencyCode"),
        Method<&IqxCurrency::DeleteCurrency>(3, L"DeleteCurrency", L"Id"),
        Method<&IqxCurrency::SelectCurrency>(4, L"SelectCurrency", Optional(L"Request"), L"Table"),
    };
};

} // namespace platform
