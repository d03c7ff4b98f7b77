#include "Connection.h"

#include "LocalZone.h"
#include "Transaction.h"

#include "platform/text.h"

namespace IDM_dmFirebird {

using platform::ToUtf8;

namespace {

// The longest index key needs pages of this size.
constexpr int PageSize = 16384;
constexpr int Dialect = 3;
constexpr const char* CharacterSet = "UTF8";

using CParameterBlock = CFbDisposable<Firebird::IXpbBuilder>;

// A file of this machine is never looked for on a server, and a server's file never opened in this process.
//
// The embedded engine keeps 160 MB of the file at most, which is a portfolio of a million symbols with its indexes:
// read in the order of the names, a larger file than the cache is read over and over. The memory is taken as pages
// are read. How much a server keeps is its operator's affair.
const char* ConfigOf(const tagDatabasePlace& place) {
    return place.IsEmbedded() ? "Providers=Engine12\nDefaultDbCachePages=10240" : "Providers=Remote";
}

CParameterBlock MakeParameterBlock(CStatus& status, const tagDatabasePlace& place, std::wstring_view userName,
                                   std::wstring_view password) {
    CParameterBlock block(
        Master()->getUtilInterface()->getXpbBuilder(&status, Firebird::IXpbBuilder::DPB, nullptr, 0));
    block->insertTag(&status, isc_dpb_utf8_filename);
    block->insertString(&status, isc_dpb_lc_ctype, CharacterSet);
    block->insertString(&status, isc_dpb_config, ConfigOf(place));
    if (!userName.empty())
        block->insertString(&status, isc_dpb_user_name, ToUtf8(userName).c_str());
    if (!password.empty())
        block->insertString(&status, isc_dpb_password, ToUtf8(password).c_str());
    return block;
}

CFbPtr<Firebird::IAttachment> Attach(std::wstring_view path, std::wstring_view userName,
                                     std::wstring_view password) {
    const tagDatabasePlace place = ParseDatabasePlace(path);
    CStatus status;
    const CFbPtr<Firebird::IProvider> provider(Master()->getDispatcher());
    const CParameterBlock block = MakeParameterBlock(status, place, userName, password);
    try {
        return CFbPtr<Firebird::IAttachment>(provider->attachDatabase(
            &status, ToUtf8(path).c_str(), block->getBufferLength(&status), block->getBuffer(&status)));
    } catch (const CDatabaseError& error) {
        throw error.WithSentence(DescribeOpenFailure(error.Report(), place, userName));
    }
}

CFbPtr<Firebird::IAttachment> CreateFile(std::wstring_view path, std::wstring_view userName,
                                         std::wstring_view password) {
    const tagDatabasePlace place = ParseDatabasePlace(path);
    CStatus status;
    const CFbPtr<Firebird::IProvider> provider(Master()->getDispatcher());
    const CParameterBlock block = MakeParameterBlock(status, place, userName, password);
    block->insertInt(&status, isc_dpb_page_size, PageSize);
    block->insertInt(&status, isc_dpb_force_write, 1);
    block->insertInt(&status, isc_dpb_sql_dialect, Dialect);
    block->insertString(&status, isc_dpb_set_db_charset, CharacterSet);
    try {
        return CFbPtr<Firebird::IAttachment>(provider->createDatabase(
            &status, ToUtf8(path).c_str(), block->getBufferLength(&status), block->getBuffer(&status)));
    } catch (const CDatabaseError& error) {
        throw error.WithSentence(DescribeCreateFailure(error.Report(), place, userName));
    }
}

class CVersionLines final : public Firebird::IVersionCallbackImpl<CVersionLines, Firebird::CheckStatusWrapper> {
public:
    void callback(Firebird::CheckStatusWrapper*, const char* text) override {
        if (!m_Text.empty())
            m_Text += "; ";
        m_Text += text;
    }
    const std::string& Text() const { return m_Text; }

private:
    std::string m_Text;
};

} // namespace

std::shared_ptr<CConnection> CConnection::Open(std::wstring_view path, std::wstring_view userName,
                                               std::wstring_view password) {
    auto connection = std::make_shared<CConnection>(Attach(path, userName, password));
    connection->TellLocalZone();
    return connection;
}

std::shared_ptr<CConnection> CConnection::Create(std::wstring_view path, std::wstring_view userName,
                                                 std::wstring_view password) {
    auto connection = std::make_shared<CConnection>(CreateFile(path, userName, password));
    connection->TellLocalZone();
    return connection;
}

CConnection::~CConnection() {
    try {
        Close();
    } catch (const std::exception&) {
        // The server is gone; there is nothing left to detach from.
    }
}

std::shared_ptr<CTransaction> CConnection::StartTransaction() {
    auto transaction = std::make_shared<CTransaction>(shared_from_this());
    const std::lock_guard lock(m_Mutex);
    if (m_IsClosed)
        throw CDatabaseError(E_UNEXPECTED, L"The database is closed: open it first.");
    m_Transactions.insert(transaction.get());
    transaction->NoteRegistered();
    return transaction;
}

void CConnection::Close() {
    if (EndWork())
        Detach();
}

void CConnection::Drop() {
    if (!EndWork())
        throw CDatabaseError(E_UNEXPECTED, L"The database is closed: open it first.");
    try {
        CStatus status;
        GiveUp(m_Attachment, [&](Firebird::IAttachment* attachment) { attachment->dropDatabase(&status); });
    } catch (const CDatabaseError&) {
        Detach();
        throw;
    }
}

void CConnection::Detach() {
    CStatus status;
    GiveUp(m_Attachment, [&](Firebird::IAttachment* attachment) { attachment->detach(&status); });
}

bool CConnection::EndWork() {
    {
        const std::lock_guard lock(m_Mutex);
        if (m_IsClosed)
            return false;
        m_IsClosed = true;
    }
    EndTransactions();
    m_Statements.Drop();
    return true;
}

// A transaction that is just being destroyed can no longer be reached, but leaves the set when it is done.
void CConnection::EndTransactions() {
    std::vector<std::shared_ptr<CTransaction>> transactions;
    {
        const std::lock_guard lock(m_Mutex);
        for (CTransaction* transaction : m_Transactions)
            if (std::shared_ptr<CTransaction> alive = transaction->weak_from_this().lock())
                transactions.push_back(std::move(alive));
    }
    for (const std::shared_ptr<CTransaction>& transaction : transactions)
        transaction->Abandon();
    std::unique_lock lock(m_Mutex);
    m_Forgotten.wait(lock, [this] { return m_Transactions.empty(); });
}

void CConnection::Forget(CTransaction* transaction) {
    // Under the lock to the end: the connection may go as soon as the set is empty.
    const std::lock_guard lock(m_Mutex);
    m_Transactions.erase(transaction);
    m_Forgotten.notify_all();
}

std::wstring CConnection::Version() const {
    CStatus status;
    CVersionLines lines;
    Master()->getUtilInterface()->getFbVersion(&status, m_Attachment.get(), &lines);
    return platform::FromUtf8(lines.Text());
}

void CConnection::TellLocalZone() {
    const std::string statement = SetLocalZoneStatement();
    CStatus status;
    // Read-only: a connection to a database that may only be read works too.
    static constexpr unsigned char Reading[] = {isc_tpb_version3, isc_tpb_read, isc_tpb_read_committed,
                                                isc_tpb_rec_version};
    CFbPtr<Firebird::ITransaction> transaction(m_Attachment->startTransaction(&status, sizeof Reading, Reading));
    CFbPtr<Firebird::IResultSet> rows(
        m_Attachment->openCursor(&status, transaction.get(), static_cast<unsigned>(statement.size()),
                                 statement.data(), Dialect, nullptr, nullptr, nullptr, nullptr, 0));
    const CFbPtr<Firebird::IMessageMetadata> metadata(rows->getMetadata(&status));
    std::vector<unsigned char> row(metadata->getMessageLength(&status));
    rows->fetchNext(&status, row.data());
    GiveUp(rows, [&](Firebird::IResultSet* cursor) { cursor->close(&status); });
    GiveUp(transaction, [&](Firebird::ITransaction* reading) { reading->commit(&status); });
}

} // namespace IDM_dmFirebird
