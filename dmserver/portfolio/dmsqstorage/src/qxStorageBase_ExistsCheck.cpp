#include "qxStorageBase.h"

#include "platform/com/com_error.h"

namespace {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using IDM_qxStorage::IqxStorage;

// Asks the object's own public Select for the row of a key, as any client would.
template <auto PutKey, auto Select>
bool ExistsCheck(IqxStorage& storage, LONG key) {
    // 0 is no key: in a request it would ask for all rows.
    if (key == 0)
        return false;
    const auto request = sqStorage::NewRequest();
    const auto table = sqStorage::NewTable();
    platform::ThrowIfFailed((request.Get()->*PutKey)(key));
    platform::ThrowIfFailed((storage.*Select)(request.Get(), table.Get()));
    LONG count = 0;
    platform::ThrowIfFailed(table->get_RecordCount(&count));
    return count > 0;
}

} // namespace

bool CqxStorageBase::ExistsHoliday(LONG Holiday) {
    return ExistsCheck<&IdmRequest::put_HolidayId, &IqxStorage::SelectHoliday>(*this, Holiday);
}

bool CqxStorageBase::ExistsHolidayDetails(LONG Holiday) {
    return ExistsCheck<&IdmRequest::put_HolidayId, &IqxStorage::SelectHolidayDetails>(*this, Holiday);
}

bool CqxStorageBase::ExistsSetting(LONG Setting) {
    return ExistsCheck<&IdmRequest::put_SettingId, &IqxStorage::SelectSetting>(*this, Setting);
}
