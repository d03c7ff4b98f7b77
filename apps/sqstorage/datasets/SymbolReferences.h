// What symbols refer to, by key and by the names that files call it. Read once, for any number of symbols.
//
// Errors: CStoreRefusal.
#pragma once

#include "NameKeys.h"
#include "SessionNames.h"
#include "SymbolRules.h"
#include "apps/sqstorage/store/Exchanges.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace sqCli {

class CSymbolReferences {
public:
    explicit CSymbolReferences(CStore& store);

    // By name, then by key.
    [[nodiscard]] const std::vector<tagKeyedExchange>& Exchanges() const noexcept { return m_Exchanges; }
    // Empty for a feed that is gone.
    [[nodiscard]] const std::string& FeedName(LONG key) const;
    [[nodiscard]] bool HasFeed(LONG key) const { return m_FeedNames.contains(key); }
    // Under its name, that is: one whose name another one has, too, may be left out of an export for that.
    [[nodiscard]] bool IsFeedWritten(const tagExportRun& run, LONG key) const;

    // The symbol as a file has it. What is gone is empty there.
    [[nodiscard]] tagSymbolRow RowOf(const tagSymbol& symbol, const std::string& exchangeName) const;
    // What a symbol refers to, beside its feed and exchange, and the store does not hold or the export leaves out.
    [[nodiscard]] std::optional<std::string> Gap(const tagExportRun& run, const tagSymbol& symbol) const;

    // Why the names of a row stand for nothing. A template's name becomes that under which it is kept.
    void Test(const tagImportRun& run, tagSymbolRow& row, std::vector<std::string>& reasons) const;
    // The row as a symbol with the keys of what it names, but without those of what it owns.
    [[nodiscard]] tagSymbol SymbolOf(const tagSymbolRow& row) const;
    // A template has the name, perhaps in other letter case: no other session can have it.
    [[nodiscard]] bool IsTemplateName(const std::string& name) const;

private:
    void ReadSessions(CStore& store);
    [[nodiscard]] tagOwnSession OwnSession(LONG key) const;

    std::vector<tagKeyedExchange> m_Exchanges;
    CNameKeys m_FeedKeys{"feed", "feeds"};
    CNameKeys m_ExchangeKeys{"exchange", "exchanges"};
    CNameKeys m_SessionKeys{"session", "sessions", SessionNameId};
    std::map<LONG, std::string> m_FeedNames;
    std::set<LONG> m_OtherFeedsOfAName;         // than the first
    std::map<LONG, std::string> m_SessionNames; // in files
    std::map<LONG, PriceTexts> m_Prices;
    std::map<LONG, tagSession> m_Sessions;
    SessionDetails m_Details;
    std::set<std::string> m_TemplateNames;
};

} // namespace sqCli
