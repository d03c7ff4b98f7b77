#include "SymbolWriter.h"

#include "apps/sqstorage/store/PriceSettings.h"

#include <exception>
#include <ranges>

namespace sqCli {

CSymbolWriter::CUndo::~CUndo() {
    for (const auto& step : std::views::reverse(m_Steps)) {
        try {
            step();
        } catch (const std::exception&) {
            // What stays behind has no effect, and what led here is what counts: also where not the store refused
            // the step, but who is told of its changes could not be.
        }
    }
}

void CSymbolWriter::Insert(const tagSymbolRow& row) {
    CUndo undo;
    tagSymbol symbol = m_References.SymbolOf(row);
    if (symbol.SettingType == SettingIsOwn)
        symbol.Setting = NewSetting(row, undo);
    if (symbol.SessionType == SessionIsOwn)
        symbol.CustomSession = NewSession(row.Own, undo);
    InsertSymbol(m_Store, symbol);
    undo.Keep();
}

void CSymbolWriter::Update(LONG key, const tagSymbol& before, const tagSymbolRow& rowBefore,
                           const tagSymbolRow& row) {
    if (!m_Owned && (before.SettingType == SettingIsOwn || before.SessionType == SessionIsOwn))
        m_Owned = OwnedBySymbols(m_Store);
    CUndo undo;
    tagSymbol symbol = m_References.SymbolOf(row);
    if (symbol.SettingType == SettingIsOwn)
        symbol.Setting = before.SettingType == SettingIsOwn && rowBefore.Prices == row.Prices
                             ? before.Setting
                             : NewSetting(row, undo);
    if (symbol.SessionType == SessionIsOwn)
        symbol.CustomSession = before.SessionType == SessionIsOwn && rowBefore.Own == row.Own
                                   ? before.CustomSession
                                   : NewSession(row.Own, undo);
    UpdateSymbol(m_Store, key, symbol);
    undo.Keep();
    RemoveLost(before, symbol);
}

LONG CSymbolWriter::NewSetting(const tagSymbolRow& row, CUndo& undo) {
    const LONG key = InsertSetting(m_Store, SettingOf(row.Prices).value());
    undo.Add([this, key] { DeleteSetting(m_Store, key); });
    return key;
}

LONG CSymbolWriter::NewSession(const tagOwnSession& session, CUndo& undo) {
    const LONG key = InsertSession(m_Store, {session.Name, SessionIsOwn, session.TimeZone});
    undo.Add([this, key] { DeleteSession(m_Store, key); });
    ReplaceSessionDetails(m_Store, key, session.Times, {});
    return key;
}

// One symbol less has the row: true when it was the only one, and nothing else has it.
bool CSymbolWriter::Release(std::map<LONG, std::size_t>& owned, LONG key) {
    const auto uses = owned.find(key);
    return uses != owned.end() && --uses->second == 0;
}

void CSymbolWriter::RemoveLost(const tagSymbol& before, const tagSymbol& after) {
    if (before.SettingType == SettingIsOwn && before.Setting != after.Setting &&
        Release(m_Owned->Settings, before.Setting))
        DeleteSetting(m_Store, before.Setting);
    if (before.SessionType == SessionIsOwn && before.CustomSession != after.CustomSession &&
        Release(m_Owned->Sessions, before.CustomSession))
        DeleteSession(m_Store, before.CustomSession);
}

} // namespace sqCli
