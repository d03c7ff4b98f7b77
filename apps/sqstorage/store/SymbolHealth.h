// What is wrong with symbols, by counts that the database makes: however many symbols there are, none is brought.
//
// Errors: as CDatabaseReader.
#pragma once

#include "DatabaseReader.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace sqCli {

struct tagSymbolHealth {
    std::int64_t Count;                // of all symbols
    std::vector<std::string> Problems; // sentences
};

// `unwritable` are the keys of the sessions that cannot be written as text.
[[nodiscard]] tagSymbolHealth ExamineSymbols(CDatabaseReader& reader, std::span<const LONG> unwritable);

} // namespace sqCli
