#include "DataFeeds.h"

#include "dmserver/portfolio/dmsqStorageInterface/interface/IascStorage.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
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

// The text with which the feed comes into the store. Of one that comes back the store doubles the quotes; where the
// column has no room for that, the text goes in without them.
CBstr FirstText(const CBstr& text) {
    std::wstring first(text.View());
    if (first.size() + static_cast<std::size_t>(std::ranges::count(first, L'\'')) > LongestFeedName)
        std::ranges::replace(first, L'\'', L'_');
    return CBstr(first);
}

// A feed that could not become as it should be is not there, as before.
void TakeBack(CStore& store, LONG key, const CStoreRefusal& refusal) {
    LONG deleted = 0;
    try {
        store.Run([&](CStore::IqxStorage& storage) { return storage.DeleteDataFeed(key, &deleted); });
    } catch (const CStoreRefusal&) {
        deleted = 0;
    }
    if (deleted == 0)
        throw CStoreRefusal(fmt::format("{} And the feed could not be taken back: it is there with the key {}, "
                                        "as \"sqstorage list feeds\" shows it.",
                                        refusal.what(), key));
}

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
        return storage.InsertDataFeed(FirstText(texts.Name).Get(), FirstText(texts.ShortName).Get(),
                                      texts.DllName.Get(), texts.Clsid.Get(), feed.ReadsText ? 1 : 0, &key);
    });
    if (key < 1)
        throw CStoreRefusal("The store gave out no key for the feed: look into its log.");
    // A new feed is active, and one that comes back has the quotes in its names doubled.
    if (!feed.IsActive || HasQuote(feed.Name) || HasQuote(feed.ShortName))
        try {
            UpdateDataFeed(store, key, feed);
        } catch (const CStoreRefusal& refusal) {
            TakeBack(store, key, refusal);
            throw;
        }
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
