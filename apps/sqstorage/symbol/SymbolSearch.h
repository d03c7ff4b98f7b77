// Symbols of feeds by their name, to the letter; and the names that were perhaps meant.
//
// Errors: CStoreRefusal.
#pragma once

#include "apps/sqstorage/store/Store.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace sqCli {

// Several feeds, since a feed's name may be that of another one, too.
using FeedKeys = std::span<const LONG>;

// The keys of all that have the name, ascending. They differ in category, exchange or feed.
[[nodiscard]] std::vector<LONG> FindSymbols(CStore& store, FeedKeys feeds, const std::string& name);

// Names that differ from it in letter case alone, sorted.
[[nodiscard]] std::vector<std::string> NamesInOtherCase(CStore& store, FeedKeys feeds, const std::string& name);
// Names that begin with the most of the same characters, the first `most` of them sorted.
[[nodiscard]] std::vector<std::string> SimilarNames(CStore& store, FeedKeys feeds, const std::string& name,
                                                    std::size_t most);

// Whether the feed has a symbol of that name.
[[nodiscard]] bool HasSymbol(CStore& store, LONG feed, const std::string& name);

} // namespace sqCli
