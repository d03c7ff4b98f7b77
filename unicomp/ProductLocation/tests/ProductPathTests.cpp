#include "unicomp/ProductLocation/interface/ProductPath.h"

#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>
#include <utility>

namespace {

using platform::CBstr;

// Sends every known folder into a directory of its own, all in one that goes with the test.
class ProductPath : public testing::Test {
protected:
    ProductPath() {
        for (const auto& [variable, folder] :
             {std::pair(L"XDG_DATA_HOME", L"/data"), std::pair(L"XDG_CONFIG_HOME", L"/config"),
              std::pair(L"XDG_DOCUMENTS_DIR", L"/documents"), std::pair(L"HOME", L"/home")})
            platform::SetEnvironment(variable, m_Directory.Name() + folder);
    }
    std::wstring Path(ULONG location, int create = 0) {
        CBstr path;
        EXPECT_EQ(0, GetProductPath(path.Put(), L"Company", L"Product", location, create));
        return std::wstring(path.View());
    }
    bool NothingWasCreated() const { return platform::ListDirectory(m_Directory.Path()).empty(); }

    platform::CTemporaryDirectory m_Directory;
};

TEST_F(ProductPath, RegistryLocationIsAKeyAndCreatesNoDirectory) {
    EXPECT_EQ(L"SOFTWARE\\Company\\Product", Path(ProductLocationRegistry, 1));
    EXPECT_TRUE(NothingWasCreated());
}

TEST_F(ProductPath, NameLocationIsTheProductAloneAndTouchesNoFile) {
    EXPECT_EQ(L"Product", Path(ProductLocationName, 1));
    EXPECT_TRUE(NothingWasCreated());
}

TEST_F(ProductPath, FolderLocationsStandBelowTheirFolder) {
    const std::wstring root = m_Directory.Name();
    EXPECT_EQ(root + L"/documents/Company/Product", Path(ProductLocationDocuments));
    EXPECT_EQ(root + L"/data/Company/Product", Path(ProductLocationLocalAppData));
    EXPECT_EQ(root + L"/config/Company/Product", Path(ProductLocationAppData));
    EXPECT_EQ(root + L"/data/Company/Product", Path(ProductLocationCommonAppData));
    EXPECT_TRUE(NothingWasCreated());
}

TEST_F(ProductPath, CommonProgramFilesTakesTheMakerAsFixedText) {
    EXPECT_EQ(m_Directory.Name() + L"/home/.local/lib/DM Support/Product/Shared",
              Path(ProductLocationCommonProgramFiles));
    EXPECT_TRUE(NothingWasCreated());
}

TEST_F(ProductPath, EveryFolderLocationIsCreatedWhenAsked) {
    for (const ULONG location : {ProductLocationDocuments, ProductLocationLocalAppData, ProductLocationAppData,
                                 ProductLocationCommonProgramFiles, ProductLocationCommonAppData})
        EXPECT_TRUE(platform::IsDirectory(platform::ToPath(Path(location, 1)))) << location;
}

TEST_F(ProductPath, AFolderThatEndsWithASeparatorGetsNoSecondOne) {
    platform::SetEnvironment(L"XDG_CONFIG_HOME", L"/");
    EXPECT_EQ(L"/Company/Product", Path(ProductLocationAppData));
}

TEST_F(ProductPath, WithoutAFolderNoPathIsGiven) {
    for (const wchar_t* name : {L"XDG_DATA_HOME", L"XDG_CONFIG_HOME", L"XDG_DOCUMENTS_DIR", L"HOME"})
        platform::SetEnvironment(name, std::nullopt);
    CBstr path;
    for (const ULONG location : {ProductLocationDocuments, ProductLocationLocalAppData, ProductLocationAppData,
                                 ProductLocationCommonProgramFiles, ProductLocationCommonAppData}) {
        EXPECT_EQ(E_FAIL, GetProductPath(path.Put(), L"Company", L"Product", location, 1)) << location;
        EXPECT_TRUE(path.IsNull());
    }
    EXPECT_EQ(L"Product", Path(ProductLocationName)) << "which needs none";
}

TEST_F(ProductPath, ADirectoryIsCreatedWhenAskedAndMayExist) {
    const std::wstring path = Path(ProductLocationCommonAppData, 1);
    EXPECT_TRUE(platform::IsDirectory(platform::ToPath(path)));
    EXPECT_EQ(path, Path(ProductLocationCommonAppData, 1));
}

TEST_F(ProductPath, ADirectoryThatCannotBeCreatedAnswersOneWithThePathGiven) {
    platform::WriteFileAtomically(m_Directory.Path() / "config", "a file stands in the way");
    CBstr path;
    EXPECT_EQ(1, GetProductPath(path.Put(), L"Company", L"Product", ProductLocationAppData, 1));
    EXPECT_EQ(m_Directory.Name() + L"/config/Company/Product", path.View());
}

TEST_F(ProductPath, NullResultIsRefused) {
    EXPECT_EQ(E_POINTER, GetProductPath(nullptr, L"Company", L"Product", 0, 0));
}

TEST_F(ProductPath, AResultThatHoldsAStringIsRefusedAndLeft) {
    CBstr path(L"mine");
    BSTR text = path.Get();
    EXPECT_EQ(E_INVALIDARG, GetProductPath(&text, L"Company", L"Product", 0, 0));
    EXPECT_EQ(path.Get(), text);
    EXPECT_EQ(L"mine", path.View());
}

TEST_F(ProductPath, AnEmptyCompanyOrProductGives1812) {
    CBstr path;
    EXPECT_EQ(1812, GetProductPath(path.Put(), L"", L"Product", 0, 0));
    EXPECT_EQ(1812, GetProductPath(path.Put(), L"Company", L"", 6, 1));
    EXPECT_TRUE(path.IsNull());
    EXPECT_TRUE(NothingWasCreated());
}

TEST_F(ProductPath, AnUnknownLocationIsRefused) {
    CBstr path;
    EXPECT_EQ(E_INVALIDARG, GetProductPath(path.Put(), L"Company", L"Product", 7, 0));
    EXPECT_TRUE(path.IsNull());
}

} // namespace
