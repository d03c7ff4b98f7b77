#include "sqStorage.h"

#include "diagnostics/interface/BugSlayer.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"

namespace sqStorage {

std::wstring CStorage::GetDataFeedName(LONG DataFeed) {
    const BugSlayerUtil::CScope scope(this);
    const std::lock_guard lock(m_DataFeedNamesLock);
    if (m_DataFeedNames.empty()) {
        const auto table = NewTable();
        SelectDataFeed(NewRequest().Get(), table.Get());
        ForEachRecord(*table, [&] {
            m_DataFeedNames[udf_helper::GetFieldAsLong(table, IDM_dmudfcom::fieldDataFeed)] =
                udf_helper::GetFieldAsString(table, IDM_dmudfcom::fieldDataFeedName).Text();
        });
    }
    const auto found = m_DataFeedNames.find(DataFeed);
    return found == m_DataFeedNames.end() ? std::wstring() : found->second;
}

// The dictionary of roots is not part of this version, so it has no row for any symbol.
std::wstring CStorage::GetDescriptionByRoot(const wchar_t* /*SymbolName*/, const wchar_t* /*SymbolRoot*/,
                                            const wchar_t* DataFeedName) const {
    const BugSlayerUtil::CScope scope(this);
    scope.Assert(DataFeedName != nullptr, L"DataFeedName");
    return {};
}

} // namespace sqStorage
