// The one connection behind a database object, and the transactions that live on it.
#pragma once

#include "DatabasePlace.h"
#include "FirebirdClient.h"
#include "StatementCache.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_set>

namespace IDM_dmFirebird {

class CTransaction;

// Any thread may call. Errors are CDatabaseError.
class CConnection : public std::enable_shared_from_this<CConnection> {
public:
    static std::shared_ptr<CConnection> Open(std::wstring_view path, std::wstring_view userName,
                                             std::wstring_view password);
    // Also makes the file.
    static std::shared_ptr<CConnection> Create(std::wstring_view path, std::wstring_view userName,
                                               std::wstring_view password);

    explicit CConnection(CFbPtr<Firebird::IAttachment> attachment) : m_Attachment(std::move(attachment)) {}
    ~CConnection();
    CConnection(const CConnection&) = delete;
    CConnection& operator=(const CConnection&) = delete;

    std::shared_ptr<CTransaction> StartTransaction();
    // Ends all transactions, undoing what they have not finished, and waits for those that are busy.
    void Close();
    // The same, and removes the database. After a failure the connection is closed.
    void Drop();

    // Engine and client, for a report.
    std::wstring Version() const;

    Firebird::IAttachment& Attachment() const { return *m_Attachment; }
    CStatementCache& Statements() { return m_Statements; }

    // For CTransaction: it is ended and no longer touches the attachment.
    void Forget(CTransaction* transaction);

private:
    void TellLocalZone();
    void Detach();
    // False when the connection was closed before.
    bool EndWork();
    void EndTransactions();

    CFbPtr<Firebird::IAttachment> m_Attachment;
    CStatementCache m_Statements;

    std::mutex m_Mutex; // guards what follows
    std::condition_variable m_Forgotten;
    std::unordered_set<CTransaction*> m_Transactions;
    bool m_IsClosed = false;
};

} // namespace IDM_dmFirebird
