#include "SymbolSearch.h"

#include "apps/sqstorage/store/SymbolCursor.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

#include <algorithm>
#include <set>

namespace sqCli {

namespace {

// Fewer characters in common say nothing.
constexpr std::size_t ShortestBeginning = 2;

template <class Use>
void ForEachBeginningWith(CStore& store, FeedKeys feeds, const std::wstring& text, Use&& use) {
    for (const LONG feed : feeds) {
        CSymbolCursor cursor(store, {.Feed = feed, .Name = platform::ToUtf8(text)});
        while (cursor.Fetch())
            std::ranges::for_each(cursor.Symbols(), use);
    }
}

// The first of the sorted names.
std::vector<std::string> NamesBeginningWith(CStore& store, FeedKeys feeds, const std::wstring& text,
                                            std::size_t most) {
    std::set<std::string> names;
    ForEachBeginningWith(store, feeds, text, [&](const tagListedSymbol& symbol) {
        names.insert(symbol.Name);
        if (names.size() > most)
            names.erase(std::prev(names.end()));
    });
    return {names.begin(), names.end()};
}

} // namespace

std::vector<LONG> FindSymbols(CStore& store, FeedKeys feeds, const std::string& name) {
    std::vector<LONG> keys;
    ForEachBeginningWith(store, feeds, platform::FromUtf8(name), [&](const tagListedSymbol& symbol) {
        if (symbol.Name == name)
            keys.push_back(symbol.Key);
    });
    std::ranges::sort(keys);
    return keys;
}

std::vector<std::string> NamesInOtherCase(CStore& store, FeedKeys feeds, const std::string& name) {
    const std::wstring wanted = platform::FromUtf8(name);
    const std::wstring folded = platform::FoldCase(wanted);
    std::set<std::string> names;
    ForEachBeginningWith(store, feeds, wanted, [&](const tagListedSymbol& symbol) {
        if (platform::FoldCase(platform::FromUtf8(symbol.Name)) == folded)
            names.insert(symbol.Name);
    });
    return {names.begin(), names.end()};
}

std::vector<std::string> SimilarNames(CStore& store, FeedKeys feeds, const std::string& name, std::size_t most) {
    const std::wstring wanted = platform::FromUtf8(name);
    for (std::size_t length = wanted.size(); length >= ShortestBeginning; --length)
        if (auto names = NamesBeginningWith(store, feeds, wanted.substr(0, length), most); !names.empty())
            return names;
    return {};
}

bool HasSymbol(CStore& store, LONG feed, const std::string& name) {
    LONG key = 0;
    const platform::CBstr text(platform::FromUtf8(name));
    store.Run([&](CStore::IqxStorage& storage) { return storage.GetSymbolByName(feed, text.Get(), &key); });
    return key != 0;
}

} // namespace sqCli
