#pragma once
// A zone's file in the system's database, in the form of RFC 8536.

#include "platform/posix/zone_rule.h"

namespace platform {

// The rule for the future that the file ends with; without one, the offset after the file's last change. Empty when
// the bytes are no such file.
[[nodiscard]] std::optional<tagZoneRule> ReadZoneFile(std::string_view bytes);

} // namespace platform
