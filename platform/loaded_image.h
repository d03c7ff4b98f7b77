#pragma once
// What lies in the memory image of a loaded module.

#include "platform/module.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace platform {

struct tagNoteSegment {
    std::string_view Bytes; // lives as long as the module, which is for ever
    std::size_t Alignment;
};

[[nodiscard]] std::vector<tagNoteSegment> FindNoteSegments(const CModule& module);

} // namespace platform
