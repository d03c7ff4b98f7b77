#include "platform/locale.h"

#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

// The C library's newlocale() loses a few bytes for each call while LOCPATH is set.
extern "C" const char* __lsan_default_suppressions() { return "leak:__argz_add_sep"; }

namespace {

using namespace platform;

std::wstring Text(ELocaleText text) {
    std::array<wchar_t, 64> buffer;
    const std::size_t length = GetLocaleText(text, buffer.data(), buffer.size());
    EXPECT_EQ(L'\0', buffer[length]);
    return std::wstring(buffer.data(), length);
}
std::wstring Date(const SYSTEMTIME& date) {
    std::array<wchar_t, 64> buffer;
    const std::size_t length = GetShortDate(date, buffer.data(), buffer.size());
    EXPECT_EQ(L'\0', buffer[length]);
    return std::wstring(buffer.data(), length);
}

class Locale : public testing::Test {
protected:
    CScopedEnvironment m_Locale{L"LC_ALL", L"C"};
};

TEST_F(Locale, BlocksOfNamesStandOneBehindTheOther) {
    const std::array names{L"Monday",  L"Tuesday",   L"Wednesday", L"Thursday", L"Friday",   L"Saturday", L"Sunday",
                           L"Mon",     L"Tue",       L"Wed",       L"Thu",      L"Fri",      L"Sat",      L"Sun",
                           L"January", L"February",  L"March",     L"April",    L"May",      L"June",     L"July",
                           L"August",  L"September", L"October",   L"November", L"December", L"Jan",      L"Feb",
                           L"Mar",     L"Apr",       L"May",       L"Jun",      L"Jul",      L"Aug",      L"Sep",
                           L"Oct",     L"Nov",       L"Dec"};
    for (std::size_t i = 0; i < names.size(); ++i)
        EXPECT_EQ(names[i], Text(ELocaleText::DayName1 + static_cast<LONG>(i))) << i;
}

TEST_F(Locale, OutsideTheBlocksThereIsNoText) {
    EXPECT_EQ(L"", Text(ELocaleText::DayName1 + -1));
    EXPECT_EQ(L"", Text(ELocaleText::End));
}

TEST_F(Locale, TextIsCutToTheBufferAndTerminated) {
    wchar_t buffer[4] = {L'#', L'#', L'#', L'#'};
    EXPECT_EQ(2u, GetLocaleText(ELocaleText::DayName1, buffer, 3));
    EXPECT_STREQ(L"Mo", buffer);
    EXPECT_EQ(L'#', buffer[3]);
    EXPECT_EQ(0u, GetLocaleText(ELocaleText::DayName1, buffer, 1));
    EXPECT_EQ(L'\0', buffer[0]);
    EXPECT_EQ(0u, GetLocaleText(ELocaleText::DayName1, nullptr, 0));
    EXPECT_EQ(0u, GetLocaleText(ELocaleText::End, nullptr, 0));
    EXPECT_EQ(0u, GetShortDate({}, nullptr, 0));
}

TEST_F(Locale, ShortDate) { EXPECT_EQ(L"12/31/78", Date({2078, 12, 6, 31, 0, 0, 0, 0})); }

TEST_F(Locale, OneThatIsNotInstalledSpeaksEnglish) {
    const CScopedEnvironment environment(L"LC_ALL", L"xx_XX.UTF-8");
    EXPECT_EQ(L"Monday", Text(ELocaleText::DayName1));
}

// Compiles a locale of its own, since the machine need not have any.
TEST_F(Locale, NamesAndDateAreThoseOfTheEnvironmentsLocale) {
    const CTemporaryDirectory directory;
    const std::string compile =
        "localedef -i de_DE -f UTF-8 '" + (directory.Path() / "de_DE.UTF-8").string() + "' > /dev/null 2>&1";
    if (std::system(compile.c_str()) != 0)
        GTEST_SKIP() << "the package \"locales\" is not installed";
    const CScopedEnvironment path(L"LOCPATH", directory.Name());
    const CScopedEnvironment environment(L"LC_ALL", L"de_DE.UTF-8");
    EXPECT_EQ(L"Samstag", Text(ELocaleText::DayName1 + 5));
    EXPECT_EQ(L"M\u00E4rz", Text(ELocaleText::MonthName1 + 2));
    EXPECT_EQ(L"31.12.2078", Date({2078, 12, 6, 31, 0, 0, 0, 0}));
}

} // namespace
