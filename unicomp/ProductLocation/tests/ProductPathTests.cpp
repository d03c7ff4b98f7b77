#include "unicomp/ProductLocation/interface/ProductPath.h"

#include "platform/environment.h"
#include "platform/file.h"

#include <gtest/gtest.h>

namespace {

using platform::CBstr;

// Sends every known folder into a directory that goes with the test.
class ProductPath : public testing::Test {
protected:
    ProductPath() {
        for (const wchar_t* name : {L"XDG_DATA_HOME", L"XDG_CONFIG_HOME", L"XDG_DOCUMENTS_DIR", L"HOME"})
            platform::SetEnvironment(name, m_Directory.Name());
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
    EXPECT_EQ(root + L"/Company/Product", Path(ProductLocationDocuments));
    EXPECT_EQ(root + L"/Company/Product", Path(ProductLocationLocalAppData));
    EXPECT_EQ(root + L"/Company/Product", Path(ProductLocationAppData));
    EXPECT_EQ(root + L"/Company/Product", Path(ProductLocationCommonAppData));
    EXPECT_TRUE(NothingWasCreated());
}

TEST_F(ProductPath, CommonProgramFilesTakesTheMakerAsFixedText) {
    EXPECT_TRUE(Path(ProductLocationCommonProgramFiles).ends_with(L"/DM Support/Product/Shared"));
}

TEST_F(ProductPath, ADirectoryIsCreatedWhenAskedAndMayExist) {
    const std::wstring path = Path(ProductLocationCommonAppData, 1);
    EXPECT_TRUE(platform::IsDirectory(platform::ToPath(path)));
    EXPECT_EQ(path, Path(ProductLocationCommonAppData, 1));
}

TEST_F(ProductPath, ADirectoryThatCannotBeCreatedAnswersOneWithThePathGiven) {
    platform::WriteFileAtomically(m_Directory.Path() / "Company", "a file stands in the way");
    CBstr path;
    EXPECT_EQ(1, GetProductPath(path.Put(), L"Company", L"Product", ProductLocationAppData, 1));
    EXPECT_EQ(m_Directory.Name() + L"/Company/Product", path.View());
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
