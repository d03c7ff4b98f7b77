// Sessions whose trading times cannot be written as the text that hosts get. A symbol that has one comes without
// the text when it is asked for alone, and ends the selection of the whole portfolio, as what is gone does.
//
// Errors: as CDatabaseReader.
#pragma once

#include "DatabaseReader.h"

#include <string>
#include <vector>

namespace sqCli {

struct tagUnwritableSession {
    LONG Key;
    std::string Problem; // a sentence
};

// All of them, by key.
[[nodiscard]] std::vector<tagUnwritableSession> ExamineSessions(CDatabaseReader& reader);

} // namespace sqCli
