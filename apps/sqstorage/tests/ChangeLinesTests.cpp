// How changes are named, masked and written.
#include "apps/sqstorage/ExitStatus.h"
#include "apps/sqstorage/commands/ChangeLines.h"
#include "apps/sqstorage/rows/Moment.h"
#include "apps/sqstorage/store/ChangeKinds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace sqCliTest {

namespace {

using namespace sqCli;
using namespace std::chrono;
using testing::MatchesRegex;

std::string RefusalOf(std::string_view mask) {
    try {
        return std::to_string(ParseChangeMask(mask));
    } catch (const CCommandError& error) {
        EXPECT_EQ(error.Status(), EExitStatus::WrongUsage);
        return error.what();
    }
}

std::string LinesOf(EFormat format) {
    const CConsole console(format, false);
    testing::internal::CaptureStdout();
    CChangeLines lines(console);
    lines.Tell(0x8, 0);
    lines.Tell(0x2000, -7);
    lines.Close();
    return testing::internal::GetCapturedStdout();
}

TEST(ChangeKinds, EveryBitHasANameOfItsOwn) {
    EXPECT_EQ(std::size(ChangeKinds), 20U);
    EXPECT_EQ(std::set<std::string_view>(std::begin(ChangeKinds), std::end(ChangeKinds)).size(), 20U);
    EXPECT_EQ(ChangeNames(0x1), "symbol_added");
    EXPECT_EQ(ChangeNames(0x8), "holidays");
    EXPECT_EQ(ChangeNames(0x30), "holiday_dates,settings");
    EXPECT_EQ(ChangeNames(0x80000), "currencies");
}

TEST(ChangeKinds, AMaskIsMadeOfNamesAndNumbers) {
    EXPECT_EQ(ParseChangeMask("8"), 0x8U);
    EXPECT_EQ(ParseChangeMask("0x18"), 0x18U);
    EXPECT_EQ(ParseChangeMask("0XfFfFf"), 0xFFFFFU);
    EXPECT_EQ(ParseChangeMask("holidays"), 0x8U);
    EXPECT_EQ(ParseChangeMask("holidays,settings,0x1,2,holidays"), 0x2BU);
    EXPECT_EQ(ParseChangeMask(ChangeNames(AllChanges)), AllChanges);
}

TEST(ChangeKinds, AMaskThatNamesNoChangeIsRefused) {
    for (const char* mask : {"0", "0x100000", "1048576", "0xFFFFFFFF"})
        EXPECT_EQ(RefusalOf(mask), "The mask " + std::string(mask) +
                                       " names no change, or more than there are: say a number from 1 to 0xFFFFF.");
    for (const std::string mask : {"", "holiday", "0x", "-1", "8 ", "0x100000000"})
        EXPECT_EQ(RefusalOf(mask), "\"" + mask + "\" is no kind of change: say a number, or some of " +
                                       ChangeNames(AllChanges) + ".");
    EXPECT_THAT(RefusalOf("holidays,"), testing::StartsWith("\"\" is no kind of change"));
}

TEST(Moment, IsLocalTimeWithMillisecondsAndItsDistanceFromUtc) {
    const auto moment = system_clock::time_point(sys_days(2027y / March / 1)) + 8h + 30min + 250ms + 999us;
    EXPECT_EQ(MomentText(moment, 1h), "2027-03-01T09:30:00.250+01:00");
    EXPECT_EQ(MomentText(moment, 0s), "2027-03-01T08:30:00.250+00:00");
    EXPECT_EQ(MomentText(moment, -(9h + 30min)), "2027-02-28T23:00:00.250-09:30");
    EXPECT_EQ(MomentText(moment, -30min), "2027-03-01T08:00:00.250-00:30");
}

TEST(ChangeLines, ATableHasOneAlignedLineForEachChange) {
    EXPECT_THAT(LinesOf(EFormat::Table),
                MatchesRegex("[-0-9]+T[:.0-9]+[-+][0-9][0-9]:[0-9][0-9]  holidays               0\n"
                             "[-0-9]+T[:.0-9]+[-+][0-9][0-9]:[0-9][0-9]  rules                  -7\n\n"));
}

TEST(ChangeLines, CsvHasItsHeaderOnce) {
    EXPECT_THAT(LinesOf(EFormat::Csv), MatchesRegex("TIME,CHANGE,VALUE\n[-+:.T0-9]+,holidays,0\n"
                                                    "[-+:.T0-9]+,rules,-7\n\n"));
}

TEST(ChangeLines, JsonHasAnObjectALine) {
    EXPECT_THAT(LinesOf(EFormat::Json),
                MatchesRegex("\\{\"TIME\": \"[-+:.T0-9]+\", \"CHANGE\": \"holidays\", \"VALUE\": 0\\}\n"
                             "\\{\"TIME\": \"[-+:.T0-9]+\", \"CHANGE\": \"rules\", \"VALUE\": -7\\}\n"));
}

} // namespace

} // namespace sqCliTest
