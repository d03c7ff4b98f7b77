#include "platform/registry.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto User = ERegistryRoot::User;

class Registry : public testing::Test {
protected:
    CTemporaryDirectory m_Directory;
    CScopedEnvironment m_Place{L"SQSTORAGE_REGISTRY_DIR", m_Directory.Name()};
};

TEST_F(Registry, IsEmptyAndUntouchedWithoutAFile) {
    EXPECT_FALSE(CRegistryKey::Open(User, L"SOFTWARE").has_value());
    const auto root = CRegistryKey::Open(User, L"");
    ASSERT_TRUE(root.has_value());
    EXPECT_THAT(root->SubKeys(), IsEmpty());
    EXPECT_FALSE(CRegistryKey::DeleteTree(User, L"SOFTWARE"));
    EXPECT_FALSE(root->DeleteValue(L"x"));
    EXPECT_THAT(ListDirectory(m_Directory.Path()), IsEmpty());
}

TEST_F(Registry, KeepsTextsAndNumbers) {
    const auto key = CRegistryKey::Create(User, L"SOFTWARE\\Company\\Product");
    key.WriteText(L"Path", L"C:\\x\\\u0416 'q' \"d\"");
    key.WriteNumber(L"Least", std::numeric_limits<LONG>::min());
    key.WriteNumber(L"Most", std::numeric_limits<LONG>::max());
    const auto again = CRegistryKey::Open(User, L"SOFTWARE\\Company\\Product");
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(again->ReadText(L"Path"), L"C:\\x\\\u0416 'q' \"d\"");
    EXPECT_EQ(again->ReadNumber(L"Least"), std::numeric_limits<LONG>::min());
    EXPECT_EQ(again->ReadNumber(L"Most"), std::numeric_limits<LONG>::max());
    EXPECT_EQ(again->ReadText(L"Absent"), std::nullopt);
    EXPECT_EQ(again->ReadNumber(L"Absent"), std::nullopt);
    EXPECT_EQ(again->Read(L"Absent"), std::nullopt);
}

TEST_F(Registry, TellsTheKindOfAValue) {
    const auto key = CRegistryKey::Create(User, L"k");
    key.WriteNumber(L"v", -7);
    EXPECT_EQ(key.Read(L"v"), RegistryValue(LONG{-7}));
    EXPECT_EQ(key.ReadText(L"v"), L"-7");
    key.WriteText(L"v", L"-7");
    EXPECT_EQ(key.Read(L"v"), RegistryValue(std::wstring(L"-7")));
    EXPECT_EQ(key.ReadNumber(L"v"), std::nullopt);
}

TEST_F(Registry, ComparesNamesWithoutCaseAndKeepsTheFirstSpelling) {
    CRegistryKey::Create(User, L"Software\\\u0416").WriteText(L"Path\u00DC", L"1");
    const auto key = CRegistryKey::Open(User, L"SOFTWARE\\\u0436");
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(key->ReadText(L"PATH\u00FC"), L"1");
    key->WriteText(L"pAtH\u00FC", L"2");
    EXPECT_THAT(key->Values(), ElementsAre(L"Path\u00DC"));
    EXPECT_THAT(CRegistryKey::Open(User, L"software")->SubKeys(), ElementsAre(L"\u0416"));
    EXPECT_TRUE(CRegistryKey::DeleteTree(User, L"SOFTWARE"));
}

TEST_F(Registry, HasADefaultValuePerKey) {
    const auto key = CRegistryKey::Create(User, L"CLSID\\{1}\\InprocServer32");
    EXPECT_EQ(key.ReadText(L""), std::nullopt);
    key.WriteText(L"", L"/lib/x.so");
    EXPECT_EQ(key.ReadText(L""), L"/lib/x.so");
    EXPECT_EQ(key.ReadText(L"@"), L"/lib/x.so");
    EXPECT_THAT(key.Values(), ElementsAre(L""));
    EXPECT_TRUE(key.DeleteValue(L""));
    EXPECT_EQ(key.ReadText(L""), std::nullopt);
}

TEST_F(Registry, TakesSeparatorsOfAnyNumber) {
    CRegistryKey::Create(User, L"\\a\\\\b\\").WriteNumber(L"n", 1);
    const auto key = CRegistryKey::Open(User, L"a\\b");
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(key->Path(), L"a\\b");
    EXPECT_EQ(key->Root(), User);
    EXPECT_THAT(CRegistryKey::Open(User, L"\\")->SubKeys(), ElementsAre(L"a"));
}

TEST_F(Registry, ListsOnlyTheKeysRightBelow) {
    for (const wchar_t* path : {L"a", L"a\\b\\c", L"a\\B2", L"a\\b!", L"ab", L"a!\\x", L"a\\b"})
        static_cast<void>(CRegistryKey::Create(User, path));
    EXPECT_THAT(CRegistryKey::Open(User, L"a")->SubKeys(), ElementsAre(L"b", L"b!", L"B2"));
    EXPECT_THAT(CRegistryKey::Open(User, L"a\\b")->SubKeys(), ElementsAre(L"c"));
    EXPECT_THAT(CRegistryKey::Open(User, L"")->SubKeys(), ElementsAre(L"a", L"a!", L"ab"));
}

TEST_F(Registry, DeletesAKeyWithAllBelowAndNothingBeside) {
    for (const wchar_t* path : {L"a\\b\\c", L"a\\b\\c\\d", L"a\\b!", L"ab"})
        CRegistryKey::Create(User, path).WriteNumber(L"n", 1);
    EXPECT_TRUE(CRegistryKey::DeleteTree(User, L"A\\B"));
    EXPECT_FALSE(CRegistryKey::DeleteTree(User, L"a\\b"));
    EXPECT_FALSE(CRegistryKey::Open(User, L"a\\b\\c").has_value());
    EXPECT_TRUE(CRegistryKey::Open(User, L"a\\b!").has_value());
    EXPECT_TRUE(CRegistryKey::Open(User, L"ab").has_value());
    EXPECT_TRUE(CRegistryKey::Open(User, L"a").has_value());
    EXPECT_THROW(static_cast<void>(CRegistryKey::DeleteTree(User, L"\\")), std::invalid_argument);
}

TEST_F(Registry, SeesADeletedKeyAsEmptyAndCreatesItAgain) {
    const auto key = CRegistryKey::Create(User, L"k");
    key.WriteNumber(L"n", 1);
    ASSERT_TRUE(CRegistryKey::DeleteTree(User, L"k"));
    EXPECT_EQ(key.ReadNumber(L"n"), std::nullopt);
    EXPECT_THAT(key.Values(), IsEmpty());
    EXPECT_FALSE(key.DeleteValue(L"n"));
    key.WriteNumber(L"n", 2);
    EXPECT_EQ(CRegistryKey::Open(User, L"k")->ReadNumber(L"n"), 2);
}

TEST_F(Registry, KeepsItsRootsApart) {
    CRegistryKey::Create(ERegistryRoot::Machine, L"k").WriteText(L"v", L"machine");
    CRegistryKey::Create(ERegistryRoot::User, L"k").WriteText(L"v", L"user");
    CRegistryKey::Create(ERegistryRoot::Classes, L"k").WriteText(L"v", L"classes");
    EXPECT_EQ(CRegistryKey::Open(ERegistryRoot::Machine, L"k")->ReadText(L"v"), L"machine");
    EXPECT_EQ(CRegistryKey::Open(ERegistryRoot::User, L"k")->ReadText(L"v"), L"user");
    EXPECT_EQ(CRegistryKey::Open(ERegistryRoot::Classes, L"k")->ReadText(L"v"), L"classes");
    for (const char* name : {"machine.toml", "user.toml", "classes.toml"})
        EXPECT_TRUE(Exists(m_Directory.Path() / name)) << name;
}

TEST_F(Registry, KeepsTextsOfEveryShape) {
    using namespace std::literals;
    const std::vector<std::wstring> shapes{L""s,
                                           L"'"s,
                                           L"''"s,
                                           L"'''"s,
                                           L"\""s,
                                           L"\"\"\""s,
                                           L"\\"s,
                                           L"\\\\"s,
                                           L"a'b\\c"s,
                                           L"\n"s,
                                           L"a\r\nb"s,
                                           L"\t"s,
                                           L"\0"s,
                                           L"a\0b"s,
                                           L"\x7F"s,
                                           L"\x1B[0m"s,
                                           L"\u0085\u2028"s,
                                           L"#[x]=1"s,
                                           L" lead and trail "s,
                                           L"{}"s,
                                           L"true"s,
                                           L"\uFEFF"s,
                                           L"\U0010FFFF\U0001F600"s,
                                           L"a.b.c"s,
                                           std::wstring(10'000, L'x')};
    const auto key = CRegistryKey::Create(User, L"k");
    for (const std::wstring& shape : shapes) {
        key.WriteText(L"v", shape);
        ASSERT_EQ(key.ReadText(L"v"), shape) << ToUtf8(shape);
        if (shape.empty())
            continue;
        key.WriteText(L"name" + shape, shape);
        ASSERT_EQ(key.ReadText(L"name" + shape), shape) << ToUtf8(shape);
        if (shape.find(L'\\') == shape.npos)
            CRegistryKey::Create(User, L"key" + shape + L"\\x").WriteText(shape, shape);
    }
    for (const std::wstring& shape : shapes) {
        if (shape.empty() || shape.find(L'\\') != shape.npos)
            continue;
        ASSERT_EQ(CRegistryKey::Open(User, L"key" + shape + L"\\x").value().ReadText(shape), shape);
    }
}

TEST_F(Registry, RefusesTextThatCannotBeStored) {
    const std::wstring bad{L'a', static_cast<wchar_t>(0xD800)};
    const auto key = CRegistryKey::Create(User, L"k");
    EXPECT_THROW(key.WriteText(L"v", bad), CTextError);
    EXPECT_THROW(key.WriteText(bad, L"v"), CTextError);
    EXPECT_THROW(key.WriteNumber(bad, 1), CTextError);
    EXPECT_THROW(static_cast<void>(CRegistryKey::Create(User, bad)), CTextError);
    EXPECT_THROW(static_cast<void>(key.ReadText(bad)), CTextError);
    EXPECT_THAT(key.Values(), IsEmpty());
}

TEST_F(Registry, BatchWritesOnceAndIsSeenByItsThreadBefore) {
    const auto key = CRegistryKey::Create(User, L"k");
    const auto before = GetFileStamp(m_Directory.Path() / "user.toml");
    {
        CRegistryBatch batch(User);
        for (LONG i = 0; i < 100; ++i)
            key.WriteNumber(std::to_wstring(i), i);
        EXPECT_EQ(key.ReadNumber(L"99"), 99);
        EXPECT_EQ(GetFileStamp(m_Directory.Path() / "user.toml"), before);
        batch.Commit();
    }
    EXPECT_NE(GetFileStamp(m_Directory.Path() / "user.toml"), before);
    EXPECT_EQ(key.Values().size(), 100U);
}

TEST_F(Registry, BatchWithoutCommitLeavesNothing) {
    const auto key = CRegistryKey::Create(User, L"k");
    {
        const CRegistryBatch batch(User);
        key.WriteNumber(L"n", 1);
    }
    EXPECT_EQ(key.ReadNumber(L"n"), std::nullopt);
    key.WriteNumber(L"n", 2);
    EXPECT_EQ(key.ReadNumber(L"n"), 2);
}

TEST_F(Registry, BatchWithinABatchJoinsIt) {
    const auto key = CRegistryKey::Create(User, L"k");
    CRegistryBatch outer(User);
    {
        CRegistryBatch inner(User);
        key.WriteNumber(L"n", 1);
        inner.Commit();
    }
    EXPECT_EQ(key.ReadNumber(L"n"), 1);
    EXPECT_EQ(ReadFile(m_Directory.Path() / "user.toml").find("n = 1"), std::string::npos);
    outer.Commit();
    EXPECT_NE(ReadFile(m_Directory.Path() / "user.toml").find("n = 1"), std::string::npos);
}

TEST_F(Registry, LiesInTheUsersSettingsUnlessToldOtherwise) {
    EXPECT_EQ(RegistryDirectory(), m_Directory.Name());
    const CScopedEnvironment none(L"SQSTORAGE_REGISTRY_DIR", L"");
    const CScopedEnvironment settings(L"XDG_CONFIG_HOME", L"/settings");
    EXPECT_EQ(RegistryDirectory(), L"/settings/sqstorage/registry");
    const CScopedEnvironment noSettings(L"XDG_CONFIG_HOME", std::nullopt);
    const CScopedEnvironment home(L"HOME", L"/home/of/mine");
    EXPECT_EQ(RegistryDirectory(), L"/home/of/mine/.config/sqstorage/registry");
}

} // namespace
} // namespace platform
