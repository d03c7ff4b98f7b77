#include "ResultPlan.h"

#include "EngineValues.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace IDM_dmFirebird {

using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::EPackedForm;
using IDM_dmudfcom::ITableRows;
using IDM_dmudfcom::tagPackedCell;

namespace {

constexpr int TextBlobSubType = 1;

std::string ToHex(std::string_view bytes) {
    static constexpr char Digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += Digits[byte >> 4];
        text += Digits[byte & 15];
    }
    return text;
}

std::string_view Varying(const unsigned char* value) {
    return {reinterpret_cast<const char*>(value + sizeof(std::uint16_t)), Load<std::uint16_t>(value)};
}

std::string_view Fixed(const unsigned char* value, unsigned length) {
    return {reinterpret_cast<const char*>(value), length};
}

// A CHAR is filled up with blanks to its width.
std::string_view WithoutFill(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

std::int64_t DayOf(const ISC_TIMESTAMP& moment) { return moment.timestamp_date - DayShift; }
std::int64_t SecondOf(const ISC_TIMESTAMP& moment) { return moment.timestamp_time / TimeUnits; }

// A table that an earlier run of the statement has filled has its columns in the same places.
LONG Find(const ITableRows& table, std::string_view name, LONG expected) {
    const auto place = static_cast<ULONG>(expected);
    return place < table.ColumnCount() && table.ColumnName(place) == name ? expected : table.FindColumn(name);
}

[[noreturn]] void RefuseType(const tagColumn& column) {
    throw CDatabaseError(E_FAIL, L"The column \"" + platform::FromUtf8(column.Name) +
                                     L"\" is of a type that cannot be read (" + std::to_wstring(column.Type) +
                                     L"): cast it in the statement.");
}

} // namespace

std::string CBlobReader::Read(ISC_QUAD id) const {
    CFbPtr<Firebird::IBlob> blob(m_Attachment.openBlob(&m_Status, &m_Transaction, &id, 0, nullptr));
    std::string content;
    std::array<char, 16384> segment;
    for (;;) {
        unsigned length = 0;
        const int result =
            blob->getSegment(&m_Status, static_cast<unsigned>(segment.size()), segment.data(), &length);
        if (result != Firebird::IStatus::RESULT_OK && result != Firebird::IStatus::RESULT_SEGMENT)
            break;
        content.append(segment.data(), length);
    }
    GiveUp(blob, [this](Firebird::IBlob* handle) { handle->close(&m_Status); });
    return content;
}

CResultPlan::CResultPlan(std::span<const tagColumn> columns, ITableRows& table)
    : m_Table(&table), m_ColumnSet(table.ColumnSet()) {
    const bool isEmpty = table.ColumnCount() == 0;
    m_Cells.reserve(columns.size());
    LONG expected = 0;
    for (const tagColumn& column : columns) {
        const LONG known = Find(table, column.Name, expected++);
        if (isEmpty && known < 0)
            Bind(column, table.AddColumn(column.Name, TypeOf(column)));
        else if (!isEmpty && known >= 0)
            Bind(column, static_cast<ULONG>(known));
    }
}

bool CResultPlan::HasTarget(ULONG target) const {
    return std::ranges::find(m_Cells, target, &tagPackedCell::Column) != m_Cells.end() ||
           std::ranges::find(m_Steps, target, &tagStep::Target) != m_Steps.end();
}

void CResultPlan::Bind(const tagColumn& column, ULONG target) {
    if (HasTarget(target))
        return;
    if (const auto form = PackedFormOf(column))
        m_Cells.push_back({*form, target, column.Offset, column.NullOffset, -DayShift});
    else
        m_Steps.push_back({MoveOf(column, m_Table->ColumnType(target)), target, column.Offset, column.NullOffset,
                           column.Length, column.Scale == 0 ? 1.0 : std::pow(10.0, -column.Scale)});
}

std::optional<EPackedForm> CResultPlan::PackedFormOf(const tagColumn& column) {
    if (column.Scale != 0)
        return std::nullopt;
    switch (column.Type) {
    case SQL_VARYING:
        return column.CharSet == CharSetOctets ? std::nullopt : std::optional(EPackedForm::Text);
    case SQL_SHORT:
        return EPackedForm::Short;
    case SQL_LONG:
        return EPackedForm::Long;
    case SQL_INT64:
        return EPackedForm::Int64;
    case SQL_FLOAT:
        return EPackedForm::Float;
    case SQL_DOUBLE:
    case SQL_D_FLOAT:
        return EPackedForm::Double;
    case SQL_TYPE_DATE:
        return EPackedForm::Day;
    default:
        return std::nullopt;
    }
}

EColumnType CResultPlan::TypeOf(const tagColumn& column) {
    switch (column.Type) {
    case SQL_BOOLEAN:
        return EColumnType::Short;
    case SQL_SHORT:
        return column.Scale == 0 ? EColumnType::Short : EColumnType::Double;
    case SQL_LONG:
        return column.Scale == 0 ? EColumnType::Long : EColumnType::Double;
    case SQL_INT64:
        return column.Scale == 0 ? EColumnType::Int64 : EColumnType::Double;
    case SQL_FLOAT:
        return EColumnType::Float;
    case SQL_DOUBLE:
    case SQL_D_FLOAT:
    case SQL_TIMESTAMP:
        return EColumnType::Double;
    case SQL_TYPE_DATE:
        return EColumnType::Date;
    case SQL_TYPE_TIME:
        return EColumnType::Time;
    default:
        return EColumnType::Text;
    }
}

CResultPlan::EMove CResultPlan::MoveOf(const tagColumn& column, EColumnType target) {
    switch (column.Type) {
    case SQL_VARYING:
        return EMove::Bytes;
    case SQL_TEXT:
        return column.CharSet == CharSetOctets ? EMove::FixedBytes : EMove::FixedText;
    case SQL_SHORT:
        return EMove::ScaledShort;
    case SQL_LONG:
        return EMove::ScaledLong;
    case SQL_INT64:
        return EMove::ScaledInt64;
    case SQL_TYPE_TIME:
        return EMove::Time;
    case SQL_TIMESTAMP:
        if (target == EColumnType::Time)
            return EMove::TimestampTime;
        return target == EColumnType::Double || target == EColumnType::Float || target == EColumnType::Text
                   ? EMove::TimestampReal
                   : EMove::TimestampDay;
    case SQL_BOOLEAN:
        return EMove::Boolean;
    case SQL_BLOB:
        return column.SubType == TextBlobSubType ? EMove::TextBlob : EMove::BinaryBlob;
    default:
        RefuseType(column);
    }
}

void CResultPlan::AppendRow(const unsigned char* row, const CBlobReader& blobs) const {
    if (!m_Table)
        return;
    m_Table->AppendPacked(row, m_Cells);
    for (const tagStep& step : m_Steps)
        if (Load<std::int16_t>(row + step.NullOffset) == 0)
            AppendValue(step, row + step.Offset, blobs);
}

inline void CResultPlan::AppendValue(const tagStep& step, const unsigned char* value,
                                     const CBlobReader& blobs) const {
    ITableRows& table = *m_Table;
    switch (step.Move) {
    case EMove::FixedText:
        return table.PutText(step.Target, WithoutFill(Fixed(value, step.Length)));
    case EMove::Bytes:
        return table.PutText(step.Target, ToHex(Varying(value)));
    case EMove::FixedBytes:
        return table.PutText(step.Target, ToHex(Fixed(value, step.Length)));
    case EMove::ScaledShort:
        return table.PutReal(step.Target, Load<std::int16_t>(value) / step.Divisor);
    case EMove::ScaledLong:
        return table.PutReal(step.Target, Load<std::int32_t>(value) / step.Divisor);
    case EMove::ScaledInt64:
        return table.PutReal(step.Target, static_cast<double>(Load<std::int64_t>(value)) / step.Divisor);
    case EMove::Time:
        return table.PutSeconds(step.Target, Load<ISC_TIME>(value) / TimeUnits);
    case EMove::TimestampDay:
        return table.PutDay(step.Target, DayOf(Load<ISC_TIMESTAMP>(value)));
    case EMove::TimestampTime:
        return table.PutSeconds(step.Target, SecondOf(Load<ISC_TIMESTAMP>(value)));
    case EMove::TimestampReal: {
        const auto moment = Load<ISC_TIMESTAMP>(value);
        const double ofDay = static_cast<double>(moment.timestamp_time) / (SecondsPerDay * TimeUnits);
        return table.PutReal(step.Target, static_cast<double>(DayOf(moment)) + ofDay);
    }
    case EMove::Boolean:
        return table.PutInteger(step.Target, Load<FB_BOOLEAN>(value) != 0 ? 1 : 0);
    case EMove::TextBlob:
        return table.PutText(step.Target, blobs.Read(Load<ISC_QUAD>(value)));
    case EMove::BinaryBlob:
        return table.PutText(step.Target, ToHex(blobs.Read(Load<ISC_QUAD>(value))));
    }
}

} // namespace IDM_dmFirebird
