#pragma once

namespace IDM_dmFirebird {

// The engine keeps lock files in one directory for all users of a machine, made by whoever comes first and closed
// to the others. So each user gets a directory of his own: FIREBIRD_LOCK as the environment has it, else "firebird"
// below XDG_RUNTIME_DIR/sqstorage, else below the state directory. When none can be made the engine's own default
// stays. Safe because a file is held by one process at a time whatever directory it uses. To be called once, before
// the client library is used.
void ChooseLockDirectory();

} // namespace IDM_dmFirebird
