// A VARIANT inside the bytes of a request.
#pragma once

#include "Carriers.pb.h"

#include "platform/com/variant.h"

#include <optional>

namespace IDM_dmudfcom {

// False for what cannot be carried, and for text that is no Unicode.
bool WriteVariant(const VARIANT& value, sqstorage::carriers::Variant& target);
// Nothing where the value is not one of its type.
std::optional<platform::CVariant> ReadVariant(const sqstorage::carriers::Variant& source);

} // namespace IDM_dmudfcom
