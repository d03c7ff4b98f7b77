// Feeds, exchanges, sessions and currencies written by several threads at once.
#include "StorageFixture.h"

#include "dmserver/dmudfcom/interface/FieldIds.h"

#include <set>
#include <thread>

namespace {

using namespace tests;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

constexpr LONG Threads = 4;
constexpr LONG Rounds = 10;

class ReferenceThreads : public StorageTest {
protected:
    // Runs `work` with a number of its own on each thread and gives the keys that all of them drew.
    template <class Work>
    static std::multiset<LONG> OnAllThreads(Work&& work) {
        std::vector<std::vector<LONG>> keys(Threads);
        std::vector<std::thread> threads;
        for (LONG t = 0; t < Threads; ++t)
            threads.emplace_back([&, t] {
                for (LONG i = 0; i < Rounds; ++i)
                    keys[static_cast<std::size_t>(t)].push_back(work(t * Rounds + i));
            });
        for (std::thread& thread : threads)
            thread.join();
        std::multiset<LONG> all;
        for (const auto& own : keys)
            all.insert(own.begin(), own.end());
        return all;
    }
    static void ExpectDistinct(const std::multiset<LONG>& keys) {
        EXPECT_THAT(keys, SizeIs(Threads * Rounds));
        EXPECT_THAT(std::set<LONG>(keys.begin(), keys.end()), SizeIs(keys.size()));
        EXPECT_THAT(keys, Each(testing::Ge(1)));
        EXPECT_THAT(Recorder::Asserts(), IsEmpty());
        EXPECT_THAT(Recorder::Errors(), IsEmpty());
    }
    static std::wstring Count(const wchar_t* table) {
        return Sql(std::wstring(L"SELECT COUNT(*) AS DATA_FEED FROM ") + table)[0][0];
    }
    static CComPtr<IdmTable> Details(LONG session) {
        const auto table = NewTable();
        for (const LONG id : {IDM_dmudfcom::fieldSession, IDM_dmudfcom::fieldStartDay, IDM_dmudfcom::fieldStartTime,
                              IDM_dmudfcom::fieldEndDay, IDM_dmudfcom::fieldEndTime, IDM_dmudfcom::fieldValue5,
                              IDM_dmudfcom::fieldValue6, IDM_dmudfcom::fieldValue7})
            table->AddFieldById(id, 0, 0, 0);
        table->Append();
        FieldOf(table, IDM_dmudfcom::fieldSession)->put_AsLong(session);
        table->Post();
        table->First();
        return table;
    }
};

TEST_F(ReferenceThreads, EachFeedGetsAKeyOfItsOwn) {
    ExpectDistinct(OnAllThreads([&](LONG number) {
        const CBstr text(L"{" + Text(number) + L"}");
        LONG key = 0;
        m_Storage->InsertDataFeed(text.Get(), text.Get(), text.Get(), text.Get(), 0, &key);
        return key;
    }));
    EXPECT_EQ(Text(Threads * Rounds), Count(L"DATA_FEEDS WHERE PRIMARY_INSTANCE=1"));
    EXPECT_THAT(m_Changes.Take(), SizeIs(Threads * Rounds));
}

TEST_F(ReferenceThreads, ExchangesComeAndGo) {
    const CBstr text(L"x");
    const CBstr zone(L"300,0,11,0,1,02:00:00.0000,-60,3,0,2,02:00:00.0000");
    ExpectDistinct(OnAllThreads([&](LONG number) {
        LONG key = 0;
        LONG deleted = 0;
        m_Storage->InsertExchange(text.Get(), text.Get(), 0, 1000 + number, 2000 + number, 0, text.Get(),
                                  zone.Get(), &key);
        m_Storage->DeleteExchange(key, &deleted);
        return deleted ? key : 0;
    }));
    EXPECT_EQ(L"0", Count(L"EXCHANGES"));
    // Of each its insert; its setting, details, session and itself.
    EXPECT_THAT(m_Changes.Take(), SizeIs(5 * Threads * Rounds));
}

TEST_F(ReferenceThreads, EachSessionKeepsItsDetails) {
    ExpectDistinct(OnAllThreads([&](LONG number) {
        LONG key = 0;
        m_Storage->InsertSession(2, CBstr(Text(number)).Get(), 0, &key);
        m_Storage->InsertSessionDetails(Details(key).Get());
        return key;
    }));
    EXPECT_EQ(Text(Threads * Rounds), Count(L"SESSIONS S JOIN SESSION_DETAILS D ON D.SESSION=S.SESSION"));
}

TEST_F(ReferenceThreads, EachCurrencyHasItsLastCode) {
    const auto currency = m_Storage.As<IDM_qxStorage::IqxCurrency>();
    ExpectDistinct(OnAllThreads([&](LONG number) {
        const LONG id = 1 + number;
        currency->SetCurrency(id, 1);
        currency->SetCurrency(id, 100 + id);
        return id;
    }));
    EXPECT_EQ(Text(Threads * Rounds), Count(L"CURRENCY WHERE CURRENCY_CODE=100+ID"));
}

} // namespace
