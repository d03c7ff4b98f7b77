// The start from the inside: the parameters of the connection, what is read once, and starts that come after a
// failed one. Each test runs in a process of its own: the parameters are read once in a process.
#include "DataBaseParams.h"
#include "PrivateMember.h"
#include "StorageHost.h"
#include "diagnostics/interface/Trail.h"
#include "diagnostics/tests/recorder/Recorder.h"
#include "platform/com/com_error.h"
#include "platform/environment.h"
#include "platform/registry.h"
#include "qxStorageBase.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace tests {

struct Zones {
    using Member = std::map<std::wstring, std::wstring> sqStorage::CStorage::*;
    friend Member MemberOf(Zones);
};
template struct CPrivateMember<Zones, &sqStorage::CStorage::m_ExchangeTimeZones>;

struct SymbolTable {
    using Member = platform::CComPtr<IDM_dmudfcom::IdmTable> sqStorage::CStorage::*;
    friend Member MemberOf(SymbolTable);
};
template struct CPrivateMember<SymbolTable, &sqStorage::CStorage::m_SymbolTable>;

struct DictionaryPath {
    using Member = std::wstring sqStorage::CStorage::*;
    friend Member MemberOf(DictionaryPath);
};
template struct CPrivateMember<DictionaryPath, &sqStorage::CStorage::m_DictionaryPath>;

} // namespace tests

namespace {

using namespace tests;
using sqStorage::CDataBaseParams;
using sqStorage::CStorageHolder;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

class Start : public testing::Test {
protected:
    // How many functions of this name were entered.
    static long Entered(const wchar_t* function) {
        return std::ranges::count_if(Recorder::RecordsOf(L"TRACE"), [&](const auto& record) {
            return record.Ident == 1 && record.Function == function;
        });
    }
    static HRESULT Create() {
        CComPtr<IqxStorage> storage;
        return CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid());
    }

    CStorageHost m_Host;
};

TEST_F(Start, AStorageThatFailedAndStillLivesIsOpenedAnewByTheNextCreation) {
    m_Host.Register(m_Host.Connection());
    const CStorageHolder holder;
    const sqStorage::CStorage* const storage = holder.GetObject();
    EXPECT_EQ(0, storage->DatabaseOpened());
    EXPECT_THAT(Recorder::Asserts(), Not(Contains(L"p == 0")));
    Recorder::Clear();
    EXPECT_EQ(E_FAIL, Create());
    EXPECT_THAT(Recorder::Asserts(), Contains(L"p == 0")) << "the first attempt left its database behind";
    sqSetup::CreateStorage(m_Host.Connection());
    Recorder::Clear();
    EXPECT_EQ(S_OK, Create());
    EXPECT_THAT(Recorder::Asserts(), ElementsAre(L"p == 0"));
    EXPECT_EQ(storage, holder.GetObject());
    EXPECT_GT(storage->DatabaseOpened(), 0);
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
    EXPECT_EQ(S_OK, Create());
    EXPECT_EQ(1, Entered(L"sqStorage::CIdGenerator::CIdGenerator"));
    EXPECT_THAT(Recorder::Messages(), Contains(L"init ok").Times(1));
}

TEST_F(Start, ReadsTheZonesOfAllExchanges) {
    m_Host.Install();
    m_Host.Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,BIAS) VALUES(1,'CME',360)");
    m_Host.Sql(L"INSERT INTO EXCHANGES (EXCHANGE,EXCHANGE_NAME,BIAS) VALUES(2,'LSE',0)");
    const CStorageHolder holder;
    EXPECT_THAT(holder.GetObject()->*MemberOf(Zones{}),
                ElementsAre(Pair(L"CME", L"360,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000"),
                            Pair(L"LSE", L"0,0,0,0,0,00:00:00.0000,0,0,0,0,00:00:00.0000")));
    EXPECT_TRUE(
        m_Host.HasPrepared(L"SELECT EXCHANGE_NAME, EXCHANGE_TIME_ZONE_INFORMATION FROM SELECT_EXCHANGE(0)"));
}

TEST_F(Start, MakesAnEmptyTableForSymbols) {
    m_Host.Install();
    const CStorageHolder holder;
    const auto& table = holder.GetObject()->*MemberOf(SymbolTable{});
    ASSERT_TRUE(table);
    EXPECT_EQ(0, RecordCount(table));
}

TEST_F(Start, KeepsTheDictionaryPathOfTheParameters) {
    m_Host.Install();
    const CStorageHolder holder;
    EXPECT_EQ(m_Host.Connection().DictionaryPath, holder.GetObject()->*MemberOf(DictionaryPath{}));
}

class Parameters : public Start {
protected:
    // The error that ends the reading.
    platform::CComError Failure() {
        try {
            m_Parameters.MakeDatabaseParams();
        } catch (const platform::CComError& error) {
            return error;
        }
        ADD_FAILURE() << "nothing was raised";
        return platform::CComError(S_OK);
    }
    void RegisterWithoutDictionary() {
        auto connection = m_Host.Connection();
        connection.DictionaryPath.clear();
        m_Host.Register(connection);
    }

    CDataBaseParams m_Parameters;
};

TEST_F(Parameters, AreInvalidUntilTheyAreRead) {
    EXPECT_FALSE(m_Parameters.IsValid());
    m_Host.Register({L"host:path", L"the user", L"the password", L"the dictionary"});
    m_Parameters.MakeDatabaseParams();
    EXPECT_TRUE(m_Parameters.IsValid());
    EXPECT_EQ(L"host:path", m_Parameters.DatabasePath());
    EXPECT_EQ(L"the user", m_Parameters.UserName());
    EXPECT_EQ(L"the password", m_Parameters.Password());
    EXPECT_EQ(L"the dictionary", m_Parameters.DictionaryPath());
}

TEST_F(Parameters, TakeADictionaryPathAsItStands) {
    auto connection = m_Host.Connection();
    connection.DictionaryPath = L"/nowhere/../at all\\Dictionary.csv ";
    m_Host.Register(connection);
    m_Parameters.MakeDatabaseParams();
    EXPECT_EQ(connection.DictionaryPath, m_Parameters.DictionaryPath());
    EXPECT_FALSE(platform::Exists(platform::ToPath(m_Host.Path(L"data")))) << "the default folder is not touched";
}

TEST_F(Parameters, PutTheDictionaryIntoTheProductsCommonDataByDefault) {
    RegisterWithoutDictionary();
    m_Parameters.MakeDatabaseParams();
    EXPECT_EQ(m_Host.Path(L"data/Test Company/Storage Tests/Databases/Dictionary.csv"),
              m_Parameters.DictionaryPath());
    EXPECT_TRUE(platform::IsDirectory(platform::ToPath(m_Host.Path(L"data/Test Company/Storage Tests"))));
}

TEST_F(Parameters, AreInvalidWhenTheDefaultFolderOfTheDictionaryCannotBeMade) {
    RegisterWithoutDictionary();
    platform::WriteFileAtomically(platform::ToPath(m_Host.Path(L"data")), "a file stands in the way");
    const platform::CComError error = Failure();
    EXPECT_EQ(1, error.Code());
    EXPECT_EQ(L"the folder \"" + m_Host.Path(L"data/Test Company/Storage Tests") +
                  L"\" cannot be created: name the dictionary's file in the registry value DictionaryPath",
              error.Text());
    EXPECT_FALSE(m_Parameters.IsValid());
    EXPECT_EQ(E_FAIL, Create());
    EXPECT_THAT(BugSlayerUtil::RecentFailures(), Contains(HasSubstr(L"cannot be created")));
}

} // namespace
