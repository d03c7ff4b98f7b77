// How the rows of a statement go into a table. Names are looked up once, when the plan is made; a row is then moved
// without asking anything: most of it by the table itself, the rest value by value.
#pragma once

#include "PreparedStatement.h"

#include "dmserver/dmudfcom/interface/TableRows.h"

#include <optional>
#include <vector>

namespace IDM_dmFirebird {

// Reads whole blobs. They live in the transaction that their row was read in.
class CBlobReader {
public:
    CBlobReader(CStatus& status, Firebird::IAttachment& attachment, Firebird::ITransaction& transaction)
        : m_Status(status), m_Attachment(attachment), m_Transaction(transaction) {}

    std::string Read(ISC_QUAD id) const;

private:
    CStatus& m_Status;
    Firebird::IAttachment& m_Attachment;
    Firebird::ITransaction& m_Transaction;
};

class CResultPlan {
public:
    // Nothing is moved anywhere.
    CResultPlan() = default;
    // A table without columns is given one for each column of the statement. In one that has some, a column is
    // bound by its name; where two bear the same name the first counts, and what has no place is left out.
    // Raises CDatabaseError for a column of a type that no table can take. The table must outlive the plan.
    CResultPlan(std::span<const tagColumn> columns, IDM_dmudfcom::ITableRows& table);

    // False after the table has been given other columns. Rows must not be appended then.
    bool IsOfTheTable() const { return !m_Table || m_Table->ColumnSet() == m_ColumnSet; }

    // `row` is the engine's message.
    void AppendRow(const unsigned char* row, const CBlobReader& blobs) const;

private:
    // The moves that a table does not make by itself.
    enum class EMove {
        FixedText,
        Bytes,
        FixedBytes,
        ScaledShort,
        ScaledLong,
        ScaledInt64,
        Time,
        TimestampDay,
        TimestampTime,
        TimestampReal,
        Boolean,
        TextBlob,
        BinaryBlob,
    };
    struct tagStep {
        EMove Move;
        ULONG Target;
        unsigned Offset;
        unsigned NullOffset;
        unsigned Length;
        double Divisor;
    };

    static std::optional<IDM_dmudfcom::EPackedForm> PackedFormOf(const tagColumn& column);
    static EMove MoveOf(const tagColumn& column, IDM_dmudfcom::EColumnType target);
    static IDM_dmudfcom::EColumnType TypeOf(const tagColumn& column);
    bool HasTarget(ULONG target) const;
    void Bind(const tagColumn& column, ULONG target);
    void AppendValue(const tagStep& step, const unsigned char* value, const CBlobReader& blobs) const;

    IDM_dmudfcom::ITableRows* m_Table = nullptr;
    std::shared_ptr<const void> m_ColumnSet;
    std::vector<IDM_dmudfcom::tagPackedCell> m_Cells;
    std::vector<tagStep> m_Steps;
};

} // namespace IDM_dmFirebird
