#include "platform/posix/zone_file.h"

#include <cstdint>

namespace platform {

namespace {

constexpr std::string_view Magic = "TZif";
constexpr std::size_t HeaderSize = 44;
constexpr std::size_t CountsOffset = 20; // behind the magic, the version and the bytes kept free
constexpr std::size_t TypeSize = 6;      // offset, daylight flag, index of the name

std::uint32_t ReadBigEndian(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (const char byte : bytes.substr(at, 4))
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

// One of the two blocks of a file, which tell the same with times of 4 and of 8 bytes.
struct tagBlock {
    std::string_view Types;
    std::string_view TypeOfChange; // one byte for each change, oldest first
    std::string_view Names;
    std::string_view Rest; // behind the block
};

std::optional<tagBlock> ReadBlock(std::string_view bytes, std::uint64_t timeSize) {
    if (bytes.size() < HeaderSize || !bytes.starts_with(Magic))
        return std::nullopt;
    const auto count = [&](std::size_t index) -> std::uint64_t {
        return ReadBigEndian(bytes, CountsOffset + 4 * index);
    };
    const std::uint64_t universal = count(0), standard = count(1), leaps = count(2), changes = count(3),
                        types = count(4), names = count(5);
    // Each below 2^36, since a count has 32 bits.
    const std::uint64_t typeOfChange = HeaderSize + changes * timeSize;
    const std::uint64_t typeTable = typeOfChange + changes;
    const std::uint64_t nameTable = typeTable + types * TypeSize;
    const std::uint64_t end = nameTable + names + leaps * (timeSize + 4) + standard + universal;
    if (end > bytes.size() || types == 0)
        return std::nullopt;
    return tagBlock{bytes.substr(typeTable, types * TypeSize), bytes.substr(typeOfChange, changes),
                    bytes.substr(nameTable, names), bytes.substr(end)};
}

std::optional<tagZoneRule> LastOffset(const tagBlock& block) {
    const std::size_t type = block.TypeOfChange.empty() ? 0 : static_cast<unsigned char>(block.TypeOfChange.back());
    if (type >= block.Types.size() / TypeSize)
        return std::nullopt;
    const std::string_view entry = block.Types.substr(type * TypeSize, TypeSize);
    const std::size_t nameAt = static_cast<unsigned char>(entry[5]);
    const auto east = static_cast<std::int32_t>(ReadBigEndian(entry, 0));
    constexpr std::int32_t MaxOffset = 26 * 3600;
    if (nameAt >= block.Names.size() || east < -MaxOffset || east > MaxOffset)
        return std::nullopt;
    const std::string_view name = block.Names.substr(nameAt);
    tagZoneRule rule;
    rule.StandardName = name.substr(0, name.find('\0'));
    rule.StandardOffset = -east;
    return rule;
}

} // namespace

std::optional<tagZoneRule> ReadZoneFile(std::string_view bytes) {
    const auto narrow = ReadBlock(bytes, 4);
    if (!narrow)
        return std::nullopt;
    constexpr std::size_t VersionOffset = 4;
    if (bytes[VersionOffset] == '\0')
        return LastOffset(*narrow);
    const auto wide = ReadBlock(narrow->Rest, 8);
    if (!wide || !wide->Rest.starts_with('\n'))
        return std::nullopt;
    const std::size_t end = wide->Rest.find('\n', 1);
    if (end == wide->Rest.npos)
        return std::nullopt;
    const std::string_view footer = wide->Rest.substr(1, end - 1);
    return footer.empty() ? LastOffset(*wide) : ParseZoneRule(footer);
}

} // namespace platform
