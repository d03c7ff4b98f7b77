#include "StatementText.h"

#include "platform/text.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace IDM_dmFirebird {

namespace {

constexpr std::wstring_view ReservedColumnNames[] = {L"OFFSET"};

constexpr std::wstring_view ReadingWords[] = {L"SELECT", L"WITH"};
constexpr std::wstring_view DefiningWords[] = {L"CREATE", L"ALTER",  L"DROP",    L"RECREATE",
                                               L"GRANT",  L"REVOKE", L"COMMENT", L"DECLARE"};

template <std::size_t Count>
bool IsAmong(const std::wstring_view (&words)[Count], std::wstring_view word) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
bool IsBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }
bool StartsWord(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c == L'_'; }
bool ContinuesWord(wchar_t c) { return StartsWord(c) || IsDigit(c) || c == L'$'; }

std::wstring UpperCase(std::wstring_view word) {
    std::wstring upper(word);
    for (wchar_t& c : upper)
        if (c >= L'a' && c <= L'z')
            c = static_cast<wchar_t>(c - L'a' + L'A');
    return upper;
}

// Walks over a statement token by token.
class CScanner {
public:
    explicit CScanner(std::wstring_view text) : m_Text(text) {}

    bool AtEnd() const { return m_At >= m_Text.size(); }
    std::size_t Position() const { return m_At; }
    wchar_t Current() const { return m_Text[m_At]; }

    // Blanks and comments.
    void SkipSpace() {
        while (!AtEnd() && SkipOneSpace())
            ;
    }
    // A word, a literal, a quoted identifier or one character of anything else. Empty for all but words.
    std::wstring_view TakeToken() {
        const wchar_t c = Current();
        if (c == L'\'' || c == L'"') {
            SkipQuoted(c);
            return {};
        }
        if (StartsWord(c))
            return TakeWord();
        if (IsDigit(c)) {
            SkipNumber();
            return {};
        }
        ++m_At;
        return {};
    }

private:
    wchar_t Peek(std::size_t ahead) const { return m_At + ahead < m_Text.size() ? m_Text[m_At + ahead] : L'\0'; }

    bool SkipOneSpace() {
        if (IsBlank(Current())) {
            ++m_At;
            return true;
        }
        if (Current() == L'-' && Peek(1) == L'-') {
            m_At = EndOf(m_Text.find(L'\n', m_At), 1);
            return true;
        }
        if (Current() == L'/' && Peek(1) == L'*') {
            m_At = EndOf(m_Text.find(L"*/", m_At + 2), 2);
            return true;
        }
        return false;
    }

    // What is not closed goes on to the end of the statement; the engine then says so.
    std::size_t EndOf(std::size_t found, std::size_t length) const {
        return found == std::wstring_view::npos ? m_Text.size() : found + length;
    }

    // A doubled quote stands for one inside; skipping two quoted pieces side by side comes to the same.
    void SkipQuoted(wchar_t quote) { m_At = EndOf(m_Text.find(quote, m_At + 1), 1); }

    // A name may follow directly, as in "1OFFSET": then it is still part of nothing sensible and left alone.
    void SkipNumber() {
        while (!AtEnd() && (ContinuesWord(Current()) || Current() == L'.'))
            ++m_At;
    }

    std::wstring_view TakeWord() {
        const std::size_t start = m_At;
        while (!AtEnd() && ContinuesWord(Current()))
            ++m_At;
        const std::wstring_view word = m_Text.substr(start, m_At - start);
        if ((word == L"Q" || word == L"q") && !AtEnd() && Current() == L'\'')
            SkipAlternativeLiteral();
        return word;
    }

    // q'{it's}'
    void SkipAlternativeLiteral() {
        const wchar_t open = Peek(1);
        const wchar_t close = open == L'{'   ? L'}'
                              : open == L'[' ? L']'
                              : open == L'(' ? L')'
                              : open == L'<' ? L'>'
                                             : open;
        const wchar_t end[] = {close, L'\'', L'\0'};
        m_At = EndOf(m_Text.find(end, m_At + 2), 2);
    }

    std::wstring_view m_Text;
    std::size_t m_At = 0;
};

// The grammar's own OFFSET is followed by how many rows to leave out; a column never is by such a thing.
bool IsClause(CScanner scanner) {
    scanner.SkipSpace();
    if (scanner.AtEnd())
        return false;
    const wchar_t next = scanner.Current();
    return IsDigit(next) || next == L'?' || next == L':' || next == L'(';
}

EStatementKind KindOf(const std::wstring& firstWord) {
    if (IsAmong(ReadingWords, firstWord))
        return EStatementKind::Select;
    return IsAmong(DefiningWords, firstWord) ? EStatementKind::Definition : EStatementKind::Other;
}

} // namespace

bool IsReservedColumnName(std::wstring_view upperCaseWord) { return IsAmong(ReservedColumnNames, upperCaseWord); }

tagStatementText TranslateStatement(std::wstring_view text) {
    tagStatementText result;
    std::wstring translated;
    std::size_t copied = 0;
    bool isFirst = true;
    CScanner scanner(text);
    for (scanner.SkipSpace(); !scanner.AtEnd(); scanner.SkipSpace()) {
        const std::size_t start = scanner.Position();
        const std::wstring_view word = scanner.TakeToken();
        const std::wstring upper = word.empty() ? std::wstring() : UpperCase(word);
        if (isFirst)
            result.Kind = KindOf(upper);
        isFirst = false;
        if (!IsReservedColumnName(upper) || IsClause(scanner))
            continue;
        translated += text.substr(copied, start - copied);
        translated += L'"' + upper + L'"';
        copied = start + word.size();
    }
    translated += text.substr(copied);
    result.Utf8 = platform::ToUtf8(translated);
    return result;
}

} // namespace IDM_dmFirebird
