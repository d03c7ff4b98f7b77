#include "DatabaseReport.h"

#include "Connection.h"
#include "StoreFailure.h"
#include "apps/sqstorage/ExitStatus.h"
#include "dmserver/dmFirebird/interface/Database.h"
#include "dmserver/dmudfcom/interface/TableRows.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/text.h"
#include "schema/interface/Schema.h"

namespace sqCli {

namespace {

using IDM_dmFirebird::IdmDatabase;
using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;
using platform::CBstr;
using platform::CComPtr;

class CReader {
public:
    explicit CReader(const sqSetup::tagConnection& connection) {
        platform::ThrowIfFailed(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, m_Database));
        RaiseUnless(m_Database->Open(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                     CBstr(connection.Password).Get()));
    }

    std::string Versions() {
        CBstr text;
        RaiseUnless(m_Database->get_Version(text.Put()));
        return platform::ToUtf8(text.View());
    }

    std::int64_t Number(std::string_view statement) {
        CComPtr<IDM_dmudfcom::IdmTable> table;
        platform::ThrowIfFailed(platform::CreateInstance(IDM_dmudfcom::CLSID_dmTable, table));
        CComPtr<IdmDatabaseTransaction> transaction;
        CComPtr<IdmDatabaseQuery> query;
        LONG all = 0;
        RaiseUnless(m_Database->GetTransaction(transaction.Put()));
        RaiseUnless(transaction->GetQuery(query.Put()));
        RaiseUnless(query->Open(CBstr(platform::FromUtf8(statement)).Get(), nullptr, table.Get()));
        RaiseUnless(query->Fetch(&all));
        RaiseUnless(query->Close());
        RaiseUnless(transaction->Finish());
        const auto rows = table.As<IDM_dmudfcom::ITableRows>();
        return rows->RowCount() == 0 ? 0 : rows->Integer(0, 0);
    }

private:
    void RaiseUnless(HRESULT status) {
        if (status == S_OK)
            return;
        CBstr reason;
        m_Database->get_LastError(reason.Put());
        throw CCommandError(EExitStatus::NotOpened, OpenReasonSentence(reason.View(), MachineRegistryFile()));
    }

    CComPtr<IdmDatabase> m_Database;
};

} // namespace

tagDatabaseReport ReportDatabase(const sqSetup::tagConnection& connection) {
    CReader reader(connection);
    return {reader.Versions(), static_cast<std::int32_t>(reader.Number(sqSchema::SelectVersionStatement))};
}

} // namespace sqCli
