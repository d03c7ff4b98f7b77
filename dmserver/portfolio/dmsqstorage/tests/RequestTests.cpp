// The unit of work and the building of statement text.
#include "DatabaseRequest.h"
#include "HostFixture.h"
#include "StatementText.h"
#include "diagnostics/interface/BugSlayer.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/com/com_error.h"
#include "qxStorageBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(StatementText, ATextThatFitsIsWhole) {
    const sqStorage::CStatement<8> statement(L"%s=%d", L"ABC", 123);
    EXPECT_STREQ(L"ABC=123", statement.Text());
}

TEST(StatementText, ATextThatDoesNotFitIsRefusedAndNeverCut) {
    using Small = sqStorage::CStatement<8>;
    EXPECT_THROW(Small(L"%s=%d", L"ABCD", 123), std::length_error);
}

TEST(StatementText, ATruncatedTextKeepsWhatFits) {
    EXPECT_STREQ(L"ABCDEFG", sqStorage::CStatement<8>::Truncated(L"%s", L"ABCDEFGHIJ").Text());
}

TEST(StatementText, AnAppendedClauseIsCutAtTheEnd) {
    sqStorage::CStatement<8> statement(L"%s", L"ABC");
    statement.Append(L" AND %d", 1);
    EXPECT_STREQ(L"ABC AND", statement.Text());
    statement.Append(L"X");
    EXPECT_STREQ(L"ABC AND", statement.Text());
}

TEST(StatementText, QuotesAreDoubledIntoTheCallersBuffer) {
    wchar_t buffer[16] = L"untouched";
    sqStorage::DoubleSingleQuotes(L"a'b''", buffer);
    EXPECT_STREQ(L"a''b''''", buffer);
    sqStorage::DoubleSingleQuotes(L"", buffer);
    EXPECT_STREQ(L"", buffer);
}

TEST(StatementText, DoublingWithANullSourceOrDestinationDoesNothing) {
    wchar_t buffer[] = L"kept";
    sqStorage::DoubleSingleQuotes(nullptr, buffer);
    EXPECT_STREQ(L"kept", buffer);
    sqStorage::DoubleSingleQuotes(L"a", nullptr);
}

TEST(StatementText, ATextOfQuotesOnlyDoublesInLength) {
    EXPECT_STREQ(L"''''''", sqStorage::CQuoted(L"'''").Text());
    EXPECT_STREQ(L"", sqStorage::CQuoted(nullptr).Text());
}

TEST(StatementText, TheSecondFormWorksInPlace) {
    std::wstring text = L"'x''";
    sqStorage::DoubleSingleQuotes(text);
    EXPECT_EQ(L"''x''''", text);
}

class Requests : public HostTest {
protected:
    Requests() {
        Sql(L"DELETE FROM SETTINGS");
        Recorder::Clear();
    }

    CComPtr<IDM_dmFirebird::IdmDatabase> m_Database = Host().OpenDatabase();
};

TEST_F(Requests, ANullDatabaseIsReportedAndLeavesAnEmptyRequest) {
    sqStorage::CDatabaseRequest request(nullptr);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Database"));
    request.Open(L"SELECT * FROM SETTINGS", nullptr, nullptr);
    EXPECT_EQ(0, request.Fetch(0));
    request.Close();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Database"));
}

TEST_F(Requests, AnObjectThatIsNoDatabaseRaisesItsStatus) {
    try {
        const sqStorage::CDatabaseRequest request(NewTable().Get());
        FAIL() << "nothing was raised";
    } catch (const platform::CComError& error) {
        EXPECT_EQ(E_NOINTERFACE, error.Code());
    }
}

TEST_F(Requests, ADatabaseThatIsNotOpenRaisesWhatItSays) {
    m_Database->Close();
    try {
        const sqStorage::CDatabaseRequest request(m_Database.Get());
        FAIL() << "nothing was raised";
    } catch (const platform::CComError& error) {
        EXPECT_TRUE(FAILED(error.Code()));
        EXPECT_TRUE(error.Text().starts_with(L"GetTransaction: ")) << "the database's own words follow";
    }
}

// Objects that break their contract: they give out what they were given, which may be nothing, and raise when told.
class CUnrulyQuery final : public platform::CObject<CUnrulyQuery, platform::ECounter::Interlocked,
                                                    platform::CDispatchImpl<sqStorage::IdmDatabaseQuery>> {
public:
    HRESULT Open(BSTR, IDispatch*, IDispatch*) override { return Answer(L"Open"); }
    HRESULT Close() override { return Answer(L"Close"); }
    HRESULT Fetch(LONG*) override { return Answer(L"Fetch"); }

    std::wstring Raising;

private:
    HRESULT Answer(const wchar_t* call) const {
        if (Raising == call)
            throw std::runtime_error("unruly");
        return S_OK;
    }
};

class CUnrulyTransaction final
    : public platform::CObject<CUnrulyTransaction, platform::ECounter::Interlocked,
                               platform::CDispatchImpl<sqStorage::IdmDatabaseTransaction>> {
public:
    HRESULT Begin(LONG) override { return E_NOTIMPL; }
    HRESULT Finish() override { return S_OK; }
    HRESULT Rollback() override { return E_NOTIMPL; }
    HRESULT GetQuery(sqStorage::IdmDatabaseQuery** query) override {
        *query = CComPtr<sqStorage::IdmDatabaseQuery>(Query.Get()).Detach();
        return Status;
    }

    CComPtr<CUnrulyQuery> Query;
    HRESULT Status = S_OK;
};

class CUnrulyDatabase final : public platform::CObject<CUnrulyDatabase, platform::ECounter::Interlocked,
                                                       platform::CDispatchImpl<sqStorage::IdmDatabase>> {
public:
    HRESULT Open(BSTR, BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT Close() override { return S_OK; }
    HRESULT GetTransaction(sqStorage::IdmDatabaseTransaction** transaction) override {
        *transaction = CComPtr<sqStorage::IdmDatabaseTransaction>(Transaction.Get()).Detach();
        return S_OK;
    }
    HRESULT get_LastError(BSTR* value) override {
        *value = nullptr;
        return S_OK;
    }
    HRESULT Create(BSTR, BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT get_Version(BSTR*) override { return E_NOTIMPL; }
    HRESULT Drop() override { return E_NOTIMPL; }

    CComPtr<CUnrulyTransaction> Transaction;
};

class UnrulyRequests : public testing::Test {
protected:
    UnrulyRequests() { Recorder::Clear(); }
    // What a guard makes of the exception of the call.
    template <class Call>
    static std::vector<std::wstring> ErrorsOf(Call&& call) {
        const BugSlayerUtil::CScope scope;
        scope.Guard(call);
        return Recorder::Errors();
    }

    const CComPtr<CUnrulyDatabase> m_Database = platform::MakeObject<CUnrulyDatabase>();
};

TEST_F(UnrulyRequests, ANullTransactionRaisesItsName) {
    EXPECT_THAT(ErrorsOf([&] { const sqStorage::CDatabaseRequest request(m_Database.Get()); }),
                ElementsAre(L"m_Transaction"));
}

TEST_F(UnrulyRequests, ANullQueryRaisesItsName) {
    m_Database->Transaction = platform::MakeObject<CUnrulyTransaction>();
    EXPECT_THAT(ErrorsOf([&] { const sqStorage::CDatabaseRequest request(m_Database.Get()); }),
                ElementsAre(L"m_Query"));
}

TEST_F(UnrulyRequests, AFailingGetQueryRaisesItsStatus) {
    m_Database->Transaction = platform::MakeObject<CUnrulyTransaction>();
    m_Database->Transaction->Status = E_ABORT;
    try {
        const sqStorage::CDatabaseRequest request(m_Database.Get());
        FAIL() << "nothing was raised";
    } catch (const platform::CComError& error) {
        EXPECT_EQ(E_ABORT, error.Code());
        EXPECT_EQ(L"GetQuery", error.Text());
    }
}

TEST_F(UnrulyRequests, AnExceptionThroughOpenFetchOrCloseIsRaisedAgainUnderItsName) {
    const auto query = platform::MakeObject<CUnrulyQuery>();
    m_Database->Transaction = platform::MakeObject<CUnrulyTransaction>();
    m_Database->Transaction->Query = query;
    for (const wchar_t* call : {L"Open", L"Fetch", L"Close"}) {
        Recorder::Clear();
        sqStorage::CDatabaseRequest request(m_Database.Get());
        query->Raising = call;
        EXPECT_THAT(ErrorsOf([&] {
                        request.Open(L"SELECT", nullptr, nullptr);
                        request.Fetch(0);
                        request.Close();
                    }),
                    ElementsAre(std::wstring(call) + L" (stdexcept: \"unruly\")"));
        query->Raising.clear();
    }
}

TEST_F(UnrulyRequests, AnExceptionThroughCloseInTheDestructorEndsThere) {
    const auto query = platform::MakeObject<CUnrulyQuery>();
    m_Database->Transaction = platform::MakeObject<CUnrulyTransaction>();
    m_Database->Transaction->Query = query;
    EXPECT_THAT(ErrorsOf([&] {
                    sqStorage::CDatabaseRequest request(m_Database.Get());
                    request.Open(L"SELECT", nullptr, nullptr);
                    query->Raising = L"Close";
                }),
                ElementsAre(L"Close (stdexcept: \"unruly\")"));
}

TEST_F(Requests, CloseOfARequestThatWasNeverOpenedDoesNothing) {
    sqStorage::CDatabaseRequest request(m_Database.Get());
    request.Close();
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Requests, FetchBeforeOpenIsReportedAndGivesNothing) {
    sqStorage::CDatabaseRequest request(m_Database.Get());
    EXPECT_EQ(0, request.Fetch(0));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"m_Opened"));
}

TEST_F(Requests, OpenClosesTheStatementBefore) {
    sqStorage::COutputRequest request(m_Database.Get());
    request.Open(L"SELECT 1 AS SETTING FROM RDB$DATABASE", nullptr, request.Table());
    EXPECT_EQ(1, request.Select(L"SELECT 2 AS SETTING FROM RDB$DATABASE"));
    EXPECT_THAT(RowsOf(CComPtr<IdmTable>(request.Table())), ElementsAre(Row{L"2"}));
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Requests, ARefusedStatementIsReportedWithItsStatusAndTheCodeGoesOn) {
    sqStorage::COutputRequest request(m_Database.Get());
    EXPECT_EQ(0, request.Select(L"SELECT * FROM NO_SUCH_TABLE"));
    const auto records = Recorder::RecordsOf(L"ASSERT");
    ASSERT_FALSE(records.empty());
    EXPECT_TRUE(records[0].Description.starts_with(L"Open: ")) << "the database's own words follow";
    ASSERT_TRUE(records[0].Status.has_value());
    EXPECT_TRUE(FAILED(*records[0].Status));
    EXPECT_EQ(1, request.Select(L"SELECT 1 AS SETTING FROM RDB$DATABASE"));
}

TEST_F(Requests, TheDestructorCommits) {
    {
        sqStorage::CDatabaseRequest request(m_Database.Get());
        request.Open(L"INSERT INTO SETTINGS VALUES(1,1,1,1,1)", nullptr, nullptr);
        request.Fetch(0);
    }
    EXPECT_EQ(1U, Sql(L"SELECT SETTING FROM SETTINGS").size());
}

TEST_F(Requests, TheDestructorCommitsAlsoWhenAnExceptionUnwindsIt) {
    try {
        sqStorage::CDatabaseRequest request(m_Database.Get());
        request.Open(L"INSERT INTO SETTINGS VALUES(1,1,1,1,1)", nullptr, nullptr);
        request.Fetch(0);
        throw std::runtime_error("unwind");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(1U, Sql(L"SELECT SETTING FROM SETTINGS").size());
}

// An instance that was never given its storage.
TEST_F(Requests, WithoutAStorageGoodArgumentsAnswerPointerAndBadOnesInvalid) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    LONG key = -1;
    EXPECT_EQ(E_POINTER, object->SelectHoliday(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_INVALIDARG, object->SelectHoliday(nullptr, NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertHoliday(CBstr(L"x").Get(), &key));
    EXPECT_EQ(E_INVALIDARG, object->InsertHoliday(CBstr(L"").Get(), &key));
    EXPECT_EQ(E_POINTER, object->DeleteHoliday(1));
    EXPECT_EQ(E_POINTER, object->UpdateHoliday(1, CBstr(L"x").Get()));
    EXPECT_EQ(E_POINTER, object->SelectHolidayDetails(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertHolidayDetails(NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->DeleteHolidayDetails(1));
    EXPECT_EQ(E_POINTER, object->DeleteHolidayDetails2(1, CBstr(L"01.01.2027").Get()));
    EXPECT_EQ(E_POINTER, object->SelectSetting(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertSetting(1, 1, 1, 1, &key));
    EXPECT_EQ(E_POINTER, object->DeleteSetting(1));
    EXPECT_EQ(E_POINTER, object->UpdateSetting(1, 1, 1, 1, 1));
    EXPECT_EQ(-1, key);
}

TEST_F(Requests, WithoutAStorageFeedsExchangesAndSessionsAnswerPointer) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    const CBstr text(L"x");
    LONG key = -1;
    LONG deleted = -1;
    EXPECT_EQ(E_POINTER, object->SelectDataFeed(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertDataFeed(text.Get(), text.Get(), text.Get(), text.Get(), 0, &key));
    EXPECT_EQ(E_POINTER, object->DeleteDataFeed(1, &deleted));
    EXPECT_EQ(E_POINTER, object->UpdateDataFeed(1, text.Get(), text.Get(), text.Get(), text.Get(), 0, 1));
    EXPECT_EQ(E_POINTER, object->GetDataFeed(text.Get(), &key));
    EXPECT_EQ(E_POINTER, object->SelectExchange(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertExchange(text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), text.Get(), &key));
    EXPECT_EQ(E_POINTER, object->DeleteExchange(1, &deleted));
    EXPECT_EQ(E_POINTER, object->UpdateExchange(1, text.Get(), text.Get(), 0, 1, 1, 0, text.Get(), text.Get()));
    EXPECT_EQ(E_POINTER, object->GetExchange(text.Get(), &key));
    EXPECT_EQ(E_POINTER, object->SelectSession(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertSession(0, text.Get(), 0, &key));
    EXPECT_EQ(E_POINTER, object->DeleteSession(1, &deleted));
    EXPECT_EQ(E_POINTER, object->UpdateSession(1, 0, text.Get(), 0));
    EXPECT_EQ(E_POINTER, object->SelectSessionDetails(NewRequest().Get(), NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->InsertSessionDetails(NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->DeleteSessionDetails(1));
    EXPECT_EQ(-1, key);
    EXPECT_EQ(0, deleted);
}

// These do not look whether there is a storage.
TEST_F(Requests, WithoutAStorageCurrencyAndSentChangesRaise) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    LONG code = -1;
    EXPECT_THROW(object->SetCurrency(1, 840), platform::CComError);
    EXPECT_THROW(object->GetCurrency(1, &code), platform::CComError);
    EXPECT_EQ(E_INVALIDARG, object->GetCurrency(1, nullptr));
    EXPECT_THROW(object->DeleteCurrency(1), platform::CComError);
    EXPECT_THROW(object->SelectCurrency(nullptr, NewTable().Get()), platform::CComError);
    EXPECT_THROW(object->SendNotify(1), platform::CComError);
    EXPECT_EQ(-1, code);
}

// The storage object itself, never started: no database and no key generator.
TEST_F(Requests, AStorageWithoutAGeneratorGivesNoKeysAndReportsIt) {
    sqStorage::CStorage storage;
    EXPECT_EQ(0, storage.InsertSetting(1, 1, 1, 1));
    EXPECT_EQ(0, storage.InsertHoliday(L"x"));
    EXPECT_EQ(0, storage.InsertExchange(L"x", L"x", 0, 1, 1, 0, L"x", L"x"));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0!=Setting", L"Holiday", L"Exchange"));
}

TEST_F(Requests, TheStorageChecksWhatTheInterfaceLetsThrough) {
    sqStorage::CStorage storage;
    storage.SelectHoliday(nullptr, nullptr);
    storage.SelectHolidayDetails(nullptr, nullptr);
    storage.SelectSetting(nullptr, nullptr);
    storage.DeleteHoliday(0);
    storage.DeleteSetting(0);
    storage.UpdateSetting(0, 1, 1, 1, 1);
    storage.InsertHolidayDetails(nullptr);
    EXPECT_EQ(0, storage.InsertHoliday(nullptr));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request", L"Table", L"Request&&Table", L"Request", L"Table",
                                                 L"Holiday", L"Setting", L"Setting", L"Table", L"hn"));
}

// A check that did not end the call would be followed by that of the key, or of the database.
TEST_F(Requests, OneMissingTextIsEnoughToLeaveAFeedOrAnExchangeAlone) {
    sqStorage::CStorage storage;
    const auto expectOnly = [](const wchar_t* text) {
        EXPECT_THAT(Recorder::Asserts(), ElementsAre(text));
        EXPECT_THAT(Recorder::Errors(), IsEmpty());
        Recorder::Clear();
    };
    EXPECT_EQ(0, storage.InsertExchange(nullptr, L"x", 0, 1, 1, 0, L"x", L"x"));
    expectOnly(L"n");
    EXPECT_EQ(0, storage.InsertExchange(L"x", nullptr, 0, 1, 1, 0, L"x", L"x"));
    expectOnly(L"desc");
    EXPECT_EQ(0, storage.InsertExchange(L"x", L"x", 0, 1, 1, 0, nullptr, L"x"));
    expectOnly(L"MapId");
    EXPECT_EQ(0, storage.InsertExchange(L"x", L"x", 0, 1, 1, 0, L"x", nullptr));
    expectOnly(L"TimeZoneInformation");
    storage.UpdateExchange(0, L"x", L"x", 0, 1, 1, 0, L"x", L"x");
    expectOnly(L"Exchange");
    storage.UpdateExchange(1, nullptr, L"x", 0, 1, 1, 0, L"x", L"x");
    expectOnly(L"ExchangeName");
    storage.UpdateExchange(1, L"x", L"x", 0, 1, 1, 0, nullptr, L"x");
    expectOnly(L"MapId");
    storage.UpdateExchange(1, L"x", L"x", 0, 1, 1, 0, L"x", nullptr);
    expectOnly(L"TimeZoneInformation");
    storage.UpdateDataFeed(0, L"x", L"x", L"x", L"x", 0, 1);
    expectOnly(L"DataFeed");
    storage.UpdateDataFeed(1, nullptr, L"x", L"x", L"x", 0, 1);
    expectOnly(L"DataFeedName");
    storage.UpdateDataFeed(1, L"x", nullptr, L"x", L"x", 0, 1);
    expectOnly(L"DataFeedShortName");
    storage.UpdateDataFeed(1, L"x", L"x", L"x", nullptr, 0, 1);
    expectOnly(L"CLSID");
}

TEST_F(Requests, TheStorageChecksFeedsExchangesAndSessionsToo) {
    sqStorage::CStorage storage;
    storage.SelectDataFeed(nullptr, nullptr);
    EXPECT_EQ(0, storage.InsertDataFeed(nullptr, nullptr, L"x", nullptr, 0));
    storage.UpdateDataFeed(0, nullptr, nullptr, L"x", nullptr, 0, 1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request", L"Table", L"n", L"sn", L"CLSID", L"DataFeed",
                                                 L"DataFeed", L"DataFeedName", L"DataFeedShortName", L"CLSID"));
    Recorder::Clear();
    storage.SelectExchange(nullptr, nullptr);
    EXPECT_EQ(0, storage.InsertExchange(nullptr, nullptr, 0, 1, 1, 0, nullptr, nullptr));
    storage.UpdateExchange(0, nullptr, nullptr, 0, 1, 1, 0, nullptr, nullptr);
    EXPECT_THAT(Recorder::Asserts(),
                ElementsAre(L"Request", L"Table", L"n", L"desc", L"MapId", L"TimeZoneInformation", L"Exchange",
                            L"ExchangeName", L"MapId", L"TimeZoneInformation"));
    Recorder::Clear();
    storage.SelectSession(nullptr, nullptr);
    EXPECT_EQ(0, storage.InsertSession(0, nullptr, 0));
    storage.UpdateSession(1, 0, nullptr, 0);
    storage.SelectSessionDetails(nullptr, nullptr);
    storage.InsertSessionDetails(nullptr);
    EXPECT_THAT(Recorder::Asserts(),
                ElementsAre(L"Request", L"Table", L"SessionName", L"SessionName", L"Request", L"Table", L"Table"));
}

} // namespace
