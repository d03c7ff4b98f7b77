#include "qxStorageBase.h"

#include "SelectStatements.h"
#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/portfolio/dmsqStorageInterface/interface/qxStorageGetFieldHelper.h"
#include "platform/com/com_error.h"

namespace {

using IDM_dmudfcom::IdmRequest;
using IDM_dmudfcom::IdmTable;
using IDM_qxStorage::IqxStorage;

// Asks the object's own public Select for the row of a key, as any client would. `put` writes the key into the
// request; `isThere` looks at the answer.
template <auto Select, class Put, class IsThere>
bool ExistsCheck(IqxStorage& storage, LONG key, Put&& put, IsThere&& isThere) {
    // 0 is no key: in a request it would ask for all rows.
    if (key == 0)
        return false;
    const auto request = sqStorage::NewRequest();
    const auto table = sqStorage::NewTable();
    put(*request);
    platform::ThrowIfFailed((storage.*Select)(request.Get(), table.Get()));
    return isThere(*table);
}

bool HasRows(IdmTable& table) {
    LONG count = 0;
    platform::ThrowIfFailed(table.get_RecordCount(&count));
    return count > 0;
}

template <auto Select, auto PutKey>
bool ExistsCheck(IqxStorage& storage, LONG key) {
    return ExistsCheck<Select>(
        storage, key, [&](IdmRequest& request) { platform::ThrowIfFailed((request.*PutKey)(key)); }, HasRows);
}

} // namespace

bool CqxStorageBase::ExistsHoliday(LONG Holiday) {
    return ExistsCheck<&IqxStorage::SelectHoliday, &IdmRequest::put_HolidayId>(*this, Holiday);
}

bool CqxStorageBase::ExistsHolidayDetails(LONG Holiday) {
    return ExistsCheck<&IqxStorage::SelectHolidayDetails, &IdmRequest::put_HolidayId>(*this, Holiday);
}

bool CqxStorageBase::ExistsSetting(LONG Setting) {
    return ExistsCheck<&IqxStorage::SelectSetting, &IdmRequest::put_SettingId>(*this, Setting);
}

bool CqxStorageBase::ExistsSession(LONG Session) {
    return ExistsCheck<&IqxStorage::SelectSession, &IdmRequest::put_SessionId>(*this, Session);
}

bool CqxStorageBase::ExistsSessionDetails(LONG Session) {
    return ExistsCheck<&IqxStorage::SelectSessionDetails, &IdmRequest::put_SessionId>(*this, Session);
}

bool CqxStorageBase::ExistsDictionary(LONG Symbol) {
    // -1 is no key either.
    if (sqStorage::IsNoSymbol(Symbol))
        return false;
    const auto request = sqStorage::NewRequest();
    const auto table = sqStorage::NewTable();
    platform::ThrowIfFailed(request->put_Symbol(1, Symbol));
    platform::ThrowIfFailed(SelectDictionary(1, request.Get(), table.Get()));
    return HasRows(*table);
}

// The key stands at Mode 1, and at Mode 0, from which the select reads it.
bool CqxStorageBase::ExistsExchange(LONG Exchange) {
    return ExistsCheck<&IqxStorage::SelectExchange>(
        *this, Exchange,
        [&](IdmRequest& request) {
            platform::ThrowIfFailed(request.put_ExchangeId(1, Exchange));
            platform::ThrowIfFailed(request.put_ExchangeId(0, Exchange));
        },
        HasRows);
}

// A feed is looked for among all that are not deleted: asked for by its key, one that is not active would not show.
bool CqxStorageBase::ExistsDataFeed(LONG Datafeed) {
    return ExistsCheck<&IqxStorage::SelectDataFeed>(
        *this, Datafeed,
        [](IdmRequest& request) {
            platform::ThrowIfFailed(request.put_Datafeed(1, 0));
            platform::ThrowIfFailed(request.put_ActiveOnly(0));
        },
        [&](IdmTable& table) {
            bool isFound = false;
            const platform::CComPtr<IdmTable> rows(&table);
            LONG eof = 0;
            for (table.First(); !isFound && SUCCEEDED(table.get_Eof(&eof)) && eof == 0; table.Next())
                isFound = udf_helper::GetFieldAsLong(rows, IDM_dmudfcom::fieldDataFeed) == Datafeed;
            return isFound;
        });
}
