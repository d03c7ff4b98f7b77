// The registry of cursors and the tables of single symbols, from inside.
#include "Requestes.h"
#include "SymbolInfoTable.h"

#include "CursorFixture.h"
#include "LockProbe.h"
#include "PrivateMember.h"
#include "SelectStatements.h"
#include "WatchedDatabase.h"
#include "qxStorageBase.h"

#include <functional>
#include <thread>

namespace tests {

struct CursorMap {
    using Member = std::map<LONG, std::unique_ptr<sqStorage::CDatabaseRequest>> sqStorage::CRequestes::*;
    friend Member MemberOf(CursorMap);
};
template struct CPrivateMember<CursorMap, &sqStorage::CRequestes::m_Requests>;

} // namespace tests

namespace {

using namespace tests;
using sqStorage::CRequestes;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class Requestes : public HostTest {
protected:
    Requestes() { Recorder::Clear(); }

    tagWatch m_Watch;
    const CComPtr<IDM_dmFirebird::IdmDatabase> m_Database =
        platform::MakeObject<CWatchedDatabase>(Host().OpenDatabase(), m_Watch);
};

TEST_F(Requestes, EveryAddTakesAnIdAlsoWithoutARequestOrATable) {
    CRequestes requests(m_Database.Get());
    EXPECT_EQ(1, requests.Add(0, nullptr, NewTable().Get()));
    EXPECT_EQ(2, requests.Add(0, tagCursorRequest{}.Make().Get(), nullptr));
    EXPECT_EQ(3, requests.Add(0, nullptr, nullptr));
    EXPECT_THAT(requests.*MemberOf(CursorMap{}), IsEmpty());
    EXPECT_EQ(4, requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get()));
    EXPECT_THAT(requests.*MemberOf(CursorMap{}), SizeIs(1));
    requests.Delete(4);
    EXPECT_THAT(requests.*MemberOf(CursorMap{}), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Requestes, DeleteOfAnUnknownIdLeavesTheMapAlone) {
    CRequestes requests(m_Database.Get());
    const LONG id = requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get());
    requests.Delete(id + 1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"end()!=it"));
    EXPECT_THAT(requests.*MemberOf(CursorMap{}), SizeIs(1));
    requests.Delete(id);
}

TEST_F(Requestes, DeleteEndsTheTransaction) {
    CRequestes requests(m_Database.Get());
    requests.Delete(requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get()));
    EXPECT_THAT(m_Watch.Calls, ElementsAre(L"transaction", ShortSymbolHead, L"finish", L"gone"));
}

TEST_F(Requestes, WhatRemainsAtTheEndIsReportedAndEnds) {
    {
        CRequestes requests(m_Database.Get());
        requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get());
        requests.Add(0, tagCursorRequest{.Type = DataFeeds}.Make().Get(), NewTable().Get());
    }
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"empty()"));
    EXPECT_EQ(2, std::ranges::count(m_Watch.Calls, L"finish"));
    EXPECT_EQ(2, std::ranges::count(m_Watch.Calls, L"gone"));
    Recorder::Clear();
    { const CRequestes requests(m_Database.Get()); }
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Requestes, ARequestThatCannotBeMadeIsReportedAndItsIdIsUsedUp) {
    CRequestes requests(m_Database.Get());
    m_Database->Close();
    const LONG id = requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get());
    EXPECT_EQ(1, id);
    EXPECT_THAT(Recorder::Errors(), ElementsAre(testing::HasSubstr(L"GetTransaction: ")));
    EXPECT_EQ(0, requests.Fetch(id, 0));
    EXPECT_EQ(2, requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get())) << "the lock is free again";
    EXPECT_THAT(requests.*MemberOf(CursorMap{}), IsEmpty());
}

TEST_F(Requestes, ARefusedStatementIsReportedAndHasACursorWithoutRows) {
    CRequestes requests(m_Database.Get());
    const LONG id = requests.Add(
        0, tagCursorRequest{.Type = Symbol, .Datafeed = 5, .SymbolName = L"'"}.Make().Get(), NewTable().Get());
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(StartsWith(L"Open: ")));
    EXPECT_THAT(requests.*MemberOf(CursorMap{}), SizeIs(1));
    EXPECT_EQ(0, requests.Fetch(id, 0));
    requests.Delete(id);
}

TEST_F(Requestes, TheLockCoversTheDatabasesWork) {
    CRequestes requests(m_Database.Get());
    // Its base is private, and only such a cast goes there.
    auto& lock = (dm::CCriticalSection&)requests;
    std::vector<std::wstring> held;
    const auto probe = [&](const wchar_t* moment) {
        held.push_back(IsHeld(lock) ? moment : std::wstring(moment) + L" without the lock");
    };
    m_Watch.BeforeStatement = [&](const std::wstring&) { probe(L"open"); };
    m_Watch.BeforeFetch = [&] { probe(L"fetch"); };
    m_Watch.BeforeClose = [&] { probe(L"close"); };
    const LONG id = requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get());
    EXPECT_FALSE(IsHeld(lock));
    requests.Fetch(id, 0);
    EXPECT_FALSE(IsHeld(lock));
    requests.Delete(id);
    EXPECT_FALSE(IsHeld(lock));
    EXPECT_THAT(held, ElementsAre(L"open", L"fetch", L"close"));
}

TEST_F(Requestes, TheDatabaseWorksOnTheThreadOfTheClient) {
    CRequestes requests(m_Database.Get());
    std::vector<std::thread::id> workers;
    const auto note = [&] { workers.push_back(std::this_thread::get_id()); };
    m_Watch.BeforeStatement = [&](const std::wstring&) { note(); };
    m_Watch.BeforeFetch = note;
    m_Watch.BeforeClose = note;
    const auto onAThreadOfItsOwn = [&](const std::function<void()>& call) {
        std::thread thread(call);
        const std::thread::id client = thread.get_id();
        thread.join();
        EXPECT_THAT(workers, ElementsAre(client));
        workers.clear();
    };
    LONG id = 0;
    onAThreadOfItsOwn([&] { id = requests.Add(0, tagCursorRequest{}.Make().Get(), NewTable().Get()); });
    onAThreadOfItsOwn([&] { requests.Fetch(id, 0); });
    onAThreadOfItsOwn([&] { requests.Delete(id); });
}

TEST(SymbolInfoTable, TheListIsAddedInOrderWithAStatus) {
    const auto table = NewTable();
    const LONG fields[] = {1016, 31, 5};
    sqStorage::FillSymbolInfoTable(table.Get(), fields, 2);
    EXPECT_THAT(FieldIds(table), ElementsAre(1016, 31));
    LONG status = 0;
    FieldOf(table, 31)->get_Status(&status);
    EXPECT_EQ(4, status);
}

TEST(SymbolInfoTable, TheTwoListsAreWhole) {
    const auto symbol = NewTable();
    sqStorage::FillSymbolInfoTable(symbol.Get());
    EXPECT_EQ(SymbolInfoFields, FieldIds(symbol));
    const auto future = NewTable();
    sqStorage::FillCustomFutureInfoTable(future.Get());
    EXPECT_EQ(CustomFutureInfoFields, FieldIds(future));
}

TEST(SymbolInfoTable, ACountBelowOneAddsNothing) {
    Recorder::Clear();
    const auto table = NewTable();
    const LONG fields[] = {1016};
    sqStorage::FillSymbolInfoTable(table.Get(), fields, 0);
    sqStorage::FillSymbolInfoTable(table.Get(), fields, -1);
    EXPECT_THAT(FieldIds(table), IsEmpty());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST(SymbolInfoTable, ATableWithFieldsIsReportedAndStaysAsItIs) {
    Recorder::Clear();
    const auto table = NewTable();
    table->AddFieldById(31, 0, 0, 0);
    const LONG fields[] = {1016};
    sqStorage::FillSymbolInfoTable(table.Get(), fields, 1);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"!FieldCount"));
    EXPECT_THAT(FieldIds(table), ElementsAre(31));
}

TEST(SymbolInfoTable, ARefusedFieldIsReportedWithItsStatusAndTheOthersCome) {
    Recorder::Clear();
    const auto table = NewTable();
    const LONG fields[] = {1016, -5, 31};
    sqStorage::FillSymbolInfoTable(table.Get(), fields, 3);
    EXPECT_THAT(FieldIds(table), ElementsAre(1016, 31));
    const auto records = Recorder::RecordsOf(L"ASSERT");
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(E_INVALIDARG, records[0].Status.value_or(S_OK));
}

TEST(CustomFutureStatement, ANullRequestIsReportedAndANullBufferIsNot) {
    Recorder::Clear();
    wchar_t sql[64] = L"kept";
    sqStorage::SelectCF(0, nullptr, sql, 64);
    EXPECT_STREQ(L"kept", sql);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request"));
    sqStorage::SelectCF(0, NewRequest().Get(), nullptr, 64);
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"Request"));
}

TEST(CustomFutureStatement, TheStatementIsCutAtTheSizeOfItsBuffer) {
    wchar_t sql[16] = {};
    sqStorage::SelectCF(0, tagCursorRequest{}.Make().Get(), sql, 8);
    EXPECT_STREQ(L"SELECT ", sql);
}

TEST(CustomFutureStatement, ABufferWithoutRoomStaysAsItIs) {
    wchar_t sql[] = L"kept";
    for (const int size : {0, -1, -1024})
        sqStorage::SelectCF(0, tagCursorRequest{}.Make().Get(), sql, size);
    EXPECT_STREQ(L"kept", sql);
}

TEST(DataFeedStatement, ANullRequestOrBufferOrABufferWithoutRoomDoesNothing) {
    Recorder::Clear();
    wchar_t sql[] = L"kept";
    sqStorage::GetDataFeedSql(nullptr, sql, 5);
    sqStorage::GetDataFeedSql(NewRequest().Get(), nullptr, 5);
    for (const int size : {0, -1})
        sqStorage::GetDataFeedSql(NewRequest().Get(), sql, size);
    EXPECT_STREQ(L"kept", sql);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST(DataFeedStatement, TheStatementIsCutAtTheSizeOfItsBuffer) {
    wchar_t sql[9];
    sql[8] = L'!';
    sqStorage::GetDataFeedSql(NewRequest().Get(), sql, 8);
    EXPECT_STREQ(L"SELECT ", sql);
    EXPECT_EQ(L'!', sql[8]);
    const std::wstring whole = std::wstring(DataFeedHead) + L"DELETED=0";
    std::vector<wchar_t> buffer(whole.size() + 1);
    for (const std::size_t size : {whole.size() + 1, whole.size()}) {
        sqStorage::GetDataFeedSql(NewRequest().Get(), buffer.data(), static_cast<int>(size));
        EXPECT_EQ(whole.substr(0, size - 1), buffer.data());
    }
}

// Without a storage the cursors answer so, before anything else is looked at.
TEST(PortfolioWithoutStorage, CallsAnswerThatThereIsNone) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    LONG value = 5;
    EXPECT_EQ(E_POINTER, object->SelectPortfolio(0, nullptr, NewTable().Get()));
    EXPECT_EQ(E_POINTER, object->Advise(0, NewRequest().Get(), NewTable().Get(), &value));
    EXPECT_EQ(E_POINTER, object->Fetch(1, &value));
    EXPECT_EQ(E_POINTER, object->Unadvise(1));
    EXPECT_EQ(5, value);
}

TEST(PortfolioWithoutStorage, TheFeedOfTextFilesIsZeroAndRefused) {
    const auto object = platform::MakeObject<CqxStorageBase>();
    LONG value = 5;
    EXPECT_EQ(E_INVALIDARG, object->get_Datafeed(&value));
    EXPECT_EQ(0, value);
    EXPECT_EQ(E_INVALIDARG, object->get_Datafeed(nullptr));
}

} // namespace
