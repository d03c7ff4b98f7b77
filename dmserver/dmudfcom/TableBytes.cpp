#include "TableBytes.h"

#include "CarrierText.h"

#include "Carriers.pb.h"

#include <unordered_map>
#include <utility>

namespace IDM_dmudfcom {

namespace {

namespace wire = sqstorage::carriers;

constexpr std::size_t MaxFields = 4096;
constexpr int ColumnsNumber = wire::Table::kColumnsFieldNumber;

std::size_t NullBytes(ULONG records) { return (std::size_t{records} + 7) / 8; }

// Writing

class CColumnWriter {
public:
    CColumnWriter(const CColumn& column, wire::Column& target) : m_Column(column), m_Target(target) {}

    void Write(ULONG record, Row row, ULONG records) {
        if (m_Column.IsNull(row)) {
            std::string& nulls = *m_Target.mutable_nulls();
            nulls.resize(NullBytes(records));
            nulls[record / 8] = static_cast<char>(nulls[record / 8] | 1 << record % 8);
            return;
        }
        std::int64_t integer;
        double real;
        switch (m_Column.Type()) {
        case EColumnType::Text:
            WriteText(row);
            break;
        case EColumnType::Float:
            m_Column.Real(row, real);
            m_Target.add_floats(static_cast<float>(real));
            break;
        case EColumnType::Double:
            m_Column.Real(row, real);
            m_Target.add_doubles(real);
            break;
        default:
            m_Column.Integer(row, integer);
            m_Target.add_integers(integer);
        }
    }

private:
    void WriteText(Row row) {
        const auto next = static_cast<std::uint32_t>(m_Indexes.size());
        const auto [place, isNew] = m_Indexes.try_emplace(m_Column.TextHandle(row), next);
        if (isNew) {
            std::string scratch;
            const std::string_view text = m_Column.Text(row, scratch);
            m_Target.mutable_texts()->append(text);
            m_Target.add_text_lengths(static_cast<std::uint32_t>(text.size()));
        }
        m_Target.add_text_indexes(place->second);
    }

    const CColumn& m_Column;
    wire::Column& m_Target;
    std::unordered_map<CTextPool::Handle, std::uint32_t> m_Indexes;
};

void WriteField(const tagField& field, wire::Column& target) {
    target.set_name(field.Name);
    target.set_id(field.Id);
    target.set_type(static_cast<std::uint32_t>(field.Type));
    target.set_size(field.Size);
    target.set_base_code(field.BaseCode);
    target.set_has_status(field.HasStatus);
    target.set_status(field.Status);
}

// Reading

class CColumnReader {
public:
    CColumnReader(const wire::Column& source, ULONG records) : m_Source(source), m_Records(records) {}

    bool HasRightShape() {
        const std::size_t nullBytes = m_Source.nulls().size();
        if (nullBytes != 0 && nullBytes != NullBytes(m_Records))
            return false;
        std::size_t values = m_Records;
        for (std::size_t bit = 0; bit < nullBytes * 8; ++bit) {
            if (!IsNull(static_cast<ULONG>(bit)))
                continue;
            if (bit >= m_Records)
                return false;
            --values;
        }
        return HasValues(values) && (Type() != EColumnType::Text || CutTexts());
    }

    bool Read(CColumn& target) {
        for (ULONG record = 0; record < m_Records; ++record)
            if (!IsNull(record) && !ReadCell(target, record))
                return false;
        return true;
    }

private:
    EColumnType Type() const { return static_cast<EColumnType>(m_Source.type()); }

    bool IsNull(ULONG record) const {
        return !m_Source.nulls().empty() && (m_Source.nulls()[record / 8] >> record % 8 & 1) != 0;
    }

    // Of its own kind so many, and none of another kind.
    bool HasValues(std::size_t count) const {
        const auto size = [](const auto& values) { return static_cast<std::size_t>(values.size()); };
        const bool isText = Type() == EColumnType::Text;
        const bool isFloat = Type() == EColumnType::Float;
        const bool isDouble = Type() == EColumnType::Double;
        const bool isWhole = !isText && !isFloat && !isDouble;
        return size(m_Source.text_indexes()) == (isText ? count : 0) &&
               size(m_Source.floats()) == (isFloat ? count : 0) &&
               size(m_Source.doubles()) == (isDouble ? count : 0) &&
               size(m_Source.integers()) == (isWhole ? count : 0) &&
               (isText || (m_Source.texts().empty() && m_Source.text_lengths().empty()));
    }

    bool CutTexts() {
        std::string_view rest = m_Source.texts();
        for (const std::uint32_t length : m_Source.text_lengths()) {
            if (length > rest.size() || !IsUtf8(rest.substr(0, length)))
                return false;
            m_Texts.push_back(rest.substr(0, length));
            rest.remove_prefix(length);
        }
        return rest.empty();
    }

    bool ReadCell(CColumn& target, ULONG record) {
        const int value = m_Next++;
        switch (Type()) {
        case EColumnType::Text: {
            const std::uint32_t text = m_Source.text_indexes(value);
            return text < m_Texts.size() && target.SetText(record, m_Texts[text]);
        }
        case EColumnType::Float:
            return target.SetReal(record, m_Source.floats(value));
        case EColumnType::Double:
            return target.SetReal(record, m_Source.doubles(value));
        default:
            return target.SetInteger(record, m_Source.integers(value));
        }
    }

    const wire::Column& m_Source;
    ULONG m_Records;
    std::vector<std::string_view> m_Texts;
    int m_Next = 0; // among the values
};

bool ReadField(const wire::Column& source, CTableStore& store) {
    if (source.name().empty() || !IsUtf8(source.name()) || !IsColumnType(source.type()) ||
        store.FindField(source.id()) != NoField || store.FindField(source.name()) != NoField)
        return false;
    tagField field;
    field.Id = source.id();
    field.Name = source.name();
    field.Type = static_cast<EColumnType>(source.type());
    field.Size = source.size();
    field.BaseCode = source.base_code();
    field.HasStatus = source.has_status();
    field.Status = source.status();
    store.AddField(std::move(field));
    return true;
}

bool ReadStore(const wire::Table& source, CTableStore& store) {
    const ULONG records = source.record_count();
    if (!std::in_range<LONG>(records) || (source.columns().empty() && records != 0))
        return false;
    for (const wire::Column& column : source.columns()) {
        CColumnReader reader(column, records);
        // The shape tells that there are bytes for all records, before anything is made for them.
        if (!ReadField(column, store) || !reader.HasRightShape() ||
            !reader.Read(store.Fill(store.FieldCount() - 1)))
            return false;
    }
    store.AddRecords(records);
    return true;
}

} // namespace

bool IsColumnType(ULONG type) {
    switch (static_cast<EColumnType>(type)) {
    case EColumnType::Text:
    case EColumnType::Short:
    case EColumnType::Long:
    case EColumnType::Int64:
    case EColumnType::Float:
    case EColumnType::Double:
    case EColumnType::Date:
    case EColumnType::Time:
        return true;
    }
    return false;
}

std::string WriteTable(const CTableStore& store, LONG id, LONG contents) {
    wire::Table table;
    table.set_id(id);
    table.set_contents(contents);
    const ULONG records = store.RecordCount();
    table.set_record_count(records);
    for (ULONG field = 0; field < store.FieldCount(); ++field) {
        wire::Column& target = *table.add_columns();
        WriteField(store.Field(field), target);
        CColumnWriter writer(store.Column(field), target);
        for (ULONG record = 0; record < records; ++record)
            writer.Write(record, store.RecordRow(record), records);
    }
    return Seal(EContent::Table, table.SerializeAsString());
}

std::optional<tagTableContent> ReadTable(std::string_view bytes) {
    const auto content = Unseal(EContent::Table, bytes);
    if (!content || CountFields(*content, ColumnsNumber).value_or(MaxFields + 1) > MaxFields)
        return std::nullopt;
    wire::Table table;
    if (!table.ParseFromString(*content))
        return std::nullopt;
    tagTableContent result{table.id(), table.contents(), std::make_shared<CTableStore>()};
    if (!ReadStore(table, *result.Store))
        return std::nullopt;
    return result;
}

} // namespace IDM_dmudfcom
