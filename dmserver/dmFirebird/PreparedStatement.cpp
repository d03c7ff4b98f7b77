#include "PreparedStatement.h"

namespace IDM_dmFirebird {

using Firebird::IStatement;

namespace {

constexpr unsigned Dialect = 3;

tagColumn ReadColumn(CStatus& status, Firebird::IMessageMetadata& metadata, unsigned index) {
    tagColumn column;
    column.Name = metadata.getAlias(&status, index);
    column.Type = metadata.getType(&status, index) & ~1U;
    column.SubType = metadata.getSubType(&status, index);
    column.Length = metadata.getLength(&status, index);
    column.Scale = metadata.getScale(&status, index);
    column.CharSet = metadata.getCharSet(&status, index) & 0xFFU; // the collation stands above it
    column.Offset = metadata.getOffset(&status, index);
    column.NullOffset = metadata.getNullOffset(&status, index);
    return column;
}

bool IsTransactionControl(unsigned type) {
    return type == isc_info_sql_stmt_start_trans || type == isc_info_sql_stmt_commit ||
           type == isc_info_sql_stmt_rollback;
}

} // namespace

std::vector<tagColumn> ReadColumns(CStatus& status, Firebird::IMessageMetadata& metadata) {
    std::vector<tagColumn> columns;
    const unsigned count = metadata.getCount(&status);
    columns.reserve(count);
    for (unsigned index = 0; index < count; ++index)
        columns.push_back(ReadColumn(status, metadata, index));
    return columns;
}

CPreparedStatement::CPreparedStatement(CStatus& status, Firebird::IAttachment& attachment,
                                       Firebird::ITransaction& transaction, std::wstring key,
                                       const tagStatementText& text)
    : m_Key(std::move(key)) {
    m_Statement.reset(attachment.prepare(&status, &transaction, static_cast<unsigned>(text.Utf8.size()),
                                         text.Utf8.data(), Dialect, IStatement::PREPARE_PREFETCH_METADATA));
    m_IsSelect = text.Kind == EStatementKind::Select;
    m_IsReading = m_IsSelect;
    m_HasCursor = (m_Statement->getFlags(&status) & IStatement::FLAG_HAS_CURSOR) != 0;
    m_EndsTransactions = IsTransactionControl(m_Statement->getType(&status));
    m_InputMetadata.reset(m_Statement->getInputMetadata(&status));
    m_Parameters = ReadColumns(status, *m_InputMetadata);
    m_OutputMetadata.reset(m_Statement->getOutputMetadata(&status));
    m_Columns = ReadColumns(status, *m_OutputMetadata);
    m_RowBuffer.resize(m_OutputMetadata->getMessageLength(&status));
}

CPreparedStatement::~CPreparedStatement() {
    try {
        CStatus status;
        GiveUp(m_Statement, [&](IStatement* statement) { statement->free(&status); });
    } catch (const CDatabaseError&) {
        // The connection is gone and the statement with it; the owner lets go of the rest.
    }
}

} // namespace IDM_dmFirebird
