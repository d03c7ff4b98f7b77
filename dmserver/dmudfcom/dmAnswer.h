// IdmAnswer and IdmTransaction: tables out of bytes that came from another process.
#pragma once

#include "dmserver/dmudfcom/interface/Carriers.h"

#include "platform/com/object.h"

#include <vector>

namespace IDM_dmudfcom {

class CdmTransaction final : public platform::CObject<CdmTransaction, platform::ECounter::Interlocked,
                                                      platform::CDispatchImpl<IdmTransaction>> {
public:
    explicit CdmTransaction(std::vector<platform::CComPtr<IdmTable>> tables) : m_Tables(std::move(tables)) {}

    HRESULT get_TableCount(LONG* Value) override;
    HRESULT get_Table(LONG Index, IdmTable** Value) override;

private:
    std::vector<platform::CComPtr<IdmTable>> m_Tables;
};

class CdmAnswer final
    : public platform::CObject<CdmAnswer, platform::ECounter::Interlocked, platform::CDispatchImpl<IdmAnswer>> {
public:
    HRESULT Assign(VARIANT Answer) override;
    HRESULT get_TransactionCount(LONG* Value) override;
    HRESULT get_Transaction(LONG Index, IdmTransaction** Value) override;

private:
    std::vector<platform::CComPtr<IdmTransaction>> m_Transactions;
};

} // namespace IDM_dmudfcom
