// The seal around all bytes that leave the carriers: what was cut or altered on its way is refused as a whole.
//
// The seal finds accidents and foreign bytes. It does not keep out who can compute a checksum, so whatever comes
// out of it is still checked number by number.
#pragma once

#include "platform/com/variant.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace IDM_dmudfcom {

enum class EContent : unsigned { Table = 1, Answer = 2, Request = 3 };

std::string Seal(EContent kind, std::string content);
std::optional<std::string> Unseal(EContent kind, std::string_view bytes);

// How many fields of that number the message has, not counting into submessages; nothing for what is no message.
// Asked before parsing, because an empty submessage of two bytes becomes an object of a hundred.
std::optional<std::size_t> CountFields(std::string_view message, int number);

// Between bytes and a VARIANT of type 0x2011. Nothing for another type.
HRESULT GiveBytes(std::string_view bytes, VARIANT& target);
std::optional<std::string_view> TakeBytes(const VARIANT& value);

} // namespace IDM_dmudfcom
