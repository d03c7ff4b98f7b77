#include "platform/com/guid.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

namespace platform {

std::wstring ToText(const GUID& guid) {
    const auto& tail = guid.Data4;
    return fmt::format(L"{{{:08X}-{:04X}-{:04X}-{:02X}{:02X}-{:02X}{:02X}{:02X}{:02X}{:02X}{:02X}}}", guid.Data1,
                       guid.Data2, guid.Data3, tail[0], tail[1], tail[2], tail[3], tail[4], tail[5], tail[6],
                       tail[7]);
}

} // namespace platform
