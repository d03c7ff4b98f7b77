// Why the last call on a database, or on anything made from it, failed on this thread.
#pragma once

#include "dmserver/dmFirebird/interface/Database.h"

#include <string>

namespace IDM_dmFirebird {

// Empty when the database says nothing.
inline std::wstring LastErrorText(IdmDatabase& database) {
    platform::CBstr text;
    database.get_LastError(text.Put());
    return std::wstring(text.View());
}

} // namespace IDM_dmFirebird
