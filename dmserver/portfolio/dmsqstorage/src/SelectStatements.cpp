#include "SelectStatements.h"

#include "StatementText.h"

namespace sqStorage {

using IDM_dmudfcom::IdmRequest;

void GetDataFeedSql(IdmRequest* Request, wchar_t* Sql, int SqlSize) {
    if (!Request || !Sql)
        return;
    LONG Datafeed = 0;
    LONG ActiveOnly = 0;
    Request->get_Datafeed(0, &Datafeed);
    Request->get_ActiveOnly(&ActiveOnly);
    std::wstring text = L"SELECT DATA_FEED, DATA_FEED_NAME, DATA_FEED_SHORT_NAME, DATA_FEED_DLL_NAME, CLSID, "
                        L"ACTIVATED AS \"ACTIVE\", DELETED FROM DATA_FEEDS WHERE ";
    if (Datafeed == 0)
        text += fmt::sprintf(L"%sDELETED=0", ActiveOnly ? L"ACTIVATED=1 AND " : L"");
    else
        text += fmt::sprintf(L"DATA_FEED=%d AND ACTIVATED=1 AND DELETED=0", Datafeed);
    detail::CopyTruncated(text, Sql, static_cast<std::size_t>(SqlSize));
}

} // namespace sqStorage
