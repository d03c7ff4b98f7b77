// The registry entries that lead a host to its storage.
#include "SetupPlace.h"

#include "platform/com/com_error.h"
#include "platform/registry.h"

namespace {

using namespace tests;

class Connections : public testing::Test {
protected:
    static std::optional<std::wstring> Value(const wchar_t* name) {
        const auto key = platform::CRegistryKey::Open(platform::ERegistryRoot::Machine, Key);
        return key ? key->ReadText(name) : std::nullopt;
    }

    static constexpr const wchar_t* Key = L"SOFTWARE\\Company\\Product\\Databases\\Portfolio";
    CSetupPlace m_Place;
};

TEST_F(Connections, StandBelowTheProductsKey) {
    EXPECT_EQ(Key, sqSetup::ConnectionKey(L"Company", L"Product"));
    EXPECT_FALSE(platform::CRegistryKey::Open(platform::ERegistryRoot::Machine, Key)) << "asking writes nothing";
}

TEST_F(Connections, NeedACompanyAndAProduct) {
    for (const auto& [company, product] : {std::pair(L"", L"Product"), std::pair(L"Company", L"")})
        try {
            sqSetup::ConnectionKey(company, product);
            ADD_FAILURE() << "nothing was raised";
        } catch (const platform::CComError& error) {
            EXPECT_EQ(E_INVALIDARG, error.Code());
            EXPECT_EQ(L"company and product must not be empty", error.Text());
        }
}

TEST_F(Connections, AreWrittenWhole) {
    sqSetup::RegisterConnection(Key, {L"the path", L"the user", L"the password", L"the dictionary"});
    EXPECT_EQ(L"the path", Value(L"Path"));
    EXPECT_EQ(L"the user", Value(L"Username"));
    EXPECT_EQ(L"the password", Value(L"Password"));
    EXPECT_EQ(L"the dictionary", Value(L"DictionaryPath"));
}

TEST_F(Connections, WithoutADictionaryPathLoseTheOneThatWasThere) {
    sqSetup::RegisterConnection(Key, {L"old", L"old", L"old", L"old"});
    sqSetup::RegisterConnection(Key, {L"the path", L"the user", L"the password", L""});
    EXPECT_EQ(L"the path", Value(L"Path"));
    EXPECT_EQ(L"the user", Value(L"Username"));
    EXPECT_EQ(L"the password", Value(L"Password"));
    EXPECT_EQ(std::nullopt, Value(L"DictionaryPath"));
}

TEST_F(Connections, AreThereOnceAPathIs) {
    EXPECT_FALSE(sqSetup::IsRegistered(Key));
    platform::CRegistryKey::Create(platform::ERegistryRoot::Machine, Key).WriteText(L"Username", L"the user");
    EXPECT_FALSE(sqSetup::IsRegistered(Key));
    sqSetup::RegisterConnection(Key, {L"", L"the user", L"the password", L""});
    EXPECT_FALSE(sqSetup::IsRegistered(Key));
    sqSetup::RegisterConnection(Key, {L"the path", L"the user", L"the password", L""});
    EXPECT_TRUE(sqSetup::IsRegistered(Key));
    EXPECT_FALSE(sqSetup::IsRegistered(L"SOFTWARE\\Company\\Other\\Databases\\Portfolio"));
}

} // namespace
