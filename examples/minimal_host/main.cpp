// The names of all holiday calendars.
#include "diagnostics/interface/Trail.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorage.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "platform/com/activation.h"
#include "platform/text.h"

#include <cstdio>

int main() {
    platform::CComPtr<IDM_qxStorage::IqxStorage> storage;
    platform::CComPtr<IDM_dmudfcom::IdmRequest> request;
    platform::CComPtr<IDM_dmudfcom::IdmTable> table;
    if (platform::CreateInstance(IDM_qxStorage::CLSID_qxStorage, storage) != S_OK ||
        platform::CreateInstance(IDM_dmudfcom::CLSID_dmRequest, request) != S_OK ||
        platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table) != S_OK) {
        for (const std::wstring& failure : BugSlayerUtil::RecentFailures())
            std::fprintf(stderr, "%s\n", platform::ToUtf8(failure).c_str());
        return 1;
    }
    storage->SelectHoliday(request.Get(), table.Get());
    LONG end = 0;
    for (table->First(); table->get_Eof(&end) == S_OK && end == 0; table->Next())
        std::puts(
            platform::ToUtf8(GetField<platform::CBstr>(table, IDM_dmudfcom::fieldHolidayName).View()).c_str());
}
