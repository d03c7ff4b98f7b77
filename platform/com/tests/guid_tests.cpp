#include "platform/com/guid.h"
#include "platform/com/unknown.h"

#include <cstring>
#include <gtest/gtest.h>

namespace platform {

constexpr GUID Sample = MakeGuid("0cc15727-c930-484b-b934-3ff8a817bc39");

TEST(Guid, BytesStandAsTheAbiHasThem) {
    constexpr unsigned char bytes[16] = {0x27, 0x57, 0xc1, 0x0c, 0x30, 0xc9, 0x4b, 0x48,
                                         0xb9, 0x34, 0x3f, 0xf8, 0xa8, 0x17, 0xbc, 0x39};
    EXPECT_EQ(std::memcmp(&Sample, bytes, sizeof(bytes)), 0);
}

TEST(Guid, TextIsUpperCaseInBraces) {
    EXPECT_EQ(ToText(Sample), L"{0CC15727-C930-484B-B934-3FF8A817BC39}");
    EXPECT_EQ(ToText(NullGuid), L"{00000000-0000-0000-0000-000000000000}");
}

TEST(Guid, ReadsEitherCaseWithOrWithoutBraces) {
    EXPECT_EQ(ParseGuid(ToText(Sample)), Sample);
    EXPECT_EQ(ParseGuid(L"0cc15727-C930-484b-B934-3ff8a817bc39"), Sample);
    EXPECT_EQ(ParseGuid(L"{0cc15727-c930-484b-b934-3ff8a817bc39}"), Sample);
}

TEST(Guid, RefusesAnythingElse) {
    for (const wchar_t* text :
         {L"", L"{}", L"0cc15727c930484bb9343ff8a817bc39", L"0cc15727-c930-484b-b934-3ff8a817bc3",
          L"0cc15727-c930-484b-b934-3ff8a817bc390", L"{0cc15727-c930-484b-b934-3ff8a817bc39",
          L"0cc15727-c930-484b-b934-3ff8a817bc39}", L"(0cc15727-c930-484b-b934-3ff8a817bc39)",
          L"0cc15727-c930-484b-b934-3ff8a817bc3g", L"0cc15727_c930-484b-b934-3ff8a817bc39",
          L" 0cc15727-c930-484b-b934-3ff8a817bc3", L"0cc15727-c930-484b-b934-3ff8a817bc3\x0663"})
        EXPECT_EQ(ParseGuid(text), std::nullopt) << testing::PrintToString(std::wstring(text));
    EXPECT_EQ(ParseGuid(std::wstring_view(L"0cc15727-c930-484b-b934-3ff8a817bc3\0", 36)), std::nullopt);
}

TEST(Guid, KnownInterfaces) {
    EXPECT_EQ(ToText(UuidOf<IUnknown>), L"{00000000-0000-0000-C000-000000000046}");
    EXPECT_EQ(ToText(UuidOf<IClassFactory>), L"{00000001-0000-0000-C000-000000000046}");
}

} // namespace platform
