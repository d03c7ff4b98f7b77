#include "Transaction.h"

#include "Query.h"

#include <algorithm>

namespace IDM_dmFirebird {

using Firebird::ITransaction;

namespace {

constexpr unsigned char ReadingBlock[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed,
                                          isc_tpb_rec_version};
constexpr unsigned char WritingBlock[] = {isc_tpb_version3,
                                          isc_tpb_write,
                                          isc_tpb_read_committed,
                                          isc_tpb_rec_version,
                                          isc_tpb_wait,
                                          isc_tpb_lock_timeout,
                                          1,
                                          CTransaction::LockTimeout};
constexpr unsigned char ReadingSnapshotBlock[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_concurrency};
constexpr unsigned char WritingSnapshotBlock[] = {
    isc_tpb_version3,         isc_tpb_write, isc_tpb_concurrency, isc_tpb_wait, isc_tpb_lock_timeout, 1,
    CTransaction::LockTimeout};

std::span<const unsigned char> ParameterBlock(LONG isolation, bool isWriting) {
    if (isolation == isolationSnapshot)
        return isWriting ? std::span<const unsigned char>(WritingSnapshotBlock) : ReadingSnapshotBlock;
    return isWriting ? std::span<const unsigned char>(WritingBlock) : ReadingBlock;
}

} // namespace

CTransaction::~CTransaction() { End(EState::RolledBack); }

std::unique_lock<std::mutex> CTransaction::Enter() {
    std::unique_lock lock(m_Mutex);
    switch (m_State) {
    case EState::Live:
        break;
    case EState::Finished:
        throw CDatabaseError(E_UNEXPECTED, L"The transaction is finished: ask the database for a new one.");
    case EState::RolledBack:
        throw CDatabaseError(E_UNEXPECTED, L"The transaction is rolled back: ask the database for a new one.");
    case EState::Closed:
        throw CDatabaseError(E_UNEXPECTED,
                             L"The database was closed and took the transaction with it, undoing what "
                             L"was not finished: open it again and start anew.");
    }
    return lock;
}

void CTransaction::Begin(LONG isolation) {
    const auto lock = Enter();
    if (isolation != isolationStatement && isolation != isolationSnapshot)
        throw CDatabaseError(E_INVALIDARG, L"There is no such isolation: give 0 (statement) or 1 (snapshot).");
    if (HasStarted())
        throw CDatabaseError(E_UNEXPECTED, L"The transaction has run a statement already: call Begin before the "
                                           L"first one.");
    m_Isolation = isolation;
}

void CTransaction::Finish() {
    const auto lock = Enter();
    CloseQueries();
    if (m_ChangesDefinition)
        m_Connection->Statements().Drop();
    try {
        Commit();
    } catch (const CDatabaseError&) {
        End(EState::RolledBack);
        throw;
    }
    End(EState::Finished);
}

void CTransaction::Rollback() {
    const auto lock = Enter();
    End(EState::RolledBack);
}

void CTransaction::Abandon() {
    const auto lock = EnterAnyway();
    if (m_State == EState::Live)
        End(EState::Closed);
}

void CTransaction::Commit() {
    const auto commit = [this](ITransaction* part) { part->commit(&m_Status); };
    if (m_Writing)
        GiveUp(m_Writing, commit);
    if (m_Reading)
        GiveUp(m_Reading, commit);
}

// A part that cannot be rolled back has lost its connection, and the server rolls it back by itself.
void CTransaction::UndoQuietly() {
    for (CFbPtr<ITransaction>* part : {&m_Writing, &m_Reading}) {
        try {
            if (*part)
                GiveUp(*part, [this](ITransaction* transaction) { transaction->rollback(&m_Status); });
        } catch (const CDatabaseError&) {
            part->reset();
        }
    }
}

void CTransaction::End(EState state) {
    if (m_State != EState::Live)
        return;
    CloseQueries();
    UndoQuietly();
    m_State = state;
    if (m_IsRegistered)
        m_Connection->Forget(this);
    m_IsRegistered = false;
}

void CTransaction::CloseQueries() {
    for (CQuery* query : std::exchange(m_Queries, {}))
        query->Abandon();
}

void CTransaction::Detach(CQuery* query) { std::erase(m_Queries, query); }

void CTransaction::NoteDefinition() {
    m_ChangesDefinition = true;
    m_Connection->Statements().Drop();
}

CFbPtr<ITransaction> CTransaction::Start(bool isWriting) {
    const std::span<const unsigned char> block = ParameterBlock(m_Isolation, isWriting);
    return CFbPtr<ITransaction>(
        m_Connection->Attachment().startTransaction(&m_Status, static_cast<unsigned>(block.size()), block.data()));
}

ITransaction& CTransaction::ForReading() {
    if (m_Writing)
        return *m_Writing;
    if (!m_Reading)
        m_Reading = Start(false);
    return *m_Reading;
}

ITransaction& CTransaction::ForWriting() {
    if (m_Isolation == isolationSnapshot && m_Reading)
        throw CDatabaseError(E_UNEXPECTED,
                             L"The transaction shows one unchanging state of the data and cannot write "
                             L"to it: use a transaction of its own for the change.");
    if (!m_Writing)
        m_Writing = Start(true);
    return *m_Writing;
}

void CTransaction::ForgetReading() {
    if (m_Reading)
        GiveUp(m_Reading, [this](ITransaction* part) { part->rollback(&m_Status); });
}

CSavepoint::CSavepoint(CTransaction& transaction, ITransaction& writing)
    : m_Transaction(transaction), m_Writing(&writing) {
    Run("SAVEPOINT SQ_STATEMENT");
}

CSavepoint::~CSavepoint() {
    if (!m_Writing)
        return;
    try {
        Run("ROLLBACK TO SAVEPOINT SQ_STATEMENT");
        Release();
    } catch (const CDatabaseError&) {
        // Only a lost connection refuses this, and then all of the transaction is undone.
    }
}

void CSavepoint::Release() {
    Run("RELEASE SAVEPOINT SQ_STATEMENT ONLY");
    m_Writing = nullptr;
}

void CSavepoint::Run(std::string_view statement) {
    m_Transaction.Connection().Attachment().execute(&m_Transaction.Status(), m_Writing,
                                                    static_cast<unsigned>(statement.size()), statement.data(), 3,
                                                    nullptr, nullptr, nullptr, nullptr);
}

} // namespace IDM_dmFirebird
