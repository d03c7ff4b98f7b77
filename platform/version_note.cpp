#include "platform/version_note.h"

#include "platform/text.h"

#include <charconv>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

constexpr std::string_view NoteName{"sqStorage\0", 10};
constexpr std::uint32_t NoteType = 1;

// Takes pieces from the front of a segment; once it lacks something it stays failed.
class CNoteReader {
public:
    CNoteReader(std::string_view bytes, std::size_t alignment) : m_Bytes(bytes), m_Alignment(alignment) {}

    [[nodiscard]] bool IsGood() const noexcept { return m_Good; }
    [[nodiscard]] bool IsAtEnd() const noexcept { return m_Position == m_Bytes.size(); }

    std::uint32_t Number() {
        std::uint32_t value = 0;
        const std::string_view bytes = Take(sizeof value);
        if (m_Good)
            std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    }
    std::string_view Take(std::size_t size) {
        if (!m_Good || size > m_Bytes.size() - m_Position) {
            m_Good = false;
            return {};
        }
        const std::string_view piece = m_Bytes.substr(m_Position, size);
        m_Position += size;
        return piece;
    }
    // The last note of a segment may lack its padding.
    void SkipPadding() {
        const std::size_t rest = m_Position % m_Alignment;
        if (rest != 0)
            m_Position = std::min(m_Position + m_Alignment - rest, m_Bytes.size());
    }

private:
    std::string_view m_Bytes;
    std::size_t m_Alignment;
    std::size_t m_Position = 0;
    bool m_Good = true;
};

// Empty when the zero is missing.
std::optional<std::string_view> TakeText(std::string_view& bytes) {
    const std::size_t end = bytes.find('\0');
    if (end == bytes.npos)
        return std::nullopt;
    const std::string_view text = bytes.substr(0, end);
    bytes.remove_prefix(end + 1);
    return text;
}

std::optional<CVersionBlock> ParseContent(std::string_view bytes) try {
    const auto first = TakeText(bytes);
    const auto translation = first ? ParseTranslation(*first) : std::nullopt;
    if (!translation)
        return std::nullopt;
    CVersionBlock::Strings strings;
    while (!bytes.empty()) {
        const auto name = TakeText(bytes);
        const auto value = TakeText(bytes);
        if (!name || name->empty() || !value || !strings.emplace(FromUtf8(*name), FromUtf8(*value)).second)
            return std::nullopt;
    }
    return CVersionBlock(translation->Language, translation->CodePage, std::move(strings));
} catch (const CTextError&) {
    return std::nullopt;
}

} // namespace

std::optional<tagTranslation> ParseTranslation(std::string_view text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (text.size() != 8 || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return tagTranslation{static_cast<WORD>(number >> 16), static_cast<WORD>(number)};
}

std::optional<CVersionBlock> FindVersionNote(std::string_view segment, std::size_t alignment) {
    CNoteReader reader(segment, alignment == 8 ? 8 : 4);
    while (!reader.IsAtEnd()) {
        const std::uint32_t nameSize = reader.Number();
        const std::uint32_t contentSize = reader.Number();
        const std::uint32_t type = reader.Number();
        const std::string_view name = reader.Take(nameSize);
        reader.SkipPadding();
        const std::string_view content = reader.Take(contentSize);
        if (!reader.IsGood())
            return std::nullopt;
        reader.SkipPadding();
        if (type == NoteType && name == NoteName)
            return ParseContent(content);
    }
    return std::nullopt;
}

} // namespace platform
