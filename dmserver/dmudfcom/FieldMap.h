// What the carriers know of a result column by its name alone: id, type and, for text, its greatest length.
// Any thread may ask.
#pragma once

#include "dmserver/dmudfcom/interface/FieldIds.h"
#include "dmserver/dmudfcom/interface/TableRows.h"

#include <span>
#include <string>
#include <string_view>

namespace IDM_dmudfcom {

struct tagFieldInfo {
    LONG Id = 0;
    std::string_view Name;
    EColumnType Type = EColumnType::Long;
    ULONG Size = 0; // of a text, in characters; 0 when the map states none
};

// In the order of the ids.
std::span<const tagFieldInfo> FieldMap();

// Null for what the map does not have. Names compare without the case of ASCII letters.
const tagFieldInfo* FindField(LONG id);
const tagFieldInfo* FindField(std::string_view name);

// The id of a name that the map lacks: made from the name, so that two tables agree on it.
LONG UnmappedFieldId(std::string_view name);

bool IsSameName(std::string_view left, std::string_view right);

// As strcmp, without the case of ASCII letters.
constexpr int CompareNames(std::string_view left, std::string_view right) {
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    for (std::size_t i = 0; i < left.size() && i < right.size(); ++i)
        if (const int difference = upper(left[i]) - upper(right[i]))
            return difference;
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

} // namespace IDM_dmudfcom
