// A process that dies while it writes symbols: what was answered is there, and nothing is half there.
#include "HostFixture.h"
#include "KilledSymbols.h"
#include "platform/clock.h"
#include "platform/tests/support/ChildProcess.h"

#include <gmock/gmock.h>
#include <random>

namespace {

using namespace tests;
using testing::ElementsAre;
using testing::IsEmpty;

class KilledWriter : public HostTest {
protected:
    // Lets a writer start at `first`, kills it somewhere within an insert, and tells how many were answered.
    LONG WriteAndKill(LONG first) {
        platform::CChildProcess writer(SQ_SYMBOL_WRITER, {std::to_string(first)});
        const int answers = std::uniform_int_distribution(0, 40)(m_Random);
        std::string line;
        LONG answered = 0;
        while (answered < answers && writer.ReadLine(line))
            EXPECT_EQ(std::to_string(first + answered++), line);
        // Anywhere in what follows: the look for a duplicate, the key, the insert, its commit.
        const double until = platform::MillisecondClock() + std::uniform_real_distribution(0.0, 3.0)(m_Random);
        while (platform::MillisecondClock() < until) {
        }
        writer.Kill();
        EXPECT_EQ(128 + 9, writer.Wait());
        while (writer.ReadLine(line))
            EXPECT_EQ(std::to_string(first + answered++), line);
        return answered;
    }

    // The numbers of the rows, in order; each row is whole.
    static std::vector<LONG> WholeRows() {
        std::vector<LONG> numbers;
        for (const Row& row :
             Sql(L"SELECT MARGIN,SYMBOL_NAME,SYMBOL_ROOT,DESCRIPTION,CUSIP,CATEGORY,DATA_FEED,EXCHANGE,"
                 L"SETTING_TYPE,SETTING,SESSION_TYPE,CUSTOM_SESSION,TEMPLATE_SESSION,"
                 L"CONTRACT_MONTH,CONTRACT_YEAR,STRIKE_PRICE,CALL_PUT,EXPIRATION_DATE,EXPIRED,"
                 L"EXPIRATION_RULE,FIRST_NOTICE_DATE,DELIVERY FROM PORTFOLIO ORDER BY MARGIN")) {
            numbers.push_back(std::stoi(row[0]));
            const auto symbol = KilledSymbol(numbers.back());
            EXPECT_EQ((Row{row[0],
                           *symbol.SymbolName,
                           *symbol.SymbolRoot,
                           *symbol.Description,
                           *symbol.CUSIP,
                           L"1",
                           L"7",
                           L"5",
                           L"1",
                           L"0",
                           L"1",
                           L"0",
                           L"0",
                           L"12",
                           L"2009",
                           L"0",
                           L"0",
                           L"18.12.2009",
                           L"0",
                           L"0",
                           L"01.01.1900",
                           L"01.01.1900"}),
                      row);
        }
        return numbers;
    }

    // Every row is found by its key and by its name, as many times as a walk over the table finds it.
    static void ExpectSoundIndexes() {
        const Row counts =
            Sql(L"SELECT (SELECT COUNT(*) FROM PORTFOLIO P PLAN (P NATURAL)) AS MARGIN,"
                L"(SELECT COUNT(*) FROM PORTFOLIO P WHERE SYMBOL>0 PLAN (P INDEX (PORTFOLIO_KEY))) AS "
                L"CATEGORY,(SELECT COUNT(*) FROM PORTFOLIO P WHERE SYMBOL_NAME>'' PLAN (P INDEX "
                L"(PORTFOLIO_IDENTITY))) AS EXCHANGE,(SELECT COUNT(*) FROM PORTFOLIO P WHERE "
                L"UPPER(SYMBOL_NAME)>'' PLAN (P INDEX (PORTFOLIO_UPPER_NAME))) AS DATA_FEED "
                L"FROM RDB$DATABASE")
                .at(0);
        EXPECT_THAT(counts, testing::Each(counts[0]));
    }

    const std::random_device::result_type m_Seed = std::random_device()();
    std::mt19937 m_Random{m_Seed};
};

TEST_F(KilledWriter, LosesNoAnsweredInsertAndLeavesNoHalfRow) {
    SCOPED_TRACE("seed " + std::to_string(m_Seed));
    LONG next = 1;
    std::vector<LONG> expected;
    for (int kill = 0; kill < 10; ++kill) {
        SCOPED_TRACE("kill " + std::to_string(kill));
        const LONG answered = WriteAndKill(next);
        for (LONG i = 0; i < answered; ++i)
            expected.push_back(next++);
        const std::vector<LONG> rows = WholeRows();
        // One more may have been committed whose answer did not come out any more.
        if (rows.size() == expected.size() + 1)
            expected.push_back(next++);
        ASSERT_EQ(expected, rows);
    }
    ExpectSoundIndexes();
    // The storage itself opens again, finds all of them and goes on.
    CComPtr<IqxStorage> storage;
    ASSERT_EQ(S_OK, CStorageHost::Create(storage));
    LONG key = 0;
    for (const LONG number : expected) {
        EXPECT_EQ(S_FALSE, InsertPortfolio(*storage.Get(), KilledSymbol(number), &key));
        LONG found = 0;
        EXPECT_EQ(S_OK, storage->GetSymbolByName(7, CBstr(*KilledSymbol(number).SymbolName).Get(), &found));
        EXPECT_EQ(key, found);
    }
    EXPECT_EQ(S_OK, InsertPortfolio(*storage.Get(), KilledSymbol(next), &key));
}

} // namespace
