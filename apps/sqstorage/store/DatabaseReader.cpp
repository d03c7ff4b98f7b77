#include "DatabaseReader.h"

#include "Connection.h"
#include "Store.h"
#include "StoreFailure.h"
#include "apps/sqstorage/ExitStatus.h"
#include "platform/com/activation.h"
#include "platform/com/bstr.h"
#include "platform/text.h"

namespace sqCli {

namespace {

using IDM_dmFirebird::IdmDatabaseQuery;
using IDM_dmFirebird::IdmDatabaseTransaction;
using IDM_dmudfcom::EColumnType;
using IDM_dmudfcom::ITableRows;
using platform::CBstr;
using platform::CComPtr;

constexpr LONG BatchSize = 1000;

} // namespace

CDatabaseReader::CDatabaseReader(const sqSetup::tagConnection& connection) {
    platform::ThrowIfFailed(platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, m_Database));
    const HRESULT status = m_Database->Open(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                            CBstr(connection.Password).Get());
    if (status == S_OK)
        return;
    CBstr reason;
    m_Database->get_LastError(reason.Put());
    throw CCommandError(EExitStatus::NotOpened, OpenReasonSentence(reason.View(), MachineRegistryFile()));
}

CDatabaseReader::~CDatabaseReader() { m_Database->Close(); }

std::string CDatabaseReader::Versions() {
    CBstr text;
    RefuseUnless(m_Database->get_Version(text.Put()));
    return platform::ToUtf8(text.View());
}

void CDatabaseReader::ForEach(std::string_view select, Row take) { Select(select, nullptr, take); }

void CDatabaseReader::ForEachWith(std::string_view text, std::string_view select, Row take) {
    const auto parameters = NewTable();
    const auto values = parameters.As<ITableRows>();
    const ULONG column = values->AddColumn("PARAMETER", EColumnType::Text);
    values->AppendRow();
    values->PutText(column, text);
    Select(select, parameters.Get(), take);
}

std::int64_t CDatabaseReader::Number(std::string_view select) {
    std::int64_t number = 0;
    bool isFirst = true;
    ForEach(select, [&](const ITableRows& rows, ULONG row) {
        if (isFirst)
            number = rows.Integer(row, 0);
        isFirst = false;
    });
    return number;
}

void CDatabaseReader::Select(std::string_view select, IDM_dmudfcom::IdmTable* parameters, Row take) {
    CComPtr<IdmDatabaseTransaction> transaction;
    CComPtr<IdmDatabaseQuery> query;
    RefuseUnless(m_Database->GetTransaction(transaction.Put()));
    RefuseUnless(transaction->GetQuery(query.Put()));
    const auto table = NewTable();
    RefuseUnless(query->Open(CBstr(platform::FromUtf8(select)).Get(), parameters, table.Get()));
    const auto rows = table.As<ITableRows>();
    for (LONG count = BatchSize; count == BatchSize;) {
        table->Clear();
        RefuseUnless(query->Fetch(&count));
        for (ULONG row = 0; row < rows->RowCount(); ++row)
            take(*rows.Get(), row);
    }
    RefuseUnless(query->Close());
    RefuseUnless(transaction->Finish());
}

void CDatabaseReader::RefuseUnless(HRESULT status) {
    if (status == S_OK)
        return;
    CBstr reason;
    m_Database->get_LastError(reason.Put());
    throw CStoreRefusal(PlainSentence(reason.View()));
}

} // namespace sqCli
