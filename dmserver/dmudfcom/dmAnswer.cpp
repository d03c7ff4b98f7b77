#include "dmAnswer.h"

#include "Guarded.h"
#include "SealedBytes.h"
#include "TableBytes.h"
#include "dmTable.h"

#include "dmserver/dmudfcom/interface/AnswerBytes.h"

#include "Carriers.pb.h"

namespace IDM_dmudfcom {

namespace {

namespace wire = sqstorage::carriers;
using platform::CComPtr;

constexpr std::size_t MaxTransactions = 65536;

template <class Interface>
HRESULT Give(const std::vector<CComPtr<Interface>>& objects, LONG index, Interface** target) {
    if (!target)
        return E_POINTER;
    *target = nullptr;
    if (index < 0 || static_cast<std::size_t>(index) >= objects.size())
        return E_INVALIDARG;
    objects[static_cast<std::size_t>(index)].CopyTo(target);
    return S_OK;
}

template <class Interface>
HRESULT Count(const std::vector<CComPtr<Interface>>& objects, LONG* target) {
    if (!target)
        return E_POINTER;
    *target = static_cast<LONG>(objects.size());
    return S_OK;
}

CComPtr<IdmTransaction> ReadTransaction(const wire::Transaction& source) {
    std::vector<CComPtr<IdmTable>> tables;
    for (const std::string& bytes : source.tables()) {
        auto content = ReadTable(bytes);
        if (!content)
            return nullptr;
        tables.emplace_back(platform::MakeObject<CdmTable>(std::move(*content)).Get());
    }
    return CComPtr<IdmTransaction>(platform::MakeObject<CdmTransaction>(std::move(tables)).Get());
}

bool ReadAnswer(std::string_view bytes, std::vector<CComPtr<IdmTransaction>>& transactions) {
    const auto content = Unseal(EContent::Answer, bytes);
    if (!content || CountFields(*content, wire::Answer::kTransactionsFieldNumber).value_or(MaxTransactions + 1) >
                        MaxTransactions)
        return false;
    wire::Answer answer;
    if (!answer.ParseFromString(*content))
        return false;
    for (const wire::Transaction& source : answer.transactions()) {
        auto transaction = ReadTransaction(source);
        if (!transaction)
            return false;
        transactions.push_back(std::move(transaction));
    }
    return true;
}

HRESULT WriteTransaction(std::span<IdmTable* const> tables, wire::Transaction& target) {
    for (IdmTable* table : tables) {
        if (!table)
            return E_POINTER;
        platform::CVariant value;
        if (const HRESULT status = table->get_AsVariant(value.Put()); FAILED(status))
            return status;
        const auto bytes = TakeBytes(value.Get());
        if (!bytes)
            return E_FAIL;
        target.add_tables(bytes->data(), bytes->size());
    }
    return S_OK;
}

} // namespace

HRESULT CdmTransaction::get_TableCount(LONG* Value) { return Count(m_Tables, Value); }
HRESULT CdmTransaction::get_Table(LONG Index, IdmTable** Value) { return Give(m_Tables, Index, Value); }

HRESULT CdmAnswer::get_TransactionCount(LONG* Value) { return Count(m_Transactions, Value); }
HRESULT CdmAnswer::get_Transaction(LONG Index, IdmTransaction** Value) {
    return Give(m_Transactions, Index, Value);
}

HRESULT CdmAnswer::Assign(VARIANT Answer) {
    return Guarded([&]() -> HRESULT {
        const auto bytes = TakeBytes(Answer);
        std::vector<CComPtr<IdmTransaction>> transactions;
        if (!bytes || !ReadAnswer(*bytes, transactions))
            return E_FAIL;
        m_Transactions = std::move(transactions);
        return S_OK;
    });
}

HRESULT MakeAnswer(std::span<IdmTable* const> tables, VARIANT* answer) {
    return MakeAnswer(std::span(&tables, 1), answer);
}

HRESULT MakeAnswer(std::span<const std::span<IdmTable* const>> transactions, VARIANT* answer) {
    if (!answer)
        return E_POINTER;
    VariantInit(answer);
    return Guarded([&]() -> HRESULT {
        wire::Answer message;
        for (const auto tables : transactions)
            if (const HRESULT status = WriteTransaction(tables, *message.add_transactions()); FAILED(status))
                return status;
        return GiveBytes(Seal(EContent::Answer, message.SerializeAsString()), *answer);
    });
}

} // namespace IDM_dmudfcom
