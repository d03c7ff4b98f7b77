#include "CarrierText.h"

#include "platform/text.h"

#include <algorithm>
#include <cstdint>

namespace IDM_dmudfcom {

namespace {

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

// Length of the sequence that `lead` begins, with the smallest code point that may take so many bytes.
struct tagSequence {
    std::size_t Length;
    std::uint32_t Bits;
    std::uint32_t Smallest;
};
tagSequence SequenceOf(unsigned char lead) {
    if (lead < 0x80)
        return {1, lead, 0};
    if ((lead & 0xE0) == 0xC0)
        return {2, lead & 0x1FU, 0x80};
    if ((lead & 0xF0) == 0xE0)
        return {3, lead & 0x0FU, 0x800};
    if ((lead & 0xF8) == 0xF0)
        return {4, lead & 0x07U, 0x10000};
    return {0, 0, 0};
}

} // namespace

std::optional<std::string> ToStored(std::wstring_view text) {
    if (std::ranges::all_of(text, [](wchar_t c) { return c >= 0 && c < 0x80; })) {
        std::string stored(text.size(), '\0');
        std::ranges::transform(text, stored.begin(), [](wchar_t c) { return static_cast<char>(c); });
        return stored;
    }
    try {
        return platform::ToUtf8(text);
    } catch (const platform::CTextError&) {
        return std::nullopt;
    }
}

BSTR MakeBstr(std::string_view stored) {
    if (std::ranges::all_of(stored, IsAscii)) {
        BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(stored.size()));
        if (text)
            std::ranges::copy(stored, text);
        return text;
    }
    try {
        const std::wstring wide = platform::FromUtf8(stored);
        return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    } catch (const platform::CTextError&) {
        return nullptr;
    }
}

bool IsUtf8(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size();) {
        const tagSequence sequence = SequenceOf(static_cast<unsigned char>(bytes[i]));
        if (sequence.Length == 0 || sequence.Length > bytes.size() - i)
            return false;
        std::uint32_t point = sequence.Bits;
        for (std::size_t k = 1; k < sequence.Length; ++k) {
            const auto next = static_cast<unsigned char>(bytes[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            point = point << 6 | (next & 0x3FU);
        }
        const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
        if (point < sequence.Smallest || point > 0x10FFFF || isSurrogate)
            return false;
        i += sequence.Length;
    }
    return true;
}

} // namespace IDM_dmudfcom
