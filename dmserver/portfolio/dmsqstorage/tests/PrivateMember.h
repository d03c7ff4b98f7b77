// Opens a private member to a test that must see, or break, what no public function shows.
//
//     namespace tests {
//     struct Zones {
//         using Member = std::map<std::wstring, std::wstring> sqStorage::CStorage::*;
//         friend Member MemberOf(Zones);
//     };
//     template struct CPrivateMember<Zones, &sqStorage::CStorage::m_ExchangeTimeZones>;
//     }
//
//     storage.*MemberOf(Zones{})
//
// An explicit instantiation may name private members; that is all there is to it.
#pragma once

namespace tests {

template <class Key, typename Key::Member Pointer>
struct CPrivateMember {
    friend typename Key::Member MemberOf(Key) { return Pointer; }
};

} // namespace tests
