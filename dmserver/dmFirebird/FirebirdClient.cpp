#include "FirebirdClient.h"

#include "LockDirectory.h"

#include "platform/last_error.h"
#include "platform/text.h"

#include <algorithm>

namespace IDM_dmFirebird {

namespace {

std::string EngineWords(const Firebird::IStatus* status) {
    std::string words(4096, '\0');
    // The engine's own signature takes a plain pointer and changes nothing.
    const unsigned length = Master()->getUtilInterface()->formatStatus(
        words.data(), static_cast<unsigned>(words.size()), const_cast<Firebird::IStatus*>(status));
    words.resize(std::min<std::size_t>(length, words.size()));
    std::string joined;
    for (const char c : words) {
        if (c != '\n')
            joined += c;
        else
            joined += "; ";
    }
    for (std::size_t at = 0; (at = joined.find("; -", at)) != std::string::npos;)
        joined.erase(at + 2, 1);
    return joined;
}

// Words come in the connection's character set, but a failing connection has none yet.
std::wstring ToWide(const std::string& words) {
    try {
        return platform::FromUtf8(words);
    } catch (const platform::CTextError&) {
        return platform::FromCp1251(words);
    }
}

void ReadCodes(const intptr_t* vector, tagEngineReport& report) {
    while (*vector != isc_arg_end) {
        const intptr_t kind = *vector;
        if (kind == isc_arg_gds && vector[1] != 0)
            report.Codes.push_back(static_cast<long>(vector[1]));
        else if (kind == isc_arg_unix && report.SystemError == 0)
            report.SystemError = static_cast<int>(vector[1]);
        vector += kind == isc_arg_cstring ? 3 : 2;
    }
}

tagEngineReport MakeReport(const Firebird::IStatus* status) {
    tagEngineReport report;
    const intptr_t* errors = status->getErrors();
    ReadCodes(errors, report);
    char state[6] = "HY000";
    fb_sqlstate(state, errors);
    report.SqlState = state;
    report.Text = ToWide(EngineWords(status));
    return report;
}

} // namespace

CStatus::CStatus() : BaseStatusWrapper(Master()->getStatus()) {
    // The engine repeats some calls as long as the thread's last error says that they were interrupted, without a
    // look at whether they failed; an interruption of old would keep it at that for ever.
    platform::SetLastError(0);
}

void CStatus::Throw() {
    tagEngineReport report = MakeReport(status);
    std::wstring sentence = DescribeStatementFailure(report);
    clearException();
    throw CDatabaseError(std::move(sentence), std::move(report));
}

Firebird::IMaster* Master() {
    static Firebird::IMaster* const master = [] {
        ChooseLockDirectory();
        return Firebird::fb_get_master_interface();
    }();
    return master;
}

} // namespace IDM_dmFirebird
