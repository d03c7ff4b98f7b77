// Symbols of one feed, a batch at a time: however many there are, only a batch of them is held.
//
// Errors: CStoreRefusal.
#pragma once

#include "SymbolFilter.h"

#include <string>
#include <vector>

namespace sqCli {

struct tagListedSymbol {
    LONG Key;
    std::string Name;
    std::string ExchangeName;
    LONG Category;
    std::string Description;
    float StrikePrice;
    LONG CallPut;
    Cell ExpirationDate;
};

// Holds a transaction of the database while it lives. Unlike the store, it looks at the description also when a
// name is asked for.
class CSymbolCursor {
public:
    CSymbolCursor(CStore& store, tagSymbolFilter filter);
    ~CSymbolCursor();
    CSymbolCursor(const CSymbolCursor&) = delete;
    CSymbolCursor& operator=(const CSymbolCursor&) = delete;

    // Takes the next batch; false when there are no more. The order is the database's own.
    bool Fetch();
    // Of the batch; there may be none.
    [[nodiscard]] const std::vector<tagListedSymbol>& Symbols() const noexcept { return m_Symbols; }

private:
    void TakeRows();

    CStore& m_Store;
    platform::CComPtr<IDM_qxStorage::IqxPortfolio> m_Portfolio;
    platform::CComPtr<IDM_dmudfcom::IdmTable> m_Table;
    std::wstring m_Description; // in capitals
    LONG m_Cursor = 0;
    bool m_AtEnd = false;
    std::vector<tagListedSymbol> m_Symbols;
};

} // namespace sqCli
