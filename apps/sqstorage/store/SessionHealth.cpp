#include "SessionHealth.h"

#include <fmt/format.h>

namespace sqCli {

using IDM_dmudfcom::ITableRows;

std::vector<tagUnwritableSession> ExamineSessions(CDatabaseReader& reader) {
    std::vector<tagUnwritableSession> found;
    reader.ForEach(
        "EXECUTE BLOCK RETURNS (K INTEGER,N VARCHAR(63)) AS DECLARE T VARCHAR(512); BEGIN "
        "FOR SELECT SESSION,SESSION_NAME FROM SESSIONS ORDER BY SESSION INTO :K,:N DO BEGIN "
        "T=SESSION_TEXT(K); WHEN EXCEPTION SESSION_NOT_PRESENTABLE DO SUSPEND; END END",
        [&](const ITableRows& rows, ULONG row) {
            std::string scratch;
            const auto key = static_cast<LONG>(rows.Integer(row, 0));
            found.push_back(
                {key, fmt::format(
                          "The session \"{}\" with the key {} has more trading times than a text of 511 characters "
                          "holds, or a number in them that is below 0 or has more than seven digits, and hosts "
                          "that ask for one of its symbols get that without trading times: correct its details.",
                          rows.Text(row, 1, scratch), key)});
        });
    return found;
}

} // namespace sqCli
