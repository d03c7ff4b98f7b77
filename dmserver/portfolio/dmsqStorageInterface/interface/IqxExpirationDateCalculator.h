// A future's expiration date and contract month, as day numbers, from the symbol's name.
#pragma once

#include "platform/com/dispatch.h"

namespace IDM_qxStorage {

struct IqxExpirationDateCalculator : IDispatch {
    virtual HRESULT Calculate(BSTR SymbolName, BSTR SymbolRoot, LONG DataFeedId, LONG* ExpirationDate,
                              LONG* MonthCode) = 0;

protected:
    ~IqxExpirationDateCalculator() = default;
};

} // namespace IDM_qxStorage

namespace platform {

template <>
struct InterfaceTraits<IDM_qxStorage::IqxExpirationDateCalculator> {
    static constexpr GUID Uuid = MakeGuid("7008dcc9-5ff2-4d51-9ac1-2b121d979c05");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_qxStorage::IqxExpirationDateCalculator> {
    using IqxExpirationDateCalculator = IDM_qxStorage::IqxExpirationDateCalculator;
    static constexpr std::array Methods{
        Method<&IqxExpirationDateCalculator::Calculate>(1, L"Calculate", L"SymbolName", L"SymbolRoot",
                                                        L"DataFeedId", L"ExpirationDate", L"MonthCode"),
    };
};

} // namespace platform
