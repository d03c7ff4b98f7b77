#include "SetupPlace.h"

#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/com/activation.h"
#include "platform/com/com_error.h"

namespace tests {

using IDM_dmFirebird::IdmDatabase;
using platform::CBstr;
using platform::CComPtr;

namespace {

CComPtr<IdmDatabase> NewDatabase() {
    CComPtr<IdmDatabase> database;
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, database));
    return database;
}

template <class Call>
std::wstring TextOfError(Call&& call) {
    try {
        call();
    } catch (const platform::CComError& error) {
        EXPECT_FALSE(error.Text().empty());
        return error.Text();
    }
    return {};
}

} // namespace

CComPtr<IdmDatabase> CSetupPlace::Open() const {
    const auto database = NewDatabase();
    const auto connection = Connection();
    EXPECT_EQ(S_OK, database->Open(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                   CBstr(connection.Password).Get()));
    return database;
}

void CSetupPlace::CreateEmptyDatabase() const {
    const auto database = NewDatabase();
    const auto connection = Connection();
    EXPECT_EQ(S_OK, database->Create(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                     CBstr(connection.Password).Get()));
    database->Close();
}

LONG CSetupPlace::Run(const wchar_t* statement) const {
    const auto database = Open();
    CComPtr<IDM_dmFirebird::IdmDatabaseTransaction> transaction;
    EXPECT_EQ(S_OK, database->GetTransaction(transaction.Put()));
    CComPtr<IDM_dmFirebird::IdmDatabaseQuery> query;
    EXPECT_EQ(S_OK, transaction->GetQuery(query.Put()));
    CComPtr<IDM_dmudfcom::IdmTable> table;
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table));
    EXPECT_EQ(S_OK, query->Open(CBstr(statement).Get(), nullptr, table.Get()));
    LONG count = 0;
    EXPECT_EQ(S_OK, query->Fetch(&count));
    EXPECT_EQ(S_OK, query->Close());
    EXPECT_EQ(S_OK, transaction->Finish());
    EXPECT_EQ(S_OK, database->Close());
    const auto rows = table.As<IDM_dmudfcom::ITableRows>();
    return rows->RowCount() > 0 ? static_cast<LONG>(rows->Integer(0, 0)) : -1;
}

std::wstring ErrorOf(void (*call)(const sqSetup::tagConnection&), const sqSetup::tagConnection& connection) {
    return TextOfError([&] { call(connection); });
}

std::wstring ErrorOf(LONG (*call)(const sqSetup::tagConnection&), const sqSetup::tagConnection& connection) {
    return TextOfError([&] { call(connection); });
}

} // namespace tests
