#include "SymbolFixture.h"

#include <algorithm>
#include <set>

namespace sqCliTest {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* ListHead = "SYMBOL,SYMBOL_NAME,DATA_FEED_NAME,EXCHANGE_NAME,CATEGORY,STRIKE_PRICE,CALL_PUT,"
                                 "EXPIRATION_DATE,DESCRIPTION\n";

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        lines.emplace_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(text.size(), lines.back().size() + 1));
    }
    return lines;
}

class SymbolList : public SymbolSandbox {
protected:
    void SetUp() override {
        SymbolSandbox::SetUp();
        const tagEnd end = ImportSymbols("DESCRIPTION,STRIKE_PRICE,CALL_PUT,EXPIRATION_DATE",
                                         "ESZ26,0,F,E,Gold in New York,0,0,2026-12-18\n"
                                         "ESH27,0,F,E,Silver,0,0,2027-03-19\n"
                                         "ES_X,1,F,X,gold leaf,4500.25,1,\n"
                                         "esz26,0,G,X,\"Gold, it's said\",0,0,\n");
        ASSERT_EQ(end.Status, 0) << end.Errors;
    }

    // The names listed with these filters, sorted.
    std::vector<std::string> Names(const std::vector<std::string>& filters) {
        std::vector<std::string> line{"--format", "csv", "list", "symbols"};
        line.insert(line.end(), filters.begin(), filters.end());
        const tagEnd end = Run(line);
        EXPECT_EQ(end.Status, end.Output == ListHead ? 1 : 0) << end.Errors;
        std::vector<std::string> names = LinesOf(end.Output);
        names.erase(names.begin());
        for (std::string& name : names) {
            name.erase(0, name.find(',') + 1);
            name.erase(name.find(','));
        }
        std::ranges::sort(names);
        return names;
    }
    std::string Key(const std::wstring& name) {
        return std::to_string(Number(L"SELECT SYMBOL FROM PORTFOLIO WHERE SYMBOL_NAME='" + name + L"'"));
    }
};

TEST_F(SymbolList, EachFormatHasNamesForWhatASymbolRefersTo) {
    const std::string key = Key(L"ES_X");
    EXPECT_EQ(Run({"--format", "csv", "list", "symbols", "--name", "ES_X"}).Output,
              ListHead + key + ",ES_X,F,X,1,4500.25,1,,gold leaf\n");
    EXPECT_EQ(
        Run({"--format", "json", "list", "symbols", "--name", "ES_X"}).Output,
        "[\n  {\"SYMBOL\": " + key +
            ", \"SYMBOL_NAME\": \"ES_X\", \"DATA_FEED_NAME\": \"F\", \"EXCHANGE_NAME\": \"X\", \"CATEGORY\": 1, "
            "\"STRIKE_PRICE\": 4500.25, \"CALL_PUT\": 1, \"EXPIRATION_DATE\": null, \"DESCRIPTION\": \"gold "
            "leaf\"}\n]\n");
    EXPECT_EQ(
        Run({"list", "symbols", "--name", "ESH27"}).Output,
        "SYMBOL  SYMBOL_NAME  DATA_FEED_NAME  EXCHANGE_NAME  CATEGORY  STRIKE_PRICE  CALL_PUT  "
        "EXPIRATION_DATE  DESCRIPTION\n"
        "------  -----------  --------------  -------------  --------  ------------  --------  "
        "---------------  -----------\n" +
            std::string(6 - Key(L"ESH27").size(), ' ') + Key(L"ESH27") +
            "  ESH27        F               E                     0             0         0  2027-03-19       "
            "Silver\n");
}

TEST_F(SymbolList, EveryFilterNarrowsDownAndAllMustHold) {
    EXPECT_THAT(Names({}), ElementsAre("ESH27", "ESZ26", "ES_X", "esz26"));
    EXPECT_THAT(Names({"--feed", "F"}), ElementsAre("ESH27", "ESZ26", "ES_X"));
    EXPECT_THAT(Names({"--exchange", "X"}), ElementsAre("ES_X", "esz26"));
    EXPECT_THAT(Names({"--category", "0"}), ElementsAre("ESH27", "ESZ26", "esz26"));
    EXPECT_THAT(Names({"--name", "esZ"}), ElementsAre("ESZ26", "esz26"));
    EXPECT_THAT(Names({"--description", "GOLD"}), ElementsAre("ESZ26", "ES_X", "esz26"));
    EXPECT_THAT(Names({"--description", "gold, it's"}), ElementsAre("esz26"));
    EXPECT_THAT(Names({"--name", "ESZ", "--description", "gold in"}), ElementsAre("ESZ26"));
    EXPECT_THAT(Names({"--feed", "F", "--exchange", "X", "--category", "1"}), ElementsAre("ES_X"));
    EXPECT_THAT(Names({"--feed", "G", "--category", "1"}), IsEmpty());
}

TEST_F(SymbolList, AnyTwoFiltersMustBothHold) {
    struct tagPair {
        std::vector<std::string> Filters;
        std::vector<std::string> Names;
    };
    const std::vector<tagPair> pairs{{{"--feed", "F", "--exchange", "E"}, {"ESH27", "ESZ26"}},
                                     {{"--feed", "G", "--exchange", "E"}, {}},
                                     {{"--feed", "F", "--category", "0"}, {"ESH27", "ESZ26"}},
                                     {{"--feed", "F", "--name", "ESZ"}, {"ESZ26"}},
                                     {{"--feed", "F", "--description", "gold"}, {"ESZ26", "ES_X"}},
                                     {{"--exchange", "X", "--category", "0"}, {"esz26"}},
                                     {{"--exchange", "X", "--name", "es%2"}, {"esz26"}},
                                     {{"--exchange", "E", "--description", "gold"}, {"ESZ26"}},
                                     {{"--category", "1", "--name", "es"}, {"ES_X"}},
                                     {{"--category", "0", "--description", "gold"}, {"ESZ26", "esz26"}},
                                     {{"--name", "es", "--description", "s"}, {"ESH27"}},
                                     {{"--name", "*", "--description", "gold"}, {"ESZ26", "ES_X", "esz26"}},
                                     {{"--name", "es", "--description", "*"}, {"ESH27", "ESZ26", "ES_X", "esz26"}}};
    for (const auto& [filters, names] : pairs)
        EXPECT_EQ(Names(filters), names) << testing::PrintToString(filters);
}

TEST_F(SymbolList, PercentAndUnderscoreAreWildcardsOfNamesAlone) {
    EXPECT_THAT(Names({"--name", "ES_"}), ElementsAre("ESH27", "ESZ26", "ES_X", "esz26"));
    EXPECT_THAT(Names({"--name", "%27"}), ElementsAre("ESH27"));
    EXPECT_THAT(Names({"--name", "*"}), ElementsAre("ESH27", "ESZ26", "ES_X", "esz26"));
    EXPECT_THAT(Names({"--description", "%leaf"}), IsEmpty());
}

TEST_F(SymbolList, WhatNamesNothingIsStatus1) {
    const tagEnd none = Run({"list", "symbols", "--name", "Q"});
    EXPECT_EQ(none.Status, 1);
    EXPECT_EQ(none.Output, "");
    EXPECT_EQ(none.Errors, "note: There is no such row.\n");
    EXPECT_EQ(Run({"--format", "json", "list", "symbols", "--name", "Q"}).Output, "[]\n");
    const tagEnd feed = Run({"list", "symbols", "--feed", "Q"});
    EXPECT_EQ(feed.Status, 1);
    EXPECT_EQ(feed.Errors, "error: There is no feed \"Q\": see \"sqstorage list feeds\".\n");
    const tagEnd exchange = Run({"list", "symbols", "--exchange", "Q"});
    EXPECT_EQ(exchange.Status, 1);
    EXPECT_EQ(exchange.Errors, "error: There is no exchange \"Q\": see \"sqstorage list exchanges\".\n");
}

TEST_F(SymbolList, AFilterThatIsNoneIsStatus2) {
    const tagEnd category = Run({"list", "symbols", "--category", "futures"});
    EXPECT_EQ(category.Status, 2);
    EXPECT_EQ(category.Errors, "error: --category is \"futures\": give a whole number from 0 to 32767.\n");
    const tagEnd name = Run({"list", "symbols", "--name", std::string(64, 'x')});
    EXPECT_EQ(name.Status, 2);
    EXPECT_EQ(name.Errors, "error: --name has 64 characters, and the store keeps 63: shorten it.\n");
    const tagEnd other = Run({"list", "feeds", "--name", "F"});
    EXPECT_EQ(other.Status, 2);
    EXPECT_EQ(other.Errors, "error: --name does not go with feeds: leave it out.\n");
}

class LargeSymbolList : public SymbolSandbox {
protected:
    // Symbols S000001 and on of feed F and exchange E, each tenth of category 1 and the others of 0.
    void MakeSymbols(int count) {
        CHeldDatabase(Database())
            .Run(L"EXECUTE BLOCK AS DECLARE VARIABLE I INTEGER = 0; DECLARE VARIABLE F INTEGER; DECLARE VARIABLE E "
                 L"INTEGER; BEGIN SELECT DATA_FEED FROM DATA_FEEDS WHERE DATA_FEED_NAME='F' INTO :F; SELECT "
                 L"EXCHANGE "
                 L"FROM EXCHANGES WHERE EXCHANGE_NAME='E' INTO :E; WHILE (I < " +
                 std::to_wstring(count) +
                 L") DO BEGIN I = I + 1; INSERT INTO PORTFOLIO VALUES(:I+1000000,'S'||LPAD(:I,6,'0'),'S',"
                 L"'A description of some length','',IIF(MOD(:I,10)=0,1,0),:F,:E,1,0,1,0,0,12,2026,0,0,0,"
                 L"'18.12.2026',0,0,'1.1.1900','1.1.1900'); END END");
    }
};

TEST_F(LargeSymbolList, AllRowsComeOnceInEveryFormat) {
    MakeSymbols(1234);
    const auto csv = LinesOf(Run({"--format", "csv", "list", "symbols"}).Output);
    EXPECT_EQ(csv.size(), 1235U);
    EXPECT_EQ(std::set(csv.begin(), csv.end()).size(), 1235U);
    EXPECT_EQ(csv.front() + "\n", ListHead);
    const auto table = LinesOf(Run({"list", "symbols"}).Output);
    EXPECT_EQ(std::set(table.begin(), table.end()).size(), 1236U);
    const auto json = LinesOf(Run({"--format", "json", "list", "symbols"}).Output);
    EXPECT_EQ(json.size(), 1236U);
    EXPECT_EQ(json.front(), "[");
    EXPECT_EQ(json.back(), "]");
    EXPECT_EQ(std::ranges::count_if(json, [](const std::string& line) { return line.ends_with("},"); }), 1233);
}

TEST_F(LargeSymbolList, TheFirstRowsAreThereBeforeTheLastAreFetched) {
    MakeSymbols(1200);
    {
        // One of the last rows cannot be read any more.
        CHeldDatabase database(Database());
        database.Run(L"DROP PROCEDURE GET_SYMBOL_INFO");
        database.Run(L"ALTER TABLE PORTFOLIO DROP CALL_PUT");
        database.Run(L"ALTER TABLE PORTFOLIO ADD CALL_PUT COMPUTED BY (1/(1001150-SYMBOL))");
    }
    for (const char* format : {"csv", "table", "json"}) {
        const tagEnd end = Run({"--format", format, "list", "symbols"});
        // Two batches of 500 were shown before the third was asked for.
        EXPECT_EQ(std::ranges::count_if(LinesOf(end.Output),
                                        [](const std::string& line) { return line.find("S00") != line.npos; }),
                  1000)
            << format;
        EXPECT_EQ(end.Status, 1) << format;
        EXPECT_THAT(end.Errors, StartsWith("error: ")) << format;
        EXPECT_THAT(end.Output, HasSubstr("S000500")) << format;
        EXPECT_THAT(end.Output, testing::Not(HasSubstr("S001150"))) << format;
    }
}

TEST_F(LargeSymbolList, AReaderThatHasEnoughEndsItQuietly) {
    MakeSymbols(5000);
    for (const char* format : {"csv", "table", "json"}) {
        const auto program = Start({"--format", format, "list", "symbols"});
        ASSERT_TRUE(program->AwaitOutput(100)) << format;
        program->CloseOutput();
        const tagEnd end = program->Wait();
        EXPECT_EQ(end.Status, 0) << format;
        EXPECT_EQ(end.Errors, "") << format;
    }
}

TEST_F(LargeSymbolList, MemoryDoesNotGrowWithTheRows) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer's own memory grows with every allocation";
#endif
    constexpr std::size_t count = 40000;
    constexpr std::size_t leastRow = 60;   // bytes written
    constexpr std::size_t leastKept = 300; // bytes, were it kept until the end
    MakeSymbols(count);
    // Both go through the whole table, the one showing a tenth of it. Neither has ended when it is looked at.
    const auto few = Start({"--format", "csv", "list", "symbols", "--category", "1"});
    ASSERT_TRUE(few->AwaitOutput(count / 10 * leastRow / 2));
    const std::size_t peakOfFew = few->PeakMemory();
    few->Wait();
    const auto all = Start({"--format", "csv", "list", "symbols"});
    ASSERT_TRUE(all->AwaitOutput(count * leastRow - 100000));
    EXPECT_LT(all->PeakMemory(), peakOfFew + count * leastKept / 2);
    const tagEnd end = all->Wait();
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(LinesOf(end.Output).size(), count + 1);
}

} // namespace

} // namespace sqCliTest
