// For tests that pin an interface's slots: which entry of the vtable a member function is called through.
//
//     EXPECT_EQ(SlotOf(&IThing::Select), 7);    // the first behind those of IDispatch
//
// Reads the pointer to member as the Itanium C++ ABI lays it out on x86-64.
#pragma once

#include "platform/com/types.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace platform::tests {

inline constexpr int NotVirtual = -1;

// Slots of the interfaces that the others build upon: a method's own slots are counted from here.
inline constexpr int UnknownSlots = 3;
inline constexpr int DispatchSlots = 7;

template <class Member>
int SlotOf(Member member) {
    static_assert(std::is_member_function_pointer_v<Member>);
    struct {
        std::ptrdiff_t Function; // for a virtual one the offset in the vtable, and 1
        std::ptrdiff_t Adjustment;
    } parts;
    static_assert(sizeof(member) == sizeof(parts));
    std::memcpy(&parts, &member, sizeof(parts));
    if (!(parts.Function & 1))
        return NotVirtual;
    return static_cast<int>((parts.Function - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

} // namespace platform::tests
