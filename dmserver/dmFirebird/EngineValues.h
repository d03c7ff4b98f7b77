// The engine's units for days and times, and ours.
#pragma once

#include <cstdint>
#include <cstring>

namespace IDM_dmFirebird {

// The engine counts days from 17 November 1858, tables from 30 December 1899.
inline constexpr std::int32_t DayShift = 15018;
// The engine's times are ten-thousandths of a second since midnight.
inline constexpr std::int64_t TimeUnits = 10000;
inline constexpr std::int64_t SecondsPerDay = 86400;
// 1 January of the year 1 and 31 December 9999 as day numbers: what a DATE can hold.
inline constexpr std::int64_t FirstDay = -693593;
inline constexpr std::int64_t LastDay = 2958465;

// The connection's character set, as the engine numbers it, and the most bytes that one character takes.
inline constexpr unsigned CharSetUtf8 = 4;
inline constexpr unsigned BytesPerCharacter = 4;
inline constexpr unsigned CharSetOctets = 1;

template <class T>
T Load(const unsigned char* place) {
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
}
template <class T>
void Save(unsigned char* place, T value) {
    std::memcpy(place, &value, sizeof value);
}

} // namespace IDM_dmFirebird
