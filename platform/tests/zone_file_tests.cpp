#include "platform/posix/zone_file.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

using namespace platform;

struct tagChange {
    std::int64_t Moment;
    unsigned char Type;
};
struct tagType {
    std::int32_t East;
    unsigned char NameAt;
};

void AppendBigEndian(std::string& bytes, std::int64_t value, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
}

std::string Block(char version, int timeSize, std::initializer_list<tagChange> changes,
                  std::initializer_list<tagType> types, const std::string& names) {
    std::string bytes("TZif");
    bytes += version;
    bytes.append(15, '\0');
    for (const std::size_t count :
         {std::size_t{0}, std::size_t{0}, std::size_t{1}, changes.size(), types.size(), names.size()})
        AppendBigEndian(bytes, static_cast<std::int64_t>(count), 4);
    for (const tagChange& change : changes)
        AppendBigEndian(bytes, change.Moment, timeSize);
    for (const tagChange& change : changes)
        bytes += static_cast<char>(change.Type);
    for (const tagType& type : types) {
        AppendBigEndian(bytes, type.East, 4);
        bytes += '\0';
        bytes += static_cast<char>(type.NameAt);
    }
    bytes += names;
    bytes.append(static_cast<std::size_t>(timeSize) + 4, '\0'); // the one leap second
    return bytes;
}

const std::string Names("AAA\0BBB\0", 8);
const std::string Narrow = Block('2', 4, {}, {{0, 0}}, Names);

std::string File(const std::string& footer) {
    return Narrow + Block('2', 8, {{0, 1}, {1, 0}, {2, 1}}, {{3600, 0}, {-7200, 4}}, Names) + "\n" + footer + "\n";
}

TEST(ZoneFile, EndsWithTheRuleForTheFuture) {
    const auto rule = ReadZoneFile(File("CET-1CEST,M3.5.0,M10.5.0/3"));
    ASSERT_TRUE(rule);
    EXPECT_EQ("CET", rule->StandardName);
    EXPECT_TRUE(rule->HasDaylight);
    EXPECT_EQ(-3600, rule->StandardOffset);
}

TEST(ZoneFile, WithoutARuleTheOffsetAfterTheLastChangeStays) {
    const auto rule = ReadZoneFile(File(""));
    ASSERT_TRUE(rule);
    EXPECT_EQ("BBB", rule->StandardName);
    EXPECT_EQ(7200, rule->StandardOffset);
    EXPECT_FALSE(rule->HasDaylight);
}

TEST(ZoneFile, OfTheFirstVersionHasNoRule) {
    const auto rule = ReadZoneFile(Block('\0', 4, {{0, 0}}, {{19800, 0}}, Names));
    ASSERT_TRUE(rule);
    EXPECT_EQ(-19800, rule->StandardOffset);
}

TEST(ZoneFile, WithoutAnyChangeHasItsFirstOffset) {
    const auto rule = ReadZoneFile(Block('\0', 4, {}, {{3600, 4}, {0, 0}}, Names));
    ASSERT_TRUE(rule);
    EXPECT_EQ("BBB", rule->StandardName);
    EXPECT_EQ(-3600, rule->StandardOffset);
}

TEST(ZoneFile, CutShortAnywhereIsRefused) {
    const std::string whole = File("UTC0");
    ASSERT_TRUE(ReadZoneFile(whole));
    for (std::size_t size = 0; size < whole.size(); ++size)
        ASSERT_FALSE(ReadZoneFile(whole.substr(0, size))) << size;
}

TEST(ZoneFile, DamagedOnesAreRefused) {
    EXPECT_FALSE(ReadZoneFile("no zone at all, though it is longer than the header of one would be"));
    EXPECT_FALSE(ReadZoneFile(File("nonsense")));
    EXPECT_FALSE(ReadZoneFile(Block('\0', 4, {{0, 2}}, {{0, 0}}, Names))) << "a type that is not there";
    EXPECT_FALSE(ReadZoneFile(Block('\0', 4, {{0, 0}}, {{0, 8}}, Names))) << "a name that is not there";
    EXPECT_FALSE(ReadZoneFile(Block('\0', 4, {}, {}, Names))) << "no type at all";
    EXPECT_FALSE(ReadZoneFile(Block('\0', 4, {}, {{std::numeric_limits<std::int32_t>::min(), 0}}, Names)));
    std::string huge = File("UTC0");
    huge.replace(20, 24, 24, '\xFF');
    EXPECT_FALSE(ReadZoneFile(huge)) << "counts beyond the file";
}

} // namespace
