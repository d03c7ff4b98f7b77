// Exchanges, as the store keeps them. An exchange owns its setting and its session: they go when it goes.
//
// Errors: CStoreRefusal.
#pragma once

#include "PriceSettings.h"
#include "Store.h"

#include <string>
#include <vector>

namespace sqCli {

struct tagExchange {
    std::string Name;
    std::string Description;
    LONG Holiday; // the calendar; 0 for none
    LONG Setting;
    LONG Session;
    LONG TimeZone; // a number of the hosts'
    std::string MapId;
    std::string ZoneInformation; // a time-zone string
};

struct tagKeyedExchange {
    LONG Key;
    tagExchange Exchange;
};

// By name, then by key.
[[nodiscard]] std::vector<tagKeyedExchange> SelectExchanges(CStore& store);
// Returns the key.
LONG InsertExchange(CStore& store, const tagExchange& exchange);
void UpdateExchange(CStore& store, LONG key, const tagExchange& exchange);

} // namespace sqCli
