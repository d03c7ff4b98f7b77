// Writes symbols with the price setting and the session that they own. These are there before the symbol needs
// them, and go when the symbol does not come to have them.
#pragma once

#include "SymbolReferences.h"

#include <functional>
#include <vector>

namespace sqCli {

class CSymbolWriter {
public:
    CSymbolWriter(CStore& store, const CSymbolReferences& references) : m_Store(store), m_References(references) {}

    void Insert(const tagSymbolRow& row);
    // `before` is the symbol in the store. What it owned alone and no longer has goes.
    void Update(LONG key, const tagSymbol& before, const tagSymbolRow& rowBefore, const tagSymbolRow& row);

private:
    // What has to be undone when the writing ends before Keep().
    class CUndo {
    public:
        CUndo() = default;
        ~CUndo();
        CUndo(const CUndo&) = delete;
        CUndo& operator=(const CUndo&) = delete;

        void Add(std::function<void()> step) { m_Steps.push_back(std::move(step)); }
        void Keep() noexcept { m_Steps.clear(); }

    private:
        std::vector<std::function<void()>> m_Steps;
    };

    LONG NewSetting(const tagSymbolRow& row, CUndo& undo);
    LONG NewSession(const tagOwnSession& session, CUndo& undo);
    void RemoveLost(const tagSymbol& before, const tagSymbol& after);
    static bool Release(std::map<LONG, std::size_t>& owned, LONG key);

    CStore& m_Store;
    const CSymbolReferences& m_References;
    std::optional<tagOwnedRows> m_Owned; // before the first update, less what updates have released since
};

} // namespace sqCli
