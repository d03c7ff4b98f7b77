// Cursors over symbols, data feeds or custom futures: Advise opens one over the caller's table, Fetch pulls rows
// into it a batch at a time, Unadvise ends it.
//
// A cursor holds the table and a database transaction until Unadvise. Each call answers E_POINTER without storage,
// E_INVALIDARG for a null Id or Count, and S_OK otherwise; an unknown Id delivers no rows.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

namespace IDM_qxStorage {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;

struct IqxPortfolio : IDispatch {
    virtual HRESULT Advise(LONG Mode, IdmRequest* Request, IdmTable* Table, LONG* Id) = 0;
    virtual HRESULT Unadvise(LONG Id) = 0;
    // In: the rows wanted, 0 for all that remain. Out: the rows delivered.
    virtual HRESULT Fetch(LONG Id, LONG* Count) = 0;

protected:
    ~IqxPortfolio() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxPortfolio> {
    static constexpr GUID Uuid = MakeGuid("8f5c2d0e-53b1-4c0d-9a7e-2b6f1d3c4a02");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxPortfolio> {
    using IqxPortfolio = IDM_qxStorage::IqxPortfolio;
    static constexpr std::array Methods{
        Method<&IqxPortfolio::Advise>(1, L"Advise", L"Mode", L"Request", L"Table", L"Id"),
        Method<&IqxPortfolio::Unadvise>(2, L"Unadvise", L"Id"),
        Method<&IqxPortfolio::Fetch>(3, L"Fetch", L"Id", L"Count"),
    };
};

} // namespace platform
