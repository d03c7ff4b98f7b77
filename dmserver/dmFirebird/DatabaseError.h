// What goes wrong below the interfaces travels as one exception and ends there as a status and the text of
// LastError.
#pragma once

#include "platform/com/types.h"

#include <exception>
#include <string>
#include <vector>

namespace IDM_dmFirebird {

// What the engine or the client library said, in its own words and numbers.
struct tagEngineReport {
    std::vector<long> Codes; // all that the report names, the leading one first
    int SystemError = 0;     // the system's error number, 0 when the report has none
    std::wstring Text;       // Firebird's words, lines joined by "; "
    std::string SqlState;    // five characters
    bool Has(long code) const;
    bool HasAny(std::initializer_list<long> codes) const;
    long Code() const { return Codes.empty() ? 0 : Codes.front(); }
};

class CDatabaseError : public std::exception {
public:
    // Something that the engine was not asked about.
    CDatabaseError(HRESULT status, std::wstring sentence);
    // `sentence` says what happened and what to do; the report follows it.
    CDatabaseError(std::wstring sentence, tagEngineReport report);

    // The same failure seen from further out; the report stays.
    CDatabaseError WithSentence(std::wstring sentence) const;

    HRESULT Status() const noexcept { return m_Status; }
    const std::wstring& Sentence() const noexcept { return m_Sentence; }
    const tagEngineReport& Report() const noexcept { return m_Report; }
    // "sentence", or "sentence [Firebird: words; code n, SQLSTATE s]".
    const std::wstring& Text() const noexcept { return m_Text; }
    const char* what() const noexcept override { return m_What.c_str(); }

private:
    HRESULT m_Status;
    std::wstring m_Sentence;
    tagEngineReport m_Report;
    std::wstring m_Text;
    std::string m_What;
};

// A plain sentence for a statement, a commit or any other call on an open database.
std::wstring DescribeStatementFailure(const tagEngineReport& report);

} // namespace IDM_dmFirebird
