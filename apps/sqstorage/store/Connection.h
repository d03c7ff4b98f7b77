// The connection that the registry names for this program.
#pragma once

#include "dmserver/portfolio/dmsqStorageSetup/interface/StorageSetup.h"

#include <string>

namespace sqCli {

// The key of this program, whose company and product its version block tells.
[[nodiscard]] std::wstring ConnectionKey();
// The file with the entries.
[[nodiscard]] std::wstring MachineRegistryFile();
// Raises CCommandError (NotOpened) when an entry is missing.
[[nodiscard]] sqSetup::tagConnection ReadConnection();

// A file of this machine, and not a database on a server, "host:path" or "host/port:path".
[[nodiscard]] bool IsLocalFile(const std::wstring& databasePath);

} // namespace sqCli
