#include "sqStorage.h"

#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/activation.h"

namespace sqStorage {

LONG CStorage::GetASCDataFeed() {
    const BugSlayerUtil::CScope scope(this);
    return scope.Guard(
        [&]() -> LONG {
            const std::lock_guard<dm::CCriticalSection> lock(*this);
            COutputRequest request(m_Database.Get());
            if (request.Select(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE ASCII=1") <= 0)
                return 0;
            request.Table()->First();
            return FirstFieldAsLong(*request.Table());
        },
        LONG{0});
}

void CStorage::ascDeleteSymbol(LONG Symbol, int isNotify) {
    const BugSlayerUtil::CScope scope(this);
    scope.Guard([&] {
        CComPtr<IdmTable> files;
        if (!scope.Check(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, files), L"IdmTable"))
            return;
        const std::lock_guard<dm::CCriticalSection> lock(*this);
        Execute(CStatement<128>(L"SELECT ID FROM ASC_MAP WHERE SYMBOL=%d", Symbol).Text(), nullptr, files.Get());
        bool hasFiles = false;
        ForEachRecord(*files, [&] {
            hasFiles = true;
            for (const wchar_t* remove :
                 {L"DELETE FROM ASC_MAP WHERE ID=%d", L"DELETE FROM ASC_TEMPLATES WHERE ID=%d"}) {
                const CStatement<128> sql(remove, FirstFieldAsLong(*files));
                scope.Trace(L"sql = '%s'", sql.Text());
                Execute(sql.Text(), nullptr, nullptr);
            }
        });
        if (hasFiles && isNotify != 0)
            BroadcastNotifyToSinks(notifyAscDelete, 0);
    });
}

} // namespace sqStorage
