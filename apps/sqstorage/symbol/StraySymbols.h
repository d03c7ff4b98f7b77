// Symbols that refer to a feed or an exchange without a row. Whatever joins symbols with these, as lists do, leaves
// them out, so that they are looked for on a connection of its own.
//
// Errors: as CDatabaseReader.
#pragma once

#include "apps/sqstorage/store/DatabaseReader.h"

#include <string>
#include <vector>

namespace sqCli {

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
