#include "DatabaseQuery.h"

#include "platform/com/bstr.h"

namespace IDM_dmFirebird {

using IDM_dmudfcom::ITableRows;

namespace {

platform::CComPtr<ITableRows> RowsOf(IDispatch* table, const wchar_t* role) {
    platform::CComPtr<ITableRows> rows;
    if (!table)
        return rows;
    if (FAILED(table->QueryInterface(platform::UuidOf<ITableRows>, rows.PutVoid())) || !rows)
        throw CDatabaseError(E_NOINTERFACE,
                             std::wstring(L"The ") + role +
                                 L" table is of a foreign kind: give one made by the class dmTable.");
    return rows;
}

} // namespace

HRESULT CdmDatabaseQuery::Open(BSTR Statement, IDispatch* Parameters, IDispatch* Result) {
    return Guard(Errors(), [&] {
        const std::wstring_view text = platform::ViewOf(Statement);
        if (text.empty())
            throw CDatabaseError(E_INVALIDARG, L"The statement is empty: give its text.");
        if (Parameters && Parameters == Result)
            throw CDatabaseError(E_INVALIDARG, L"One table cannot be both parameters and result: give two.");
        m_Query.Open(text, RowsOf(Parameters, L"parameter"), RowsOf(Result, L"result"));
    });
}

HRESULT CdmDatabaseQuery::Close() {
    return Guard(Errors(), [this] { m_Query.Close(); });
}

HRESULT CdmDatabaseQuery::Fetch(LONG* Count) {
    if (!Count)
        return E_POINTER;
    const LONG wanted = std::exchange(*Count, 0);
    return Guard(Errors(), [&] { m_Query.Fetch(wanted, *Count); });
}

} // namespace IDM_dmFirebird
