// A transaction as callers see it, made of up to two of the engine's: one that only reads, which costs a twentieth,
// and one that writes. Each starts when the first statement needs it.
#pragma once

#include "Connection.h"

#include "dmserver/dmFirebird/interface/Database.h"

#include <vector>

namespace IDM_dmFirebird {

class CQuery;

// How the parts run:
//   reading   read-only, read committed, record version: sees at each statement what is committed, never waits, and
//             holds nothing back however long it lives
//   writing   read-write, read committed, record version; waits for another's row for LockTimeout seconds
// With isolationSnapshot there is one part, read-only or read-write by its first statement, that keeps to the state
// of that moment. If that is read-only, a later statement that writes is refused: it could not see the same state.
//
// Once there is a writing part, everything goes to it.
//
// Threads: the functions with a guard take the transaction's lock; the others are called under it. Close of the
// connection comes from any thread and waits for the lock.
class CTransaction : public std::enable_shared_from_this<CTransaction> {
public:
    static constexpr unsigned char LockTimeout = 10; // seconds

    explicit CTransaction(std::shared_ptr<CConnection> connection) : m_Connection(std::move(connection)) {}
    ~CTransaction();
    CTransaction(const CTransaction&) = delete;
    CTransaction& operator=(const CTransaction&) = delete;

    // Raises E_UNEXPECTED when the transaction is over.
    [[nodiscard]] std::unique_lock<std::mutex> Enter();
    // For those who clean up: the lock in any state.
    [[nodiscard]] std::unique_lock<std::mutex> EnterAnyway() { return std::unique_lock(m_Mutex); }

    void Begin(LONG isolation);
    void Finish();
    void Rollback();
    // The database is closing.
    void Abandon();

    // Under the lock from here on.
    Firebird::ITransaction& ForReading();
    Firebird::ITransaction& ForWriting();
    // For a statement that has started the reading part and finds that it writes.
    void ForgetReading();
    bool HasStarted() const { return m_Reading || m_Writing; }
    CConnection& Connection() const { return *m_Connection; }
    CStatus& Status() { return m_Status; }
    // Cached statements stand in the way of the definition being changed, at once and when it is committed.
    void NoteDefinition();
    // A query that has a statement open has to be told when the transaction ends.
    void Attach(CQuery* query) { m_Queries.push_back(query); }
    void Detach(CQuery* query);
    void NoteRegistered() { m_IsRegistered = true; }

private:
    enum class EState { Live, Finished, RolledBack, Closed };

    void CloseQueries();
    void Commit();
    void UndoQuietly();
    void End(EState state);
    CFbPtr<Firebird::ITransaction> Start(bool isWriting);

    std::shared_ptr<CConnection> m_Connection;
    std::mutex m_Mutex; // guards what follows
    CStatus m_Status;
    EState m_State = EState::Live;
    LONG m_Isolation = isolationStatement;
    bool m_ChangesDefinition = false;
    bool m_IsRegistered = false;
    CFbPtr<Firebird::ITransaction> m_Reading;
    CFbPtr<Firebird::ITransaction> m_Writing;
    std::vector<CQuery*> m_Queries;
};

// Undoes a statement that runs in several steps when one of them fails.
class CSavepoint {
public:
    CSavepoint(CTransaction& transaction, Firebird::ITransaction& writing);
    ~CSavepoint();
    CSavepoint(const CSavepoint&) = delete;
    CSavepoint& operator=(const CSavepoint&) = delete;

    // All went well.
    void Release();

private:
    void Run(std::string_view statement);

    CTransaction& m_Transaction;
    Firebird::ITransaction* m_Writing;
};

} // namespace IDM_dmFirebird
