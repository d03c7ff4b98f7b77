// The unit of work and the building of statement text.
#include "DatabaseRequest.h"
#include "StatementText.h"
#include "StorageHost.h"
#include "diagnostics/tests/recorder/Recorder.h"
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

class Requests : public testing::Test {
protected:
    static void SetUpTestSuite() { Host().Install(); }
    static CStorageHost& Host() {
        static CStorageHost host;
        return host;
    }
    Requests() {
        EXPECT_EQ(S_OK, platform::CreateInstance(IDM_dmFirebird::CLSID_dmDatabase, m_Database));
        const auto connection = Host().Connection();
        EXPECT_EQ(S_OK, m_Database->Open(CBstr(connection.Path).Get(), CBstr(connection.UserName).Get(),
                                         CBstr(connection.Password).Get()));
        Host().Sql(L"DELETE FROM SETTINGS");
        Recorder::Clear();
    }

    CComPtr<IDM_dmFirebird::IdmDatabase> m_Database;
};

TEST_F(Requests, ANullDatabaseIsReportedAndLeavesAnEmptyRequest) {
    sqStorage::CDatabaseRequest request(nullptr);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Database"));
    request.Open(L"SELECT * FROM SETTINGS", nullptr, nullptr);
    EXPECT_EQ(0, request.Fetch(0));
    request.Close();
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Database"));
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
    EXPECT_EQ(1U, Host().Sql(L"SELECT SETTING FROM SETTINGS").size());
}

TEST_F(Requests, TheDestructorCommitsAlsoWhenAnExceptionUnwindsIt) {
    try {
        sqStorage::CDatabaseRequest request(m_Database.Get());
        request.Open(L"INSERT INTO SETTINGS VALUES(1,1,1,1,1)", nullptr, nullptr);
        request.Fetch(0);
        throw std::runtime_error("unwind");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(1U, Host().Sql(L"SELECT SETTING FROM SETTINGS").size());
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

// The storage object itself, never started: no database and no key generator.
TEST_F(Requests, AStorageWithoutAGeneratorGivesNoKeysAndReportsIt) {
    sqStorage::CStorage storage;
    EXPECT_EQ(0, storage.InsertSetting(1, 1, 1, 1));
    EXPECT_EQ(0, storage.InsertHoliday(L"x"));
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"0!=Setting", L"Holiday"));
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

} // namespace
