#include "Exchanges.h"

#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <tuple>

namespace sqCli {

namespace {

using platform::CBstr;

struct tagTexts {
    explicit tagTexts(const tagExchange& exchange)
        : Name(platform::FromUtf8(exchange.Name)), Description(platform::FromUtf8(exchange.Description)),
          MapId(platform::FromUtf8(exchange.MapId)), Zone(platform::FromUtf8(exchange.ZoneInformation)) {}
    CBstr Name;
    CBstr Description;
    CBstr MapId;
    CBstr Zone;
};

} // namespace

std::vector<tagKeyedExchange> SelectExchanges(CStore& store) {
    const tagRowSet rows = store.Select(&CStore::IqxStorage::SelectExchange);
    const auto at = ColumnsOf<9>(rows, {"EXCHANGE", "EXCHANGE_NAME", "DESCRIPTION", "HOLIDAY", "SETTING", "SESSION",
                                        "TIME_ZONE", "MAP_ID", "EXCHANGE_TIME_ZONE_INFORMATION"});
    std::vector<tagKeyedExchange> exchanges;
    for (const auto& row : rows.Rows)
        exchanges.push_back({LongOf(row[at[0]]),
                             {TextOf(row[at[1]]), TextOf(row[at[2]]), LongOf(row[at[3]]), LongOf(row[at[4]]),
                              LongOf(row[at[5]]), LongOf(row[at[6]]), TextOf(row[at[7]]), TextOf(row[at[8]])}});
    std::ranges::sort(exchanges, {},
                      [](const tagKeyedExchange& row) { return std::tie(row.Exchange.Name, row.Key); });
    return exchanges;
}

LONG InsertExchange(CStore& store, const tagExchange& exchange) {
    const tagTexts texts(exchange);
    LONG key = 0;
    store.Run([&](CStore::IqxStorage& storage) {
        return storage.InsertExchange(texts.Name.Get(), texts.Description.Get(), exchange.Holiday, exchange.Setting,
                                      exchange.Session, exchange.TimeZone, texts.MapId.Get(), texts.Zone.Get(),
                                      &key);
    });
    if (key < 1)
        throw CStoreRefusal("The store gave out no key for the exchange: look into its log.");
    return key;
}

void UpdateExchange(CStore& store, LONG key, const tagExchange& exchange) {
    const tagTexts texts(exchange);
    const HRESULT status = store.Run([&](CStore::IqxStorage& storage) {
        return storage.UpdateExchange(key, texts.Name.Get(), texts.Description.Get(), exchange.Holiday,
                                      exchange.Setting, exchange.Session, exchange.TimeZone, texts.MapId.Get(),
                                      texts.Zone.Get());
    });
    if (status != S_OK)
        throw CStoreRefusal("The exchange is not there any more: import again.");
}

} // namespace sqCli
