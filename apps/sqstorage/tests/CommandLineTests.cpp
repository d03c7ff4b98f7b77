// What holds for all commands.
#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class CommandLine : public Sandbox {};

TEST_F(CommandLine, HelpIsAManualOnTheStandardOutput) {
    const tagEnd end = RunBare({"--help"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Errors, "");
    for (const char* part : {"create", "import", "export", "list", "check", "upgrade",
                             "Examples:", "Files:", "Environment:", "SQSTORAGE_REGISTRY_DIR", "NO_COLOR",
                             "Status:", "--registry DIR", "--format table|csv|json", "--quiet"})
        EXPECT_THAT(end.Output, HasSubstr(part));
}

TEST_F(CommandLine, EachCommandHasAManualOfItsOwn) {
    for (const char* command : {"create", "import", "export", "list", "check", "upgrade"}) {
        const tagEnd end = RunBare({command, "--help"});
        EXPECT_EQ(end.Status, 0) << command;
        EXPECT_THAT(end.Output, HasSubstr("Usage: sqstorage")) << command;
        EXPECT_EQ(end.Errors, "") << command;
    }
}

TEST_F(CommandLine, TheHelpOfCreateTellsTheDefaults) {
    const tagEnd end = RunBare({"create", "--help"});
    EXPECT_THAT(end.Output, HasSubstr("Default: SYSDBA"));
    EXPECT_THAT(end.Output, HasSubstr("Default: masterkey"));
    EXPECT_THAT(end.Output, HasSubstr("Default: Databases/Portfolio.fdb"));
}

TEST_F(CommandLine, TheVersionIsTold) {
    const tagEnd end = RunBare({"--version"});
    EXPECT_EQ(end.Status, 0);
    EXPECT_THAT(end.Output, StartsWith("sqstorage "));
}

TEST_F(CommandLine, AFormatIsOneOfThree) {
    for (const char* word : {"xml", "0", "CSV"})
        EXPECT_EQ(Run({"--format", word, "list", "holidays"}).Errors,
                  std::string("error: --format: \"") + word +
                      "\" is none of table, csv, json: see \"sqstorage --help\".\n");
}

TEST_F(CommandLine, WrongUsageIsStatus2WithNothingOnTheStandardOutput) {
    const std::vector<std::vector<std::string>> lines{
        {},
        {"nonsense"},
        {"list"},
        {"list", "nonsense"},
        {"list", "holidays", "--nonsense"},
        {"--format", "xml", "list", "holidays"},
        {"import"},
        {"export"},
        {"list", "settings", "--from", "2027-01-01"},
        {"list", "holiday_dates", "--from", "2027-02-30"},
        {"list", "holiday_dates", "--to", "tomorrow"},
        {"list", "holiday_dates", "--from", "2027-02-02", "--to", "2027-02-01"}};
    for (const auto& line : lines) {
        const tagEnd end = Run(line);
        EXPECT_EQ(end.Status, 2) << testing::PrintToString(line);
        EXPECT_THAT(end.Errors, StartsWith("error: ")) << testing::PrintToString(line);
        EXPECT_EQ(end.Output, "") << testing::PrintToString(line);
    }
}

TEST_F(CommandLine, TheRegistryIsNamedByTheOptionOrTheEnvironment) {
    Create();
    m_Variables["SQSTORAGE_REGISTRY_DIR"] = Registry().string();
    EXPECT_EQ(RunBare({"check"}).Status, 0);
    EXPECT_EQ(RunBare({"--registry", (Folder() / "other").string(), "check"}).Status, 3);
    m_Variables["SQSTORAGE_REGISTRY_DIR"] = (Folder() / "other").string();
    EXPECT_EQ(Run({"check"}).Status, 0);
}

TEST_F(CommandLine, GlobalOptionsMayStandBehindTheCommand) {
    CreateFilled();
    EXPECT_EQ(Run({"list", "holidays", "--format", "json"}).Output,
              Run({"--format", "json", "list", "holidays"}).Output);
}

TEST_F(CommandLine, AnArgumentThatIsNotUtf8IsSaidToBeSo) {
    const tagEnd end = Run({"import", "\xFF"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_THAT(end.Errors, StartsWith("error: A text is not UTF-8 ("));
}

TEST_F(CommandLine, NothingIsWrittenOutsideTheFoldersThatWereNamed) {
    ASSERT_EQ(Run({"create", "--database", Database().string(), "--dictionary", (Folder() / "roots.csv").string()})
                  .Status,
              0);
    ASSERT_EQ(Run({"import", ShippedData.string()}).Status, 0);
    ASSERT_EQ(Run({"check"}).Status, 0);
    EXPECT_FALSE(platform::Exists(Folder() / "home"));
}

} // namespace

} // namespace sqCliTest
