#include "Csv.h"

#include "platform/text.h"

#include <algorithm>

namespace sqCli {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

void RefuseMalformedText(std::string_view bytes) {
    try {
        static_cast<void>(platform::FromUtf8(bytes));
    } catch (const platform::CTextError& error) {
        const std::string_view before = bytes.substr(0, error.Offset());
        const auto line = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1;
        throw CCsvError("the text is not UTF-8: save the file in that encoding", line);
    }
}

class CCsvScanner {
public:
    explicit CCsvScanner(std::string_view text) : m_Text(text) {}

    std::vector<tagCsvRecord> Records() {
        std::vector<tagCsvRecord> records;
        while (m_At < m_Text.size()) {
            if (!TakeLineEnd())
                records.push_back(Record());
        }
        return records;
    }

private:
    tagCsvRecord Record() {
        tagCsvRecord record{m_Line, {}};
        do
            record.Fields.push_back(Take('"') ? QuotedField() : PlainField());
        while (Take(','));
        if (m_At < m_Text.size() && !TakeLineEnd())
            throw CCsvError("a quoted value is followed by more text: double the quotes within it", m_Line);
        return record;
    }

    std::string PlainField() {
        const std::size_t begin = m_At;
        while (m_At < m_Text.size() && m_Text[m_At] != ',' && !IsLineEnd()) {
            if (m_Text[m_At] == '"')
                throw CCsvError("a quote stands within a value that is not in quotes: put the value in quotes and "
                                "double the ones within",
                                m_Line);
            ++m_At;
        }
        return std::string(m_Text.substr(begin, m_At - begin));
    }

    std::string QuotedField() {
        const std::size_t opened = m_Line;
        std::string value;
        for (; m_At < m_Text.size(); ++m_At) {
            if (m_Text[m_At] == '"') {
                ++m_At;
                if (m_At >= m_Text.size() || m_Text[m_At] != '"')
                    return value;
            } else if (m_Text[m_At] == '\n') {
                ++m_Line;
            }
            value += m_Text[m_At];
        }
        throw CCsvError("the quote that opens here is never closed: add the closing one", opened);
    }

    bool Take(char c) {
        if (m_At >= m_Text.size() || m_Text[m_At] != c)
            return false;
        ++m_At;
        return true;
    }
    bool IsLineEnd() const { return m_Text[m_At] == '\n' || m_Text.substr(m_At, 2) == "\r\n"; }
    bool TakeLineEnd() {
        if (!IsLineEnd())
            return false;
        m_At += m_Text[m_At] == '\r' ? 2 : 1;
        ++m_Line;
        return true;
    }

    std::string_view m_Text;
    std::size_t m_At = 0;
    std::size_t m_Line = 1;
};

// A sole empty value would otherwise be an empty line, which readers skip; a mark at the start would be taken for
// that of the byte order.
bool NeedsQuotes(std::string_view value, bool alone) {
    return value.find_first_of(",\"\r\n") != std::string_view::npos || (alone && value.empty()) ||
           value.starts_with(ByteOrderMark);
}

void AppendField(std::string& text, std::string_view value, bool alone) {
    if (!NeedsQuotes(value, alone)) {
        text += value;
        return;
    }
    text += '"';
    for (const char c : value) {
        if (c == '"')
            text += '"';
        text += c;
    }
    text += '"';
}

template <class Values, class ToText>
void AppendRecord(std::string& text, const Values& values, ToText&& toText) {
    for (std::size_t column = 0; column < values.size(); ++column) {
        if (column != 0)
            text += ',';
        AppendField(text, toText(values[column]), values.size() == 1);
    }
    text += '\n';
}

} // namespace

std::vector<tagCsvRecord> ParseCsv(std::string_view bytes) {
    if (bytes.starts_with(ByteOrderMark))
        bytes.remove_prefix(ByteOrderMark.size());
    RefuseMalformedText(bytes);
    return CCsvScanner(bytes).Records();
}

std::string WriteCsv(const tagRowSet& rows) {
    std::string text;
    AppendRecord(text, rows.Columns, [](const std::string& name) { return name; });
    return text + WriteCsvRows(rows);
}

std::string WriteCsvRows(const tagRowSet& rows) {
    std::string text;
    for (const auto& row : rows.Rows)
        AppendRecord(text, row, TextOf);
    return text;
}

} // namespace sqCli
