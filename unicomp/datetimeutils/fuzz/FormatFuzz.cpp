// Any moment, any format, any capacity: the text stays within its buffer and is always ended.

#include "unicomp/datetimeutils/interface/DateTimeUtilsCore.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <stdexcept>
#include <string>

namespace {

constexpr std::size_t MaxCapacity = 64;
constexpr wchar_t Fence = L'#';

void Require(bool condition) {
    if (!condition)
        std::abort();
}

void FormatOnce(const dmDateTime::SDateTime& moment, std::size_t capacity, const std::wstring& format) {
    std::array<wchar_t, MaxCapacity + 1> buffer;
    buffer.fill(Fence);
    try {
        const std::size_t written = moment.Format(buffer.data(), capacity, format.c_str());
        Require(buffer[capacity] == Fence);
        Require(capacity == 0 ? written == 0 : written < capacity && buffer[written] == L'\0');
    } catch (const std::range_error&) {
        Require(!dmDateTime::details::IsDate(moment.ToJulian()));
    }
}

} // namespace

// Eight bytes of ticks, one of capacity, and the rest are characters.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::int64_t ticks = 0;
    if (size <= sizeof(ticks))
        return 0;
    std::memcpy(&ticks, data, sizeof(ticks));
    const std::size_t capacity = data[sizeof(ticks)] % (MaxCapacity + 1);
    const std::wstring format(data + sizeof(ticks) + 1, data + size);
    FormatOnce(dmDateTime::SDateTime::FromTicks(ticks), capacity, format);
    // And once at a moment that is a date.
    const auto day =
        static_cast<dmDateTime::JulianDate>(static_cast<std::uint64_t>(ticks) % dmDateTime::LastDate + 1);
    FormatOnce(dmDateTime::SDateTime::FromJulian(day), capacity, format);
    return 0;
}
