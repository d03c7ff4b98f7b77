// Data feeds, as the store keeps them.
//
// Errors: CStoreRefusal.
#pragma once

#include "Store.h"

#include <cstddef>
#include <string>
#include <vector>

namespace sqCli {

// What the columns of both names hold, in characters.
inline constexpr std::size_t LongestFeedName = 31;

struct tagDataFeed {
    std::string Name;
    std::string ShortName;
    std::string DllName;
    std::string Clsid;
    bool ReadsText; // one feed at the most serves the text files of the store
    bool IsActive;
    friend auto operator<=>(const tagDataFeed&, const tagDataFeed&) = default;
};

struct tagKeyedDataFeed {
    LONG Key;
    tagDataFeed Feed;
};

// Those that are not deleted; by name, then by key.
[[nodiscard]] std::vector<tagKeyedDataFeed> SelectDataFeeds(CStore& store);
// The feed that the store takes to read text files, which may be a deleted one; 0 for none.
[[nodiscard]] LONG SelectTextFeed(CStore& store);
// Returns the key, which is an old one when a deleted feed had the same CLSID.
LONG InsertDataFeed(CStore& store, const tagDataFeed& feed);
void UpdateDataFeed(CStore& store, LONG key, const tagDataFeed& feed);

} // namespace sqCli
