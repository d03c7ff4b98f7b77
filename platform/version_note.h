#pragma once
// The form in which a version block lies in a file. cmake/VersionInfo.cmake writes it.
//
// An ELF note with the name "sqStorage" and the type 1. Its content is UTF-8, each text ended by a zero: first the
// translation, eight hexadecimal digits of language and code page, then names and values by turns.

#include "platform/version_info.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace platform {

// Searches a segment of notes. Empty when the note is not there, or anything about it or before it is malformed.
[[nodiscard]] std::optional<CVersionBlock> FindVersionNote(std::string_view segment, std::size_t alignment);

// "040904b0" and the like.
struct tagTranslation {
    WORD Language;
    WORD CodePage;
};
[[nodiscard]] std::optional<tagTranslation> ParseTranslation(std::string_view text);

} // namespace platform
