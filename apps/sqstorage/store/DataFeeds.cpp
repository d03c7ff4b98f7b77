#include "DataFeeds.h"

#include "dmserver/portfolio/dmsqStorageInterface/interface/IascStorage.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <tuple>

namespace sqCli {

namespace {

using IDM_qxStorage::IascStorage;
using platform::CBstr;

struct tagTexts {
    explicit tagTexts(const tagDataFeed& feed)
        : Name(platform::FromUtf8(feed.Name)), ShortName(platform::FromUtf8(feed.ShortName)),
          DllName(platform::FromUtf8(feed.DllName)), Clsid(platform::FromUtf8(feed.Clsid)) {}
    CBstr Name;
    CBstr ShortName;
    CBstr DllName;
    CBstr Clsid;
};

bool HasQuote(const std::string& text) { return text.find('\'') != std::string::npos; }

} // namespace

// The feeds' own rows do not tell.
LONG SelectTextFeed(CStore& store) {
    LONG key = 0;
    const auto asc = store.As<IascStorage>();
    store.Run([&](CStore::IqxStorage&) { return asc->get_Datafeed(&key); });
    return key;
}

std::vector<tagKeyedDataFeed> SelectDataFeeds(CStore& store) {
    const tagRowSet rows = store.Select(&CStore::IqxStorage::SelectDataFeed);
    const auto at = ColumnsOf<6>(
        rows, {"DATA_FEED", "DATA_FEED_NAME", "DATA_FEED_SHORT_NAME", "DATA_FEED_DLL_NAME", "CLSID", "ACTIVE"});
    const LONG textFeed = rows.Rows.empty() ? 0 : SelectTextFeed(store);
    std::vector<tagKeyedDataFeed> feeds;
    for (const auto& row : rows.Rows) {
        const LONG key = LongOf(row[at[0]]);
        feeds.push_back({key,
                         {TextOf(row[at[1]]), TextOf(row[at[2]]), TextOf(row[at[3]]), TextOf(row[at[4]]),
                          key == textFeed, LongOf(row[at[5]]) != 0}});
    }
    std::ranges::sort(feeds, {}, [](const tagKeyedDataFeed& feed) { return std::tie(feed.Feed.Name, feed.Key); });
    return feeds;
}

LONG InsertDataFeed(CStore& store, const tagDataFeed& feed) {
    const tagTexts texts(feed);
    LONG key = 0;
    store.Run([&](CStore::IqxStorage& storage) {
        return storage.InsertDataFeed(texts.Name.Get(), texts.ShortName.Get(), texts.DllName.Get(),
                                      texts.Clsid.Get(), feed.ReadsText ? 1 : 0, &key);
    });
    if (key < 1)
        throw CStoreRefusal("The store gave out no key for the feed: look into its log.");
    // A new feed is active, and one that comes back has the quotes in its names doubled.
    if (!feed.IsActive || HasQuote(feed.Name) || HasQuote(feed.ShortName))
        UpdateDataFeed(store, key, feed);
    return key;
}

void UpdateDataFeed(CStore& store, LONG key, const tagDataFeed& feed) {
    const tagTexts texts(feed);
    const HRESULT status = store.Run([&](CStore::IqxStorage& storage) {
        return storage.UpdateDataFeed(key, texts.Name.Get(), texts.ShortName.Get(), texts.DllName.Get(),
                                      texts.Clsid.Get(), feed.ReadsText ? 1 : 0, feed.IsActive ? 1 : 0);
    });
    if (status != S_OK)
        throw CStoreRefusal("The feed is not there any more: import again.");
}

} // namespace sqCli
