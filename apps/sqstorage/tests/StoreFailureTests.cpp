#include "apps/sqstorage/store/StoreFailure.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using sqCli::FailureSentence;
using sqCli::OpenFailureSentence;
using sqCli::PlainSentence;

TEST(StoreFailure, FunctionEngineWordsAndStatusAreLeftOut) {
    EXPECT_EQ(
        FailureSentence(L"sqStorage::CStorage::OpenDatabase: The database file \"/a: b\" does not exist: create "
                        L"it. [Firebird: no such file; code 335544344, SQLSTATE 08001] (0x80004005)"),
        "The database file \"/a: b\" does not exist: create it.");
}

TEST(StoreFailure, AnExceptionIsItsWords) {
    EXPECT_EQ(
        FailureSentence(L"sqStorage::CStorage::init_impl:  (stdexcept: \"0x80004005: the database is old: bring "
                        L"it up to date with \"sqstorage upgrade\"\")"),
        "The database is old: bring it up to date with \"sqstorage upgrade\".");
    EXPECT_EQ(FailureSentence(L"F: (stdexcept: \"registry file (x) is bad\")"), "Registry file (x) is bad.");
}

TEST(StoreFailure, TheNameOfTheDatabaseCallIsLeftOut) {
    EXPECT_EQ(FailureSentence(L"F: (stdexcept: \"0x80004005: Open: A text is longer than its column takes: shorten "
                              L"it. [Firebird: x; code 1, SQLSTATE 22001]\")"),
              "A text is longer than its column takes: shorten it.");
}

TEST(StoreFailure, AStatusAloneIsNamed) {
    EXPECT_EQ(FailureSentence(L"F: (stdexcept: \"0x8007000E\")"),
              "The store failed with status 0x8007000E: look into its log.");
}

TEST(StoreFailure, AReasonKeepsItsColons) {
    EXPECT_EQ(PlainSentence(L"The file is missing: make it. [Firebird: x]"), "The file is missing: make it.");
}

TEST(StoreFailure, NoWordsAreASentenceToo) {
    EXPECT_EQ(PlainSentence(L""), "The store failed without saying why: look into its log.");
}

TEST(StoreFailure, TheFirstFailureIsTheCause) {
    const std::vector<std::wstring> failures{L"F: the cause", L"G: what follows"};
    EXPECT_EQ(OpenFailureSentence(failures, L"/r/machine.toml"), "The cause.");
}

TEST(StoreFailure, MissingEntriesAreNamed) {
    const auto sentenceOf = [](const wchar_t* condition) {
        return OpenFailureSentence(std::vector<std::wstring>{std::wstring(L"F: ") + condition}, L"/r/machine.toml");
    };
    EXPECT_EQ(sentenceOf(L"!_DatabasePath.empty()"),
              "/r/machine.toml names no database for this program: make one with \"sqstorage create\", or say with "
              "--registry where the entries are.");
    EXPECT_EQ(sentenceOf(L"!_UserName.empty()"), "The entry \"Username\" of the database connection is missing or "
                                                 "empty: add it to /r/machine.toml.");
    EXPECT_EQ(sentenceOf(L"!_Password.empty()"), "The entry \"Password\" of the database connection is missing or "
                                                 "empty: add it to /r/machine.toml.");
}

TEST(StoreFailure, AComponentThatIsNotThereIsSaidToBeSo) {
    EXPECT_EQ(OpenFailureSentence({}, L"/r"),
              "The storage component could not be loaded: install the program anew, or "
              "name the folder of its libraries in SQSTORAGE_MODULE_PATH.");
}

} // namespace
