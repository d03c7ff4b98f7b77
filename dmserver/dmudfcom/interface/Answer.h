// Tables out of bytes that came from another process. AnswerBytes.h makes such bytes.
//
// An answer holds transactions, a transaction holds tables; both count from 0, and an index outside them gives
// E_INVALIDARG and a null pointer. The tables live on without the answer.
#pragma once

#include "dmserver/dmudfcom/interface/Table.h"

namespace IDM_dmudfcom {

struct IdmTransaction : IDispatch {
    virtual HRESULT get_TableCount(LONG* Value) = 0;
    virtual HRESULT get_Table(LONG Index, IdmTable** Value) = 0;

protected:
    ~IdmTransaction() = default;
};

struct IdmAnswer : IDispatch {
    // Takes the place of what was assigned before. E_FAIL, and nothing changed, for a VARIANT that is not of type
    // 0x2011 and for bytes that were cut or altered or never were an answer.
    virtual HRESULT Assign(VARIANT Answer) = 0;
    virtual HRESULT get_TransactionCount(LONG* Value) = 0;
    virtual HRESULT get_Transaction(LONG Index, IdmTransaction** Value) = 0;

protected:
    ~IdmAnswer() = default;
};

} // namespace IDM_dmudfcom

namespace platform {

template <>
struct InterfaceTraits<IDM_dmudfcom::IdmTransaction> {
    static constexpr GUID Uuid = MakeGuid("0b7c1d54-6a0e-4d52-9a55-1f6f3c0a5d03");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmTransaction> {
    using IdmTransaction = IDM_dmudfcom::IdmTransaction;
    static constexpr std::array Methods{
        PropertyGet<&IdmTransaction::get_TableCount>(1, L"TableCount", L"Value"),
        PropertyGet<&IdmTransaction::get_Table>(2, L"Table", L"Index", L"Value"),
    };
};

template <>
struct InterfaceTraits<IDM_dmudfcom::IdmAnswer> {
    static constexpr GUID Uuid = MakeGuid("05f310a5-466e-467f-bc3b-d72c787650b0");
    using Base = IDispatch;
};

template <>
struct DispatchTable<IDM_dmudfcom::IdmAnswer> {
    using IdmAnswer = IDM_dmudfcom::IdmAnswer;
    static constexpr std::array Methods{
        Method<&IdmAnswer::Assign>(1, L"Assign", L"Answer"),
        PropertyGet<&IdmAnswer::get_TransactionCount>(2, L"TransactionCount", L"Value"),
        PropertyGet<&IdmAnswer::get_Transaction>(3, L"Transaction", L"Index", L"Value"),
    };
};

} // namespace platform
