// Sessions whose trading times cannot be written as the text that hosts get.
//
// Errors: as CDatabaseReader.
#pragma once

#include "DatabaseReader.h"

#include <string>
#include <vector>

namespace sqCli {

// A sentence for each of them, by key.
[[nodiscard]] std::vector<std::string> ExamineSessions(CDatabaseReader& reader);

} // namespace sqCli
