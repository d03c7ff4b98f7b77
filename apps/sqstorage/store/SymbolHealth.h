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

// A symbol that refers to a feed or an exchange without a row. Whatever joins symbols with these, as lists do,
// leaves it out.
struct tagStraySymbol {
    LONG Key;
    LONG Feed;
    LONG Exchange;
    bool HasFeed;
    bool HasExchange;
};

// All of that name, to the letter, by key.
[[nodiscard]] std::vector<tagStraySymbol> FindStraySymbols(CDatabaseReader& reader, const std::string& name);

} // namespace sqCli
