// The part of CdmTable that deals with orders and keys.

#include "CarrierText.h"
#include "Guarded.h"
#include "dmTable.h"

#include <algorithm>

namespace IDM_dmudfcom {

namespace {

std::string_view Trim(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Nothing when a name is empty, unknown or given twice.
std::optional<std::vector<ULONG>> ReadFieldList(const CTableStore& store, std::string_view list) {
    std::vector<ULONG> fields;
    for (bool isLast = false; !isLast;) {
        const std::size_t end = list.find(';');
        isLast = end == std::string_view::npos;
        const ULONG field = store.FindField(Trim(list.substr(0, end)));
        if (field == NoField || std::ranges::find(fields, field) != fields.end())
            return std::nullopt;
        fields.push_back(field);
        list.remove_prefix(isLast ? list.size() : end + 1);
    }
    return fields;
}

} // namespace

HRESULT CdmTable::CreateIndex(BSTR FieldList, LONG Id) {
    return Guarded([&]() -> HRESULT {
        const auto list = ToStored(platform::ViewOf(FieldList));
        auto fields = list ? ReadFieldList(*m_Store, *list) : std::nullopt;
        if (!fields)
            return E_INVALIDARG;
        FinishEdit();
        if (const CTableIndex* current = m_Cursor.Index(); current && current->Id() == Id)
            m_Key = {};
        m_Store->CreateIndex(Id, std::move(*fields));
        return S_OK;
    });
}

HRESULT CdmTable::SetIndex(LONG Id) {
    return Guarded([&]() -> HRESULT {
        if (!m_Store->Index(Id))
            return E_INVALIDARG;
        FinishEdit();
        m_Key = {};
        m_Cursor.SetIndex(Id);
        return S_OK;
    });
}

HRESULT CdmTable::ResetIndex() {
    return Guarded([&]() -> HRESULT {
        FinishEdit();
        m_Key = {};
        m_Cursor.SetIndex(std::nullopt);
        return S_OK;
    });
}

HRESULT CdmTable::SetKey() {
    return Guarded([&]() -> HRESULT {
        FinishEdit();
        const CTableIndex* index = m_Cursor.Index();
        if (!index)
            return E_FAIL;
        m_Key = {};
        m_Key.Values = CReservedRow(m_Store);
        m_Key.Given.assign(index->Fields().size(), false);
        m_Key.IsCollecting = true;
        return S_OK;
    });
}

// The values given so far are the key; they must be those of the first index fields, without a gap.
HRESULT CdmTable::Matches(CTableIndex::tagRange& range) {
    FinishEdit();
    CTableIndex* index = m_Cursor.Index();
    if (!index || !m_Key.Values || index->Fields().size() != m_Key.Given.size())
        return E_FAIL;
    const auto gap = std::ranges::find(m_Key.Given, false);
    const bool hasGap = std::find(gap, m_Key.Given.end(), true) != m_Key.Given.end();
    if (hasGap || gap == m_Key.Given.begin())
        return E_INVALIDARG;
    range = index->Matches(m_Key.Values.Get(), static_cast<std::size_t>(gap - m_Key.Given.begin()));
    return S_OK;
}

HRESULT CdmTable::GotoKey(LONG* Value) {
    if (!Value)
        return E_POINTER;
    *Value = 0;
    return Guarded([&] {
        CTableIndex::tagRange range{};
        const HRESULT status = Matches(range);
        if (status == S_OK && range.First < range.Last) {
            m_Cursor.MoveTo(range.First);
            *Value = 1;
        }
        return status;
    });
}

HRESULT CdmTable::get_KeyRecordCount(LONG* Value) {
    if (!Value)
        return E_POINTER;
    *Value = 0;
    return Guarded([&] {
        CTableIndex::tagRange range{};
        const HRESULT status = Matches(range);
        *Value = static_cast<LONG>(range.Last - range.First);
        return status;
    });
}

HRESULT CdmTable::get_KeyPosition(LONG* Value) {
    if (!Value)
        return E_POINTER;
    *Value = -1;
    return Guarded([&] {
        CTableIndex::tagRange range{};
        const HRESULT status = Matches(range);
        if (status != S_OK || m_Cursor.Current() == NoRow)
            return status;
        const ULONG position = m_Cursor.Position();
        if (position >= range.First && position < range.Last)
            *Value = static_cast<LONG>(position - range.First);
        return status;
    });
}

HRESULT CdmTable::DeleteKey() {
    return Guarded([&]() -> HRESULT {
        CTableIndex::tagRange range{};
        if (const HRESULT status = Matches(range); status != S_OK)
            return status;
        CTableIndex* index = m_Cursor.Index();
        const ULONG position = m_Cursor.Current() == NoRow ? NoRow : m_Cursor.Position();
        const bool losesRecord = position >= range.First && position < range.Last;
        // From the last on, so that the positions of the others hold.
        for (ULONG end = range.Last; end > range.First; --end)
            m_Store->Delete(m_Store->PositionOf(index->RowAt(end - 1)));
        if (losesRecord)
            m_Cursor.MoveTo(range.First);
        m_Cursor.Current();
        return range.First < range.Last ? S_OK : S_FALSE;
    });
}

} // namespace IDM_dmudfcom
