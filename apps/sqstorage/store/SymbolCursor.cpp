#include "SymbolCursor.h"

#include "Symbols.h"
#include "platform/text.h"

namespace sqCli {

namespace {

// Enough that a call costs little of it, and few enough that the first are there at once.
constexpr LONG BatchSize = 500;

} // namespace

CSymbolCursor::CSymbolCursor(CStore& store, tagSymbolFilter filter)
    : m_Store(store), m_Portfolio(store.As<IDM_qxStorage::IqxPortfolio>()), m_Table(NewTable()),
      m_Description(platform::ToUpper(platform::FromUtf8(filter.Description))) {
    if (m_Description == L"*")
        m_Description.clear();
    const auto request = MakeRequest(filter);
    m_Store.Run(
        [&](CStore::IqxStorage&) { return m_Portfolio->Advise(0, request.Get(), m_Table.Get(), &m_Cursor); });
}

CSymbolCursor::~CSymbolCursor() { m_Portfolio->Unadvise(m_Cursor); }

bool CSymbolCursor::Fetch() {
    m_Symbols.clear();
    if (m_AtEnd)
        return false;
    m_Table->Clear();
    LONG count = BatchSize;
    m_Store.Run([&](CStore::IqxStorage&) { return m_Portfolio->Fetch(m_Cursor, &count); });
    m_AtEnd = count < BatchSize;
    TakeRows();
    return count > 0;
}

void CSymbolCursor::TakeRows() {
    const auto rows = m_Table.As<IDM_dmudfcom::ITableRows>();
    const auto column = [&](std::string_view name) { return static_cast<ULONG>(rows->FindColumn(name)); };
    const ULONG key = column("SYMBOL");
    const ULONG name = column("SYMBOL_NAME");
    const ULONG exchange = column("EXCHANGE_NAME");
    const ULONG category = column("CATEGORY");
    const ULONG description = column("DESCRIPTION");
    const ULONG strike = column("STRIKE_PRICE");
    const ULONG callPut = column("CALL_PUT");
    const ULONG expiration = column("EXPIRATION_DATE");
    std::string scratch;
    for (ULONG row = 0; row < rows->RowCount(); ++row) {
        std::string text(rows->Text(row, description, scratch));
        if (!m_Description.empty() && !platform::ToUpper(platform::FromUtf8(text)).starts_with(m_Description))
            continue;
        m_Symbols.push_back(
            {static_cast<LONG>(rows->Integer(row, key)), std::string(rows->Text(row, name, scratch)),
             std::string(rows->Text(row, exchange, scratch)), static_cast<LONG>(rows->Integer(row, category)),
             std::move(text), static_cast<float>(rows->Real(row, strike)),
             static_cast<LONG>(rows->Integer(row, callPut)), DateCell(rows->Integer(row, expiration))});
    }
}

} // namespace sqCli
