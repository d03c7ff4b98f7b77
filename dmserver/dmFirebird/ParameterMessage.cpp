#include "ParameterMessage.h"

#include "EngineValues.h"

#include "platform/text.h"

#include <algorithm>
#include <cmath>

namespace IDM_dmFirebird {

using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::ITableRows;

namespace {

// Room for the text of a number, a date or a time that the engine is to read.
constexpr unsigned ValueTextLength = 256;
constexpr unsigned LongestText = 32765;

bool IsText(const tagColumn& parameter) { return parameter.Type == SQL_TEXT || parameter.Type == SQL_VARYING; }

unsigned TextCapacity(const tagColumn& parameter) {
    if (IsText(parameter))
        return std::max(parameter.Length, 1U);
    return parameter.Type == SQL_BLOB ? LongestText : ValueTextLength;
}

unsigned CharacterCapacity(const tagColumn& parameter) {
    const unsigned capacity = TextCapacity(parameter);
    return IsText(parameter) && parameter.CharSet == CharSetUtf8 ? capacity / BytesPerCharacter : capacity;
}

std::size_t CountCharacters(std::string_view utf8) {
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

} // namespace

CParameterMessage::CParameterMessage(CStatus& status, const CPreparedStatement& statement, const ITableRows& table)
    : m_Table(table), m_ColumnSet(table.ColumnSet()) {
    const std::span<const tagColumn> parameters = statement.Parameters();
    if (parameters.size() != table.ColumnCount())
        throw CDatabaseError(E_INVALIDARG, L"The statement has " + std::to_wstring(parameters.size()) +
                                               L" parameters but the parameter table has " +
                                               std::to_wstring(table.ColumnCount()) +
                                               L" fields: give one field for each \"?\". Nothing was run.");
    if (parameters.empty())
        return;
    const CFbPtr<Firebird::IMetadataBuilder> builder(statement.InputMetadata()->getBuilder(&status));
    for (unsigned index = 0; index < parameters.size(); ++index) {
        const EMove move = MoveOf(parameters[index], table.ColumnType(index));
        Declare(status, *builder, index, move, parameters[index]);
        m_Steps.push_back({move, 0, 0, TextCapacity(parameters[index]), CharacterCapacity(parameters[index])});
    }
    m_Metadata.reset(builder->getMetadata(&status));
    for (unsigned index = 0; index < parameters.size(); ++index) {
        m_Steps[index].Offset = m_Metadata->getOffset(&status, index);
        m_Steps[index].NullOffset = m_Metadata->getNullOffset(&status, index);
    }
    m_Buffer.resize(m_Metadata->getMessageLength(&status));
}

CParameterMessage::EMove CParameterMessage::MoveOf(const tagColumn& parameter, EColumnType source) {
    if (source == EColumnType::Text || IsText(parameter) || parameter.Type == SQL_BLOB)
        return EMove::Text;
    switch (parameter.Type) {
    case SQL_TYPE_DATE:
        return EMove::Date;
    case SQL_TYPE_TIME:
        return EMove::Time;
    case SQL_TIMESTAMP:
        return EMove::Timestamp;
    case SQL_BOOLEAN:
        return EMove::Boolean;
    default:
        return source == EColumnType::Float || source == EColumnType::Double ? EMove::Real : EMove::Integer;
    }
}

void CParameterMessage::Declare(CStatus& status, Firebird::IMetadataBuilder& builder, unsigned index, EMove move,
                                const tagColumn& parameter) {
    // The builder wants to be told that the value may be null.
    const auto declare = [&](unsigned type, unsigned length) {
        builder.setType(&status, index, type | 1U);
        builder.setSubType(&status, index, 0);
        builder.setScale(&status, index, 0);
        builder.setLength(&status, index, length);
    };
    switch (move) {
    case EMove::Text:
        declare(SQL_VARYING, TextCapacity(parameter));
        builder.setCharSet(&status, index, IsText(parameter) ? parameter.CharSet : CharSetUtf8);
        break;
    case EMove::Integer:
        return declare(SQL_INT64, sizeof(std::int64_t));
    case EMove::Real:
        return declare(SQL_DOUBLE, sizeof(double));
    case EMove::Date:
        return declare(SQL_TYPE_DATE, sizeof(ISC_DATE));
    case EMove::Time:
        return declare(SQL_TYPE_TIME, sizeof(ISC_TIME));
    case EMove::Timestamp:
        return declare(SQL_TIMESTAMP, sizeof(ISC_TIMESTAMP));
    case EMove::Boolean:
        return declare(SQL_BOOLEAN, sizeof(FB_BOOLEAN));
    }
}

void CParameterMessage::LoadRecord(ULONG record) {
    if (m_Table.ColumnSet() != m_ColumnSet)
        throw CDatabaseError(E_UNEXPECTED,
                             L"The parameter table has been given other fields since the statement was "
                             L"opened: open it again.");
    for (ULONG column = 0; column < m_Steps.size(); ++column) {
        const tagStep& step = m_Steps[column];
        const bool isNull = m_Table.IsNull(record, column);
        Save<std::int16_t>(m_Buffer.data() + step.NullOffset, isNull ? -1 : 0);
        if (!isNull)
            LoadValue(step, record, column);
    }
}

void CParameterMessage::LoadValue(const tagStep& step, ULONG record, ULONG column) {
    unsigned char* const place = m_Buffer.data() + step.Offset;
    switch (step.Move) {
    case EMove::Text:
        return LoadText(step, record, column);
    case EMove::Integer:
        return Save<std::int64_t>(place, m_Table.Integer(record, column));
    case EMove::Real:
        return Save<double>(place, m_Table.Real(record, column));
    case EMove::Date:
        return Save<ISC_DATE>(
            place, static_cast<ISC_DATE>(RangedInteger(record, column, FirstDay, LastDay, L"day") + DayShift));
    case EMove::Time:
        return Save<ISC_TIME>(
            place, static_cast<ISC_TIME>(RangedInteger(record, column, 0, SecondsPerDay - 1, L"time") * TimeUnits));
    case EMove::Timestamp: {
        RangedInteger(record, column, FirstDay, LastDay, L"day");
        const double moment = m_Table.Real(record, column);
        const double day = std::floor(moment);
        const auto ofDay = static_cast<std::int64_t>(std::llround((moment - day) * SecondsPerDay * TimeUnits));
        return Save<ISC_TIMESTAMP>(place, {static_cast<ISC_DATE>(day) + DayShift,
                                           static_cast<ISC_TIME>(std::min(ofDay, SecondsPerDay * TimeUnits - 1))});
    }
    case EMove::Boolean:
        return Save<FB_BOOLEAN>(place, m_Table.Integer(record, column) != 0 ? FB_TRUE : FB_FALSE);
    }
}

void CParameterMessage::LoadText(const tagStep& step, ULONG record, ULONG column) {
    const std::string_view text = m_Table.Text(record, column, m_Scratch);
    if (text.size() > step.Capacity || CountCharacters(text) > step.Characters)
        throw CDatabaseError(E_FAIL, PlaceText(record, column) + L" holds a text of " +
                                         std::to_wstring(CountCharacters(text)) + L" characters, but only " +
                                         std::to_wstring(step.Characters) + L" fit: shorten it.");
    unsigned char* const place = m_Buffer.data() + step.Offset;
    Save<std::uint16_t>(place, static_cast<std::uint16_t>(text.size()));
    std::copy(text.begin(), text.end(), place + sizeof(std::uint16_t));
}

std::int64_t CParameterMessage::RangedInteger(ULONG record, ULONG column, std::int64_t first, std::int64_t last,
                                              const wchar_t* what) const {
    const std::int64_t value = m_Table.Integer(record, column);
    if (value < first || value > last)
        throw CDatabaseError(E_FAIL, PlaceText(record, column) + L" holds " + std::to_wstring(value) +
                                         L", which is no " + what + L": correct the value.");
    return value;
}

std::wstring CParameterMessage::PlaceText(ULONG record, ULONG column) const {
    return L"The field \"" + platform::FromUtf8(m_Table.ColumnName(column)) + L"\" of record " +
           std::to_wstring(record + 1) + L" of the parameter table";
}

} // namespace IDM_dmFirebird
