// The guards around keys by themselves, on a real database.
#include "HostFixture.h"
#include "IdGenerator.h"
#include "RefusedClass.h"
#include "StorageHolder.h"
#include "diagnostics/tests/recorder/Recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

namespace {

using namespace tests;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class Keys : public HostTest {
protected:
    Keys() {
        for (const wchar_t* table : {L"DATA_FEEDS", L"SESSIONS", L"PORTFOLIO", L"CUSTOM_FUTURES"})
            Sql(std::wstring(L"DELETE FROM ") + table);
        Recorder::Clear();
    }
    sqStorage::CStorage& Storage() { return *m_Holder.GetObject(); }
    // A feed as the storage would write it.
    static void Feed(int key, const wchar_t* clsid, int deleted) {
        Sql(L"INSERT INTO DATA_FEEDS VALUES(" + std::to_wstring(key) + L",'Feed','feed.dll','" + clsid + L"',1,1," +
            std::to_wstring(deleted) + L",0,'F')");
    }

    sqStorage::CStorageHolder m_Holder;
};

TEST_F(Keys, TwoKeysDifferAndTheTableHoldsOneRecordAfterEach) {
    const auto database = Host().OpenDatabase();
    sqStorage::CIdGenerator generator(database.Get());
    const LONG first = generator.Generate();
    EXPECT_EQ(1, generator.RecordCount());
    const LONG second = generator.Generate();
    EXPECT_EQ(1, generator.RecordCount());
    EXPECT_GE(first, 1);
    EXPECT_EQ(first + 1, second);
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
}

TEST_F(Keys, AProcedureThatGivesNoRowIsReportedAndGivesNoKey) {
    const auto database = Host().OpenDatabase();
    // The generator's statement fails once the connection is gone.
    sqStorage::CIdGenerator generator(database.Get());
    database->Close();
    EXPECT_EQ(0, generator.Generate());
    EXPECT_THAT(Recorder::Asserts(), Contains(L"RecordCount>0"));
}

TEST_F(Keys, AGeneratorWithoutATableReportsItOnceAndGivesNoKeys) {
    const auto database = Host().OpenDatabase();
    std::optional<sqStorage::CIdGenerator> generator;
    {
        const CRefusedClass refused(IDM_dmudfcom::CLSID_dmTable, E_OUTOFMEMORY);
        generator.emplace(database.Get());
    }
    const auto records = Recorder::RecordsOf(L"ASSERT");
    ASSERT_EQ(1U, records.size());
    EXPECT_EQ(L"IdmTable", records[0].Description);
    EXPECT_EQ(E_OUTOFMEMORY, records[0].Status);
    Recorder::Clear();
    EXPECT_EQ(0, generator->Generate());
    EXPECT_EQ(0, generator->Generate());
    EXPECT_THAT(Recorder::Asserts(), IsEmpty());
    EXPECT_THAT(Recorder::Errors(), IsEmpty());
    EXPECT_FALSE(Host().HasPrepared(L"SELECT * FROM GENERATE_ID(1)"));
}

TEST_F(Keys, AllComeFromOneTransactionThatEndsWithTheGenerator) {
    const auto open = [] {
        return Sql(L"SELECT T.MON$TRANSACTION_ID FROM MON$TRANSACTIONS T JOIN MON$ATTACHMENTS A ON "
                   L"A.MON$ATTACHMENT_ID=T.MON$ATTACHMENT_ID WHERE A.MON$SYSTEM_FLAG=0 AND "
                   L"A.MON$ATTACHMENT_ID<>CURRENT_CONNECTION");
    };
    const auto database = Host().OpenDatabase();
    std::optional<sqStorage::CIdGenerator> generator(std::in_place, database.Get());
    ASSERT_THAT(open(), IsEmpty());
    generator->Generate();
    const auto first = open();
    EXPECT_EQ(1U, first.size());
    generator->Generate();
    generator->Generate();
    EXPECT_EQ(first, open());
    EXPECT_TRUE(Host().HasPrepared(L"SELECT * FROM GENERATE_ID(1)"));
    generator.reset();
    EXPECT_THAT(open(), IsEmpty());
}

TEST_F(Keys, ADeleteThatAnswersZeroDidNotDelete) {
    EXPECT_EQ(0, Storage().DeleteAnything(L"SELECT 0 AS DELETED FROM RDB$DATABASE"));
}

TEST_F(Keys, ADeleteThatAnswersNonZeroDeleted) {
    EXPECT_EQ(1, Storage().DeleteAnything(L"SELECT 5 AS DELETED FROM RDB$DATABASE"));
}

TEST_F(Keys, ADeleteWithoutARowDeleted) {
    EXPECT_EQ(1, Storage().DeleteAnything(L"SELECT 0 AS DELETED FROM RDB$DATABASE WHERE 1=0"));
}

TEST_F(Keys, ADeleteWithoutTheColumnDeletedAndTracesIt) {
    EXPECT_EQ(1, Storage().DeleteAnything(L"SELECT 0 AS SETTING FROM RDB$DATABASE"));
    EXPECT_THAT(Recorder::Messages(), ElementsAre(L"Field DELETED not found in Table"));
}

TEST_F(Keys, TheKeyOfADeletedFeedIsFoundByItsClass) {
    Feed(10, L"{A}", 0);
    EXPECT_EQ(0, Storage().GetDataFeedId1(L"{A}"));
    Feed(11, L"{A}", 1);
    EXPECT_EQ(11, Storage().GetDataFeedId1(L"{A}"));
    EXPECT_EQ(0, Storage().GetDataFeedId1(L"{B}"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{A}' AND DELETED=1"));
}

TEST_F(Keys, TheFirstOfSeveralDeletedFeedsWins) {
    Feed(10, L"{A}", 1);
    Feed(11, L"{A}", 1);
    const auto keys = Sql(L"SELECT DATA_FEED FROM DATA_FEEDS WHERE CLSID='{A}' AND DELETED=1");
    ASSERT_EQ(2U, keys.size());
    EXPECT_EQ(keys[0][0], Text(Storage().GetDataFeedId1(L"{A}")));
}

TEST_F(Keys, AClassIsPrimaryUntilAnyRowHasIt) {
    EXPECT_EQ(1, Storage().IsPrimaryInstance(L"{A}"));
    Feed(10, L"{A}", 1);
    EXPECT_EQ(0, Storage().IsPrimaryInstance(L"{A}"));
    EXPECT_EQ(1, Storage().IsPrimaryInstance(L"{B}"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT COUNT(*) AS DATA_FEED FROM DATA_FEEDS WHERE CLSID='{A}'"));
}

TEST_F(Keys, ATemplateIsFoundWhateverItsCase) {
    Sql(L"INSERT INTO SESSIONS VALUES(1,2,'abc',0)");
    EXPECT_NE(0, Storage().IsSessionTemplateExists(L"ABC"));
    EXPECT_EQ(0, Storage().IsSessionTemplateExists(L"ABCD"));
    EXPECT_TRUE(Host().HasPrepared(
        L"SELECT SESSION FROM SESSIONS WHERE SESSION_TYPE=2 AND UPPER(SESSION_NAME)=UPPER('ABC')"));
}

TEST_F(Keys, ASessionOfAnotherTypeIsNoTemplate) {
    Sql(L"INSERT INTO SESSIONS VALUES(1,1,'abc',0)");
    EXPECT_EQ(0, Storage().IsSessionTemplateExists(L"abc"));
}

TEST_F(Keys, ATemplateNameIsEscaped) {
    Sql(L"INSERT INTO SESSIONS VALUES(1,2,'trader''s',0)");
    EXPECT_NE(0, Storage().IsSessionTemplateExists(L"Trader's"));
}

TEST_F(Keys, AnEmptyTemplateNameDoesNotExist) {
    EXPECT_EQ(0, Storage().IsSessionTemplateExists(nullptr));
    EXPECT_EQ(0, Storage().IsSessionTemplateExists(L""));
}

TEST_F(Keys, ATemplateIsUsedByASymbolOrACustomFuture) {
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SESSION_TYPE,TEMPLATE_SESSION) VALUES(1,2,50)");
    Sql(L"INSERT INTO PORTFOLIO (SYMBOL,SESSION_TYPE,TEMPLATE_SESSION) VALUES(2,1,51)");
    Sql(L"INSERT INTO CUSTOM_FUTURES (CF,SESSION_TYPE,TEMPLATE_SESSION) VALUES(3,2,52)");
    EXPECT_NE(0, Storage().IsSessionTemplateUsed(50, L"SYMBOL", L"PORTFOLIO"));
    EXPECT_EQ(0, Storage().IsSessionTemplateUsed(51, L"SYMBOL", L"PORTFOLIO"));
    EXPECT_NE(0, Storage().IsSessionTemplateUsed(52, L"CF", L"CUSTOM_FUTURES"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT SYMBOL FROM PORTFOLIO WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=50"));
    EXPECT_TRUE(Host().HasPrepared(L"SELECT CF FROM CUSTOM_FUTURES WHERE SESSION_TYPE=2 AND TEMPLATE_SESSION=52"));
}

} // namespace
