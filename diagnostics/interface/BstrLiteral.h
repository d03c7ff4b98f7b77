#pragma once
// Constant texts that can be passed as BSTR as they lie in memory: length first, then the characters.

#include "platform/com/bstr.h"

#include <cstddef>

namespace BugSlayerUtil {

template <std::size_t Size>
struct CBstrLiteral {
    ULONG Bytes = (Size - 1) * sizeof(wchar_t);
    wchar_t Text[Size];

    consteval CBstrLiteral(const wchar_t (&text)[Size]) : Text{} {
        for (std::size_t i = 0; i < Size; ++i)
            Text[i] = text[i];
    }
    // A BSTR is not const by type alone: who receives it as an in argument leaves it as it is.
    [[nodiscard]] BSTR Get() const noexcept { return const_cast<BSTR>(Text); }
};

} // namespace BugSlayerUtil
