// Output that nobody reads, or that has nowhere to go.
#include "Sandbox.h"

namespace sqCliTest {

namespace {

using testing::HasSubstr;

class ClosedOutput : public Sandbox {
protected:
    void SetUp() override { Create(); }
};

TEST_F(ClosedOutput, ACommandThatOnlyShowsSomethingEndsQuietlyAsDone) {
    ASSERT_EQ(Run({"import", ShippedData.string()}).Status, 0);
    for (const char* what : {"holiday_dates", "exchanges", "symbols"})
        for (const char* format : {"table", "csv", "json"}) {
            const tagEnd end = RunUnread({"--format", format, "list", what});
            EXPECT_EQ(end.Status, 0) << what << " " << format;
            EXPECT_EQ(end.Errors, "") << what << " " << format;
        }
}

TEST_F(ClosedOutput, WhatTheStoreSaidStaysTheStatus) {
    EXPECT_EQ(RunUnread({"list", "symbols", "--name", "Q"}).Status, 1);
    const auto file = Write("holiday_dates.csv", "HOLIDAY_NAME,HOLIDAY_START_DATE\nX,2027-01-01\n");
    EXPECT_EQ(RunUnread({"import", file.string()}).Status, 4);
}

TEST_F(ClosedOutput, AnImportGoesOnToItsEnd) {
    for (const char* watch : {"--watch", "--update"}) {
        const auto file = Write(std::string(watch) + "/holidays.csv",
                                std::string("HOLIDAY_NAME\nA") + watch + "\nB" + watch + "\n");
        const tagEnd end = RunUnread({"import", file.string(), watch});
        EXPECT_EQ(end.Status, 0) << end.Errors;
        EXPECT_EQ(end.Errors, "");
        EXPECT_THAT(Run({"list", "holidays"}).Output, HasSubstr(std::string("B") + watch));
    }
}

TEST_F(ClosedOutput, AMissingOutputIsToldAndGoesIntoNoOtherFile) {
    ASSERT_EQ(Run({"import", ShippedData.string()}).Status, 0);
    const tagEnd end = RunWithoutOutput({"--format", "csv", "list", "exchanges"});
    EXPECT_EQ(end.Status, 2);
    EXPECT_EQ(end.Errors,
              "error: The result could not be written (Bad file descriptor): check where the output goes.\n");
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Folder())) {
        const std::string text = entry.is_directory() ? std::string() : Read(entry.path());
        EXPECT_THAT(text, testing::Not(testing::StartsWith("EXCHANGE,"))) << entry.path();
    }
}

} // namespace

} // namespace sqCliTest
