#pragma once

#include <string>

namespace IDM_dmFirebird {

// Leaves what only this machine knows in variables of the connection, where stored procedures find it: LOCAL_BIAS,
// minutes to the west of Greenwich, and LOCAL_TIME_ZONE, the zone as seventeen numbers in one text, the form in
// which zones cross interfaces. Both are in the name space USER_SESSION.
std::string SetLocalZoneStatement();

} // namespace IDM_dmFirebird
