#include "sqStorage.h"

#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "platform/com/activation.h"

namespace sqStorage {

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
