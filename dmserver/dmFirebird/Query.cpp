#include "Query.h"

namespace IDM_dmFirebird {

using Firebird::IResultSet;
using Firebird::IStatus;
using platform::CComPtr;

CQuery::~CQuery() {
    const auto lock = m_Transaction->EnterAnyway();
    Clear();
}

void CQuery::Open(std::wstring_view text, CComPtr<ITableRows> parameters, CComPtr<ITableRows> result) {
    const auto lock = m_Transaction->Enter();
    Clear();
    m_Parameters = std::move(parameters);
    m_Result = std::move(result);
    try {
        Start(text);
    } catch (...) {
        CloseCursor();
        m_Statement.reset(); // it is not worth asking what state it is in
        Clear();
        throw;
    }
}

void CQuery::Start(std::wstring_view text) {
    m_Transaction->Attach(this);
    m_IsOpen = true;
    if (RecordCount() == 0)
        return; // runs nothing, so nothing can be wrong with it either
    Prepare(text);
    CheckStatement();
    LoadParameters();
    if (m_Result)
        m_Plan = CResultPlan(m_Statement->Columns(), *m_Result);
    if (m_Statement->IsReading())
        StartReading();
    else
        Run();
}

void CQuery::Prepare(std::wstring_view text) {
    CStatementCache& cache = m_Transaction->Connection().Statements();
    m_StartedTransaction = !m_Transaction->HasStarted();
    m_Generation = cache.Generation();
    m_Statement = cache.Take(text);
    if (m_Statement)
        return;
    const tagStatementText translated = TranslateStatement(text);
    if (translated.Kind == EStatementKind::Definition) {
        m_Transaction->NoteDefinition();
        m_Generation = cache.Generation();
    }
    Firebird::ITransaction& part =
        translated.Kind == EStatementKind::Select ? m_Transaction->ForReading() : m_Transaction->ForWriting();
    m_Statement = std::make_unique<CPreparedStatement>(Status(), m_Transaction->Connection().Attachment(), part,
                                                       std::wstring(text), translated);
}

void CQuery::CheckStatement() const {
    if (m_Statement->EndsTransactions())
        throw CDatabaseError(E_INVALIDARG, L"A transaction is not ended or begun by a statement: use its Finish, "
                                           L"Rollback and Begin.");
    if (!m_Parameters && !m_Statement->Parameters().empty())
        throw CDatabaseError(E_INVALIDARG,
                             L"The statement has " + std::to_wstring(m_Statement->Parameters().size()) +
                                 L" parameters: give a parameter table with a field for each. Nothing "
                                 L"was run.");
}

void CQuery::LoadParameters() {
    if (m_Parameters)
        m_Message.emplace(Status(), *m_Statement, *m_Parameters);
}

void CQuery::StartReading() {
    try {
        OpenNextCursor();
        m_HasRow = ReadRow();
    } catch (const CDatabaseError& error) {
        if (!error.Report().Has(isc_read_only_trans))
            throw;
        StartOver();
    }
}

// The statement was refused before it changed anything, so all of it can be run again where it may write.
void CQuery::StartOver() {
    CloseCursor();
    m_Statement->NoteWriting();
    m_NextRecord = 0;
    m_HasRow = false;
    if (m_StartedTransaction)
        m_Transaction->ForgetReading();
    Run();
}

void CQuery::Run() {
    m_IsKept = true;
    m_Part = &m_Transaction->ForWriting();
    // The engine itself makes one execution all or nothing, but not several, nor a procedure's row after row.
    if (RecordCount() == 1 && !m_Statement->HasCursor())
        return RunRecords();
    CSavepoint savepoint(*m_Transaction, *m_Part);
    RunRecords();
    savepoint.Release();
}

void CQuery::RunRecords() {
    const ULONG count = RecordCount();
    try {
        for (m_NextRecord = 0; m_NextRecord < count; ++m_NextRecord) {
            if (m_Message)
                m_Message->LoadRecord(m_NextRecord);
            RunOnce();
        }
    } catch (const CDatabaseError& error) {
        CloseCursor(); // before the savepoint is gone back to
        if (count == 1)
            throw;
        throw error.WithSentence(L"Record " + std::to_wstring(m_NextRecord + 1) + L" of " + std::to_wstring(count) +
                                 L" was refused, and nothing of the statement is stored. " + error.Sentence());
    }
}

void CQuery::RunOnce() {
    if (m_Statement->HasCursor())
        return KeepRowsOfCursor();
    const bool hasRow = !m_Statement->Columns().empty();
    m_Statement->Handle().execute(&Status(), m_Part, Input(), InputBuffer(),
                                  hasRow ? m_Statement->OutputMetadata() : nullptr,
                                  hasRow ? m_Statement->RowBuffer().data() : nullptr);
    if (hasRow)
        KeepRow();
}

void CQuery::KeepRowsOfCursor() {
    m_Cursor.reset(m_Statement->Handle().openCursor(&Status(), m_Part, Input(), InputBuffer(),
                                                    m_Statement->OutputMetadata(), 0));
    while (ReadRow())
        KeepRow();
}

void CQuery::KeepRow() {
    const std::span<const unsigned char> row = m_Statement->RowBuffer();
    m_KeptRows.insert(m_KeptRows.end(), row.begin(), row.end());
    ++m_KeptCount;
}

bool CQuery::OpenNextCursor() {
    CloseCursor();
    if (m_NextRecord >= RecordCount())
        return false;
    if (m_Message)
        m_Message->LoadRecord(m_NextRecord);
    ++m_NextRecord;
    m_Part = &m_Transaction->ForReading();
    m_Cursor.reset(m_Statement->Handle().openCursor(&Status(), m_Part, Input(), InputBuffer(),
                                                    m_Statement->OutputMetadata(), 0));
    return true;
}

// A cursor that has given its last row is closed: one over a procedure must not be read again behind its end.
bool CQuery::ReadRow() {
    if (m_Cursor->fetchNext(&Status(), m_Statement->RowBuffer().data()) == IStatus::RESULT_OK) [[likely]]
        return true;
    CloseCursor();
    return false;
}

void CQuery::Fetch(LONG count, LONG& delivered) {
    delivered = 0;
    const auto lock = m_Transaction->Enter();
    if (!m_IsOpen)
        throw CDatabaseError(E_UNEXPECTED, L"No statement is open: open one before fetching.");
    if (count < 0)
        throw CDatabaseError(E_INVALIDARG, L"A negative number of rows cannot be fetched: give 0 for all.");
    if (!m_Statement)
        return;
    if (!m_Plan.IsOfTheTable())
        throw CDatabaseError(E_UNEXPECTED, L"The result table has been given other fields since the statement was "
                                           L"opened: open it again.");
    const LONG limit = count == AllRows ? std::numeric_limits<LONG>::max() : count;
    if (!m_IsKept) {
        if (AppendReadRows(limit, delivered))
            return;
        // It has given rows before it came to write. Those are the first ones of the run that may write, too.
        StartOver();
    }
    AppendKeptRows(limit, delivered);
}

// False when the statement comes to write.
bool CQuery::AppendReadRows(LONG limit, LONG& delivered) {
    try {
        if (delivered < limit && std::exchange(m_HasRow, false))
            AppendRow(m_Statement->RowBuffer().data(), delivered);
        while (delivered < limit) {
            if (!m_Cursor && !OpenNextCursor())
                break;
            AppendRowsOfCursor(limit, delivered);
        }
        return true;
    } catch (const CDatabaseError& error) {
        if (!error.Report().Has(isc_read_only_trans))
            throw;
        return false;
    }
}

void CQuery::AppendRowsOfCursor(LONG limit, LONG& delivered) {
    CStatus& status = Status();
    IResultSet& cursor = *m_Cursor;
    unsigned char* const row = m_Statement->RowBuffer().data();
    const CBlobReader blobs(status, m_Transaction->Connection().Attachment(), *m_Part);
    for (; delivered < limit; ++delivered, ++m_Delivered) {
        if (cursor.fetchNext(&status, row) != IStatus::RESULT_OK) [[unlikely]]
            return CloseCursor();
        m_Plan.AppendRow(row, blobs);
    }
}

void CQuery::AppendKeptRows(LONG limit, LONG& delivered) {
    while (delivered < limit && m_Delivered < m_KeptCount)
        AppendRow(m_KeptRows.data() + m_Delivered * m_Statement->RowBuffer().size(), delivered);
}

void CQuery::AppendRow(const unsigned char* row, LONG& delivered) {
    m_Plan.AppendRow(row, CBlobReader(Status(), m_Transaction->Connection().Attachment(), *m_Part));
    ++delivered;
    ++m_Delivered;
}

void CQuery::CloseCursor() {
    if (!m_Cursor)
        return;
    try {
        GiveUp(m_Cursor, [this](IResultSet* cursor) { cursor->close(&Status()); });
    } catch (const CDatabaseError&) {
        m_Cursor.reset(); // the connection is gone
    }
}

void CQuery::Close() {
    const auto lock = m_Transaction->Enter();
    Clear();
}

void CQuery::Abandon() { Clear(); }

void CQuery::Clear() {
    if (!m_IsOpen)
        return;
    m_IsOpen = false;
    m_Transaction->Detach(this);
    CloseCursor();
    if (m_Statement)
        m_Transaction->Connection().Statements().GiveBack(std::move(m_Statement), m_Generation);
    m_Message.reset();
    m_Plan = CResultPlan();
    m_Parameters.Reset();
    m_Result.Reset();
    m_Part = nullptr;
    m_NextRecord = 0;
    m_HasRow = false;
    m_Delivered = 0;
    m_IsKept = false;
    m_KeptRows = {};
    m_KeptCount = 0;
}

} // namespace IDM_dmFirebird
