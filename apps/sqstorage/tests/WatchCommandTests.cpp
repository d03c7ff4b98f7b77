#include "Sandbox.h"

#include <csignal>
#include <regex>

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr const char* Watching =
    "note: Watching the changes made in this process; interrupt the program to end it.\n";

// Moments become T.
std::string Timeless(const std::string& text) {
    static const std::regex moment(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[-+]\d\d:\d\d)");
    return std::regex_replace(text, moment, "T");
}

class WatchCommand : public Sandbox {};

TEST_F(WatchCommand, AnInterruptEndsItWellAndTheStoreIsFreeAgain) {
    Create();
    for (const int signal : {SIGINT, SIGTERM}) {
        const auto program = Start({"watch"});
        ASSERT_TRUE(program->AwaitError(Watching));
        EXPECT_EQ(Run({"list", "holidays"}).Status, 3) << "the store is open in one process at a time";
        program->Signal(signal);
        const tagEnd end = program->Wait();
        EXPECT_EQ(end.Status, 0);
        EXPECT_EQ(end.Output, "");
        EXPECT_EQ(end.Errors, Watching);
        EXPECT_EQ(Run({"list", "holidays"}).Status, 1);
    }
}

TEST_F(WatchCommand, UsesNoProcessorWhileNothingChanges) {
    Create();
    const auto program = Start({"watch"});
    ASSERT_TRUE(program->AwaitError(Watching));
    EXPECT_TRUE(program->AwaitRest());
    program->Signal(SIGTERM);
    EXPECT_EQ(program->Wait().Status, 0);
}

TEST_F(WatchCommand, AMaskThatNamesNothingIsRefusedBeforeTheStoreIsOpened) {
    const tagEnd end = Run({"watch", "--mask", "holidays,nothing"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_THAT(end.Errors, StartsWith("error: \"nothing\" is no kind of change: say a number, or some of "));
}

TEST_F(WatchCommand, WithoutAStoreItSaysSo) { EXPECT_EQ(Run({"watch", "--mask", "0x18"}).Status, 3); }

TEST_F(WatchCommand, ItsHelpTellsWhoseChangesAreSeenAndNamesTheKinds) {
    const std::string help = RunBare({"watch", "--help"}).Output;
    EXPECT_THAT(help, HasSubstr("What\nother programs change is not seen here"));
    EXPECT_THAT(help, HasSubstr("sqstorage import --watch"));
    EXPECT_THAT(help, HasSubstr("  0x00008  holidays\n"));
    EXPECT_THAT(help, HasSubstr("  0x80000  currencies\n"));
}

// The dates of a calendar are replaced as a whole, which is two changes: the old are taken away, the new written.
class ImportWatch : public Sandbox {
protected:
    void SetUp() override {
        Create();
        m_Holidays = Write("d/holidays.csv", "HOLIDAY_NAME\nX\nY\n").string();
        m_Dates =
            Write("d/holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE\nX,2027-01-01\nY,2027-01-01\n").string();
    }
    tagEnd Import(const std::string& format) {
        return Run({"--format", format, "import", (Folder() / "d").string(), "--watch"});
    }

    std::string m_Holidays;
    std::string m_Dates;
};

TEST_F(ImportWatch, EachChangeIsALineAndTheSummaryFollows) {
    const tagEnd end = Import("csv");
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(Timeless(end.Output), "TIME,CHANGE,VALUE\n"
                                    "T,holidays,0\nT,holidays,0\n"
                                    "T,holiday_dates,0\nT,holiday_dates,0\n"
                                    "T,holiday_dates,0\nT,holiday_dates,0\n\n"
                                    "FILE,ROWS,ADDED,UPDATED,UNCHANGED,DIFFERENT,REFUSED\n" +
                                        m_Holidays + ",2,2,0,0,0,0\n" + m_Dates + ",2,2,0,0,0,0\n");
}

TEST_F(ImportWatch, JsonHasTheChangesAsObjectsBeforeTheSummary) {
    const std::string holidays = "{\"TIME\": \"T\", \"CHANGE\": \"holidays\", \"VALUE\": 0}\n";
    const std::string dates = "{\"TIME\": \"T\", \"CHANGE\": \"holiday_dates\", \"VALUE\": 0}\n";
    EXPECT_THAT(Timeless(Import("json").Output),
                StartsWith(holidays + holidays + dates + dates + dates + dates + "[\n"));
}

TEST_F(ImportWatch, WithoutAChangeThereIsTheSummaryAlone) {
    ASSERT_EQ(Import("csv").Status, 0);
    EXPECT_THAT(Import("csv").Output, StartsWith("FILE,ROWS,"));
}

// The store tells of a change that the database refused, too.
TEST_F(ImportWatch, ChangesAroundARefusalAreTold) {
    CHeldDatabase(Database()).Run(L"ALTER TABLE HOLIDAYS ADD CONSTRAINT NO_Y CHECK (HOLIDAY_NAME<>'Y')");
    const tagEnd end = Run({"--format", "csv", "import", m_Holidays, "--watch"});
    EXPECT_EQ(end.Status, 4);
    EXPECT_THAT(Timeless(end.Output), StartsWith("TIME,CHANGE,VALUE\nT,holidays,0\nT,holidays,0\n\nFILE,"));
}

TEST_F(ImportWatch, ALineThatCannotBeWrittenEndsTheImport) {
    const tagEnd end = RunInto("/dev/full", {"--format", "csv", "import", m_Holidays, m_Dates, "--watch"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_THAT(end.Errors, HasSubstr("error: The result could not be written (No space left on device)"));
    EXPECT_THAT(Run({"--format", "csv", "list", "holidays"}).Output,
                MatchesRegex("HOLIDAY,HOLIDAY_NAME\n[0-9]+,X\n"))
        << "what was imported before stays, and nothing came after it";
}

} // namespace

} // namespace sqCliTest
