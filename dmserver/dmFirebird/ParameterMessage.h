// The records of a parameter table as input of a statement.
#pragma once

#include "PreparedStatement.h"

#include "dmserver/dmudfcom/interface/TableRows.h"

#include <vector>

namespace IDM_dmFirebird {

// The "?" take the table's fields in field order. A value is handed over in the form in which the table holds it
// and the engine converts it, with its own checks; only days and times, which the engine has no numbers for, are
// turned here. The table and the statement must outlive the message.
class CParameterMessage {
public:
    // Raises CDatabaseError when the table has not as many fields as the statement has parameters.
    CParameterMessage(CStatus& status, const CPreparedStatement& statement, const IDM_dmudfcom::ITableRows& table);

    // Makes Buffer hold the record. Raises CDatabaseError for a value that its parameter cannot take, and after the
    // table has been given other columns.
    void LoadRecord(ULONG record);

    Firebird::IMessageMetadata* Metadata() const { return m_Metadata.get(); }
    void* Buffer() { return m_Buffer.data(); }

private:
    enum class EMove { Text, Integer, Real, Date, Time, Timestamp, Boolean };
    struct tagStep {
        EMove Move;
        unsigned Offset;
        unsigned NullOffset;
        unsigned Capacity;   // bytes of a text
        unsigned Characters; // of a text
    };

    static EMove MoveOf(const tagColumn& parameter, IDM_dmudfcom::EColumnType source);
    static void Declare(CStatus& status, Firebird::IMetadataBuilder& builder, unsigned index, EMove move,
                        const tagColumn& parameter);
    void LoadValue(const tagStep& step, ULONG record, ULONG column);
    void LoadText(const tagStep& step, ULONG record, ULONG column);
    std::int64_t RangedInteger(ULONG record, ULONG column, std::int64_t first, std::int64_t last,
                               const wchar_t* what) const;
    std::wstring PlaceText(ULONG record, ULONG column) const;

    const IDM_dmudfcom::ITableRows& m_Table;
    std::shared_ptr<const void> m_ColumnSet;
    CFbPtr<Firebird::IMessageMetadata> m_Metadata;
    std::vector<tagStep> m_Steps;
    std::vector<unsigned char> m_Buffer;
    std::string m_Scratch;
};

} // namespace IDM_dmFirebird
