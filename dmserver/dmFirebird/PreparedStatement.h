// A statement as the engine keeps it ready, with all that is known about its columns and parameters.
#pragma once

#include "FirebirdClient.h"
#include "StatementText.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace IDM_dmFirebird {

// One column of a result row, or one parameter.
struct tagColumn {
    std::string Name; // the alias, UTF-8
    unsigned Type;    // SQL_..., without the flag for null
    int SubType;
    unsigned Length; // bytes
    int Scale;       // 0 or negative: decimal places
    unsigned CharSet;
    unsigned Offset;     // in the message
    unsigned NullOffset; // in the message
};

std::vector<tagColumn> ReadColumns(CStatus& status, Firebird::IMessageMetadata& metadata);

// Used by one user at a time; whoever holds the owner is it.
class CPreparedStatement {
public:
    // `key` is the text as the caller gave it. The transaction serves the preparation alone.
    CPreparedStatement(CStatus& status, Firebird::IAttachment& attachment, Firebird::ITransaction& transaction,
                       std::wstring key, const tagStatementText& text);
    ~CPreparedStatement();
    CPreparedStatement(const CPreparedStatement&) = delete;
    CPreparedStatement& operator=(const CPreparedStatement&) = delete;

    const std::wstring& Key() const { return m_Key; }
    Firebird::IStatement& Handle() const { return *m_Statement; }

    // A SELECT reads until it has been found to write.
    bool IsReading() const { return m_IsReading; }
    void NoteWriting() { m_IsReading = false; }
    bool IsSelect() const { return m_IsSelect; }
    // Rows come through a cursor; otherwise execution gives one row, if there are columns at all.
    bool HasCursor() const { return m_HasCursor; }
    bool EndsTransactions() const { return m_EndsTransactions; }
    // A statement written out with its values will not come again.
    bool IsWorthKeeping() const { return m_IsSelect || !m_Parameters.empty(); }

    std::span<const tagColumn> Columns() const { return m_Columns; }
    std::span<const tagColumn> Parameters() const { return m_Parameters; }
    Firebird::IMessageMetadata* InputMetadata() const { return m_InputMetadata.get(); }
    Firebird::IMessageMetadata* OutputMetadata() const { return m_OutputMetadata.get(); }
    // The place of one result row.
    std::span<unsigned char> RowBuffer() { return m_RowBuffer; }

private:
    std::wstring m_Key;
    CFbPtr<Firebird::IStatement> m_Statement;
    CFbPtr<Firebird::IMessageMetadata> m_InputMetadata;
    CFbPtr<Firebird::IMessageMetadata> m_OutputMetadata;
    std::vector<tagColumn> m_Parameters;
    std::vector<tagColumn> m_Columns;
    std::vector<unsigned char> m_RowBuffer;
    bool m_IsSelect = false;
    bool m_IsReading = false;
    bool m_HasCursor = false;
    bool m_EndsTransactions = false;
};

} // namespace IDM_dmFirebird
