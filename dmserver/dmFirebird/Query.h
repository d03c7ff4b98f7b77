// One statement at a time, from Open to Close, within a transaction.
#pragma once

#include "ParameterMessage.h"
#include "ResultPlan.h"
#include "Transaction.h"

#include "platform/com/com_ptr.h"

#include <limits>
#include <optional>

namespace IDM_dmFirebird {

// A SELECT runs as far as its rows are fetched, record after record of its parameter table; its first row is read
// by Open, so that what is wrong shows there. A SELECT that turns out to write (a procedure that does) is refused
// by the reading part of the transaction without effect and then runs like any other statement that writes: to its
// end, in Open, all or nothing. Its rows wait for Fetch.
// Only where an earlier statement has opened the writing part is such a SELECT not noticed, and its work done as
// its rows are fetched.
//
// Takes the transaction's lock itself; Abandon is called under it. Errors are CDatabaseError.
class CQuery {
public:
    using ITableRows = IDM_dmudfcom::ITableRows;
    static constexpr LONG AllRows = 0;

    explicit CQuery(std::shared_ptr<CTransaction> transaction) : m_Transaction(std::move(transaction)) {}
    ~CQuery();
    CQuery(const CQuery&) = delete;
    CQuery& operator=(const CQuery&) = delete;

    // Both tables may be null. Closes what was open.
    void Open(std::wstring_view text, platform::CComPtr<ITableRows> parameters,
              platform::CComPtr<ITableRows> result);
    // `delivered` is good also when an error is raised.
    void Fetch(LONG count, LONG& delivered);
    // Closed already is no error.
    void Close();

    // The transaction ends.
    void Abandon();

private:
    void Start(std::wstring_view text);
    void Prepare(std::wstring_view text);
    void CheckStatement() const;
    void LoadParameters();
    void StartReading();
    void StartOver();
    void Run();
    void RunRecords();
    void RunOnce();
    void KeepRowsOfCursor();
    void KeepRow();
    bool OpenNextCursor();
    bool ReadRow();
    bool AppendReadRows(LONG limit, LONG& delivered);
    void AppendRowsOfCursor(LONG limit, LONG& delivered);
    void AppendKeptRows(LONG limit, LONG& delivered);
    void AppendRow(const unsigned char* row, LONG& delivered);
    void CloseCursor();
    void Clear();

    CStatus& Status() { return m_Transaction->Status(); }
    ULONG RecordCount() const { return m_Parameters ? m_Parameters->RowCount() : 1; }
    Firebird::IMessageMetadata* Input() const { return m_Message ? m_Message->Metadata() : nullptr; }
    void* InputBuffer() { return m_Message ? m_Message->Buffer() : nullptr; }

    const std::shared_ptr<CTransaction> m_Transaction;

    // All of the following belongs to the open statement.
    bool m_IsOpen = false;
    platform::CComPtr<ITableRows> m_Parameters;
    platform::CComPtr<ITableRows> m_Result;
    std::unique_ptr<CPreparedStatement> m_Statement;
    std::uint64_t m_Generation = 0;
    std::optional<CParameterMessage> m_Message;
    CResultPlan m_Plan;
    Firebird::ITransaction* m_Part = nullptr; // where the rows come from
    CFbPtr<Firebird::IResultSet> m_Cursor;
    ULONG m_NextRecord = 0;
    bool m_HasRow = false;             // a row of the cursor lies in the statement's buffer
    bool m_StartedTransaction = false; // no statement ran before this one
    std::uint64_t m_Delivered = 0;
    // The rows of a statement that has run to its end, one message after another.
    bool m_IsKept = false;
    std::vector<unsigned char> m_KeptRows;
    std::uint64_t m_KeptCount = 0;
};

} // namespace IDM_dmFirebird
