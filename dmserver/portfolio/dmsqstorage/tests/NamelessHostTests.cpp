// A host whose executable says neither its company nor its product. This program embeds no version block.
#include "DataBaseParams.h"
#include "StorageHost.h"
#include "diagnostics/interface/Trail.h"
#include "platform/com/com_error.h"
#include "platform/environment.h"
#include "qxStorageBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace tests;
using testing::Contains;
using testing::HasSubstr;

constexpr const wchar_t* Advice =
    L"the host executable does not say its company and product: embed them with add_version_info()";

class NamelessHost : public testing::Test {
protected:
    const platform::CScopedEnvironment m_VersionFile{L"SQSTORAGE_VERSION_INFO", std::nullopt};
    CStorageHost m_Host;
};

TEST_F(NamelessHost, FindsNoParameters) {
    sqStorage::CDataBaseParams parameters;
    try {
        parameters.MakeDatabaseParams();
        FAIL() << "nothing was raised";
    } catch (const platform::CComError& error) {
        EXPECT_EQ(1812, error.Code());
        EXPECT_EQ(Advice, error.Text());
    }
    EXPECT_FALSE(parameters.IsValid());
}

TEST_F(NamelessHost, CannotCreateTheStorageAndIsToldWhy) {
    CComPtr<IqxStorage> storage;
    EXPECT_EQ(E_FAIL, CqxStorageBase::Create(nullptr, platform::UuidOf<IqxStorage>, storage.PutVoid()));
    EXPECT_FALSE(storage);
    EXPECT_THAT(BugSlayerUtil::RecentFailures(), Contains(HasSubstr(Advice)));
}

} // namespace
