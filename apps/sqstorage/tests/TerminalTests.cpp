// What is different when a person looks on.
#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::Not;

class Terminal : public Sandbox {};

TEST_F(Terminal, HeadersAreBoldAndErrorsRed) {
    CreateFilled();
    EXPECT_THAT(RunOnTerminal({"list", "holidays"}).Output, HasSubstr("\x1b[1mHOLIDAY  HOLIDAY_NAME\x1b[0m"));
    EXPECT_THAT(RunOnTerminal({"list", "holiday_dates", "--calendar", "X"}).Output,
                HasSubstr("\x1b[31merror:\x1b[0m"));
}

TEST_F(Terminal, NoColourWithNoColor) {
    CreateFilled();
    m_Variables["NO_COLOR"] = "1";
    EXPECT_THAT(RunOnTerminal({"list", "holidays"}).Output, Not(HasSubstr("\x1b")));
    EXPECT_THAT(RunOnTerminal({"list", "holiday_dates", "--calendar", "X"}).Output, Not(HasSubstr("\x1b")));
    m_Variables["NO_COLOR"] = "";
    EXPECT_THAT(RunOnTerminal({"list", "holidays"}).Output, HasSubstr("\x1b[1m"));
}

TEST_F(Terminal, NoColourInAPipe) {
    CreateFilled();
    EXPECT_THAT(Run({"list", "holidays"}).Output, Not(HasSubstr("\x1b")));
    EXPECT_THAT(Run({"list", "holiday_dates", "--calendar", "X"}).Errors, Not(HasSubstr("\x1b")));
}

TEST_F(Terminal, AnImportDrawsABarAndWipesItOff) {
    Create();
    const std::string output = RunOnTerminal({"import", ShippedData.string()}).Output;
    EXPECT_THAT(output, HasSubstr("\r[........................................] 0/13 " +
                                  (ShippedData / "holidays.csv").string()));
    EXPECT_THAT(output, HasSubstr("\r[########################################] 13/13 "));
    EXPECT_THAT(output, HasSubstr("\r\x1b[K"));
}

TEST_F(Terminal, QuietDrawsNoBar) {
    Create();
    EXPECT_THAT(RunOnTerminal({"--quiet", "import", ShippedData.string()}).Output, Not(HasSubstr("0/13")));
}

TEST_F(Terminal, TextsOfAFileDoNotDriveIt) {
    Create();
    const auto file = Write("holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE\n\x1b[2J,2027-01-01\n");
    EXPECT_THAT(RunOnTerminal({"import", file.string()}).Output, Not(HasSubstr("\x1b[2J")));
}

} // namespace

} // namespace sqCliTest
