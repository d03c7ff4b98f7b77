#include "platform/version_note.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace platform {
namespace {

using namespace std::literals;

std::string Number(std::uint32_t value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string Pad(std::string bytes, std::size_t alignment) {
    bytes.resize((bytes.size() + alignment - 1) / alignment * alignment);
    return bytes;
}

std::string MakeNote(const std::string& name, std::uint32_t type, const std::string& content,
                     std::size_t alignment = 4) {
    const std::string head = Number(static_cast<std::uint32_t>(name.size())) +
                             Number(static_cast<std::uint32_t>(content.size())) + Number(type) + name;
    return Pad(Pad(head, alignment) + content, alignment);
}

const std::string OwnName = "sqStorage\0"s;
const std::string Content = "040904b0\0CompanyName\0Acme \xC3\x9C\0ProductName\0\0"s;

TEST(VersionNote, IsReadWithItsTranslation) {
    const auto block = FindVersionNote(MakeNote(OwnName, 1, Content), 4);
    ASSERT_TRUE(block.has_value());
    EXPECT_EQ(block->Language(), 0x0409);
    EXPECT_EQ(block->CodePage(), 0x04b0);
    EXPECT_EQ(block->Value(L"CompanyName"), L"Acme \u00DC");
    EXPECT_EQ(block->Value(L"ProductName"), L"");
    EXPECT_EQ(block->Value(L"FileVersion"), std::nullopt);
}

TEST(VersionNote, IsFoundBehindTheNotesOfOthers) {
    for (const std::size_t alignment : {4U, 8U}) {
        const std::string segment = MakeNote("GNU\0"s, 1, "other", alignment) +
                                    MakeNote("sqStorage\0"s, 2, "another type", alignment) +
                                    MakeNote("", 1, "", alignment) + MakeNote(OwnName, 1, Content, alignment);
        EXPECT_TRUE(FindVersionNote(segment, alignment).has_value()) << alignment;
    }
}

TEST(VersionNote, IsAbsentFromForeignNotes) {
    EXPECT_FALSE(FindVersionNote("", 4).has_value());
    EXPECT_FALSE(FindVersionNote(MakeNote("sqStorag\0"s, 1, Content), 4).has_value());
    EXPECT_FALSE(FindVersionNote(MakeNote(OwnName, 2, Content), 4).has_value());
}

TEST(VersionNote, ThatIsCutOffAnywhereIsNone) {
    const std::string whole = MakeNote(OwnName, 1, Content);
    const std::size_t used = 12 + Pad(OwnName, 4).size() + Content.size();
    for (std::size_t length = 0; length < used; ++length)
        EXPECT_FALSE(FindVersionNote(whole.substr(0, length), 4).has_value()) << length;
    EXPECT_TRUE(FindVersionNote(whole.substr(0, used), 4).has_value()) << "only the padding is missing";
}

TEST(VersionNote, WithSizesBeyondItsSegmentIsNone) {
    for (const std::uint32_t size : {0x7FFFFFFFU, 0xFFFFFFFFU, 0xFFFFFFF0U}) {
        EXPECT_FALSE(FindVersionNote(Number(size) + Number(4) + Number(1) + OwnName + Content, 4).has_value());
        EXPECT_FALSE(FindVersionNote(Number(10) + Number(size) + Number(1) + OwnName + Content, 4).has_value());
    }
}

TEST(VersionNote, WithMalformedContentIsNone) {
    for (const std::string& content :
         {""s, "040904b0"s, "04090\0"s, "040904bx\0"s, "-40904b0\0"s, "040904b0\0CompanyName\0"s,
          "040904b0\0CompanyName\0open"s, "040904b0\0\0value\0"s, "040904b0\0A\0\xFF\0"s,
          "040904b0\0A\0one\0A\0two\0"s})
        EXPECT_FALSE(FindVersionNote(MakeNote(OwnName, 1, content), 4).has_value()) << content;
}

} // namespace
} // namespace platform
