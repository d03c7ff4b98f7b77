#include "Sandbox.h"

namespace sqCliTest {

namespace {

constexpr std::array Files{"holidays.csv", "holiday_dates.csv", "settings.csv"};

class ExportCommand : public Sandbox {
protected:
    void ExpectSameFiles(const std::filesystem::path& left, const std::filesystem::path& right) {
        for (const char* file : Files)
            EXPECT_EQ(Read(left / file), Read(right / file)) << file;
    }

    // What `source` exports, imported into an empty store and exported again.
    void ExpectRoundTrip() {
        const auto first = Folder() / "first";
        const auto second = Folder() / "second";
        ASSERT_EQ(Run({"export", first.string()}).Status, 0);
        const std::string registry = (Folder() / "registry2").string();
        ASSERT_EQ(RunBare({"--registry", registry, "create", "--database", (Folder() / "2.fdb").string()}).Status,
                  0);
        const tagEnd import = RunBare({"--registry", registry, "import", first.string()});
        ASSERT_EQ(import.Status, 0) << import.Errors;
        ASSERT_EQ(RunBare({"--registry", registry, "export", second.string()}).Status, 0);
        ExpectSameFiles(first, second);
    }
};

TEST_F(ExportCommand, WhatIsShippedComesOutByteForByte) {
    CreateFilled();
    const tagEnd end = Run({"--format", "csv", "export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    EXPECT_EQ(end.Output, "FILE,ROWS\n" + (Folder() / "out/holidays.csv").string() + ",10\n" +
                              (Folder() / "out/holiday_dates.csv").string() + ",267\n" +
                              (Folder() / "out/settings.csv").string() + ",36\n");
    ExpectSameFiles(ShippedData, Folder() / "out");
    ExpectRoundTrip();
}

TEST_F(ExportCommand, AwkwardTextsAndEndDatesMakeTheRoundTrip) {
    Create();
    Write("d/holidays.csv", "HOLIDAY_NAME\n\"O'Neil, \"\"x\"\"\"\nÜber 漢\n 10\n\"two\nlines\"\nempty\n");
    Write("d/holiday_dates.csv", "HOLIDAY_DESCRIPTION,HOLIDAY_END_DATE,HOLIDAY_START_DATE,HOLIDAY_NAME\n"
                                 "\"it's, \"\"so\"\"\",,2027-01-01,Über 漢\n"
                                 "second of the day,,2027-01-01,Über 漢\n"
                                 ",2078-12-31,1900-01-01,\"O'Neil, \"\"x\"\"\"\n");
    Write("d/settings.csv", "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n"
                            "10,0.1,1,0.000001\n9,0.3,2147483647,999999872\n10,0.015625,1,0.5\n");
    const tagEnd import = Run({"import", (Folder() / "d").string()});
    ASSERT_EQ(import.Status, 0) << import.Errors;
    ExpectRoundTrip();
    EXPECT_EQ(Read(Folder() / "first/settings.csv"), "PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT\n"
                                                     "9,0.3,2147483647,999999872\n"
                                                     "10,0.015625,1,0.5\n"
                                                     "10,0.1,1,0.000001\n");
    EXPECT_EQ(Read(Folder() / "first/holiday_dates.csv"),
              "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_END_DATE,HOLIDAY_DESCRIPTION\n"
              "\"O'Neil, \"\"x\"\"\",1900-01-01,2078-12-31,\n"
              "Über 漢,2027-01-01,,\"it's, \"\"so\"\"\"\n"
              "Über 漢,2027-01-01,,second of the day\n");
}

TEST_F(ExportCommand, AnEmptyStoreGivesHeaders) {
    Create();
    EXPECT_EQ(Run({"export", (Folder() / "out").string()}).Status, 0);
    EXPECT_EQ(Read(Folder() / "out/holidays.csv"), "HOLIDAY_NAME\n");
    EXPECT_EQ(Read(Folder() / "out/holiday_dates.csv"), "HOLIDAY_NAME,HOLIDAY_START_DATE,HOLIDAY_DESCRIPTION\n");
    ExpectRoundTrip();
}

TEST_F(ExportCommand, WhatCouldNotBeImportedAgainIsLeftOutWithAWarning) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(L"INSERT INTO HOLIDAY_DETAILS VALUES(99999,'x','1.1.2027',NULL)");
        database.Run(L"INSERT INTO HOLIDAYS VALUES(99998,'')");
        database.Run(L"INSERT INTO SETTINGS VALUES(99997,1,0.0078125,1,1)");
        database.Run(L"INSERT INTO SETTINGS VALUES(99996,NULL,1,1,1)");
    }
    const tagEnd end = Run({"export", (Folder() / "out").string()});
    EXPECT_EQ(end.Status, 0);
    ExpectSameFiles(ShippedData, Folder() / "out");
    EXPECT_EQ(
        end.Errors,
        "warning: The calendar with the key 99998 is left out, because its HOLIDAY_NAME is empty: give a name.\n"
        "warning: A date of the calendar with the key 99999 is left out, because there is no such calendar.\n"
        "warning: The setting with the key 99996 is left out, because its PRICE_SCALE is \"\": give a whole "
        "number from 1 to 2147483647.\n"
        "warning: The setting with the key 99997 is left out, because its POINT_VALUE is \"0.0078125\", and the "
        "store would keep 0.007812: give at most six decimals and seven digits in all.\n");
}

TEST_F(ExportCommand, ARowThatTheStoreHasTwiceIsWrittenOnce) {
    CreateFilled();
    {
        CHeldDatabase database(Database());
        database.Run(
            L"INSERT INTO SETTINGS SELECT SETTING+1000,PRICE_SCALE,POINT_VALUE,DAILY_LIMIT,MIN_MOVEMENT FROM "
            L"SETTINGS");
        database.Run(L"INSERT INTO HOLIDAYS SELECT HOLIDAY+1000,HOLIDAY_NAME FROM HOLIDAYS");
        database.Run(L"INSERT INTO HOLIDAY_DETAILS SELECT * FROM HOLIDAY_DETAILS");
    }
    EXPECT_EQ(Run({"export", (Folder() / "out").string()}).Status, 0);
    ExpectSameFiles(ShippedData, Folder() / "out");
}

TEST_F(ExportCommand, AFolderThatCannotBeMadeIsStatus2) {
    Create();
    const auto file = Write("file", "x");
    const tagEnd end = Run({"export", (file / "out").string()});
    EXPECT_EQ(end.Status, 2);
    EXPECT_THAT(end.Errors, testing::StartsWith("error: The program cannot create directory \"" + file.string()));
}

} // namespace

} // namespace sqCliTest
