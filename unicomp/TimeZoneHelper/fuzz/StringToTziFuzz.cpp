// Any text: it is refused with the target untouched, or what is read from it survives a round trip.

#include "unicomp/TimeZoneHelper/interface/TziCodecs.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

namespace {

void Require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text(data, data + size);
    TIME_ZONE_INFORMATION zone{};
    if (!tz_help::StringToTZI(text.c_str(), zone)) {
        Require(zone == TIME_ZONE_INFORMATION{});
        return 0;
    }
    wchar_t written[128];
    tz_help::TZIToString(zone, written, std::size(written));
    TIME_ZONE_INFORMATION back{};
    Require(tz_help::StringToTZI(written, back) && back == zone);
    return 0;
}
