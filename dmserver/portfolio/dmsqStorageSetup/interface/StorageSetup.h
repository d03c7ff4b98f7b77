// Making a storage that a host can open: the database with its schema, and the registry entries that lead to it.
//
// This is the operator's side. A host never needs it; it opens what the registry names.
//
// Threads: any. Errors: platform::CComError whose text says what happened and what to do; what was half made is
// removed, and what was there before is left as it was.
#pragma once

#include "platform/com/types.h"

#include <string>

namespace sqSetup {

struct tagConnection {
    std::wstring Path; // a file, or "host:path" or "host/port:path" of a Firebird server
    std::wstring UserName;
    std::wstring Password;
    std::wstring DictionaryPath; // empty: the host's default place
};

// Creates the database and its schema. A database that exists is refused.
void CreateStorage(const tagConnection& connection);

// Brings a storage of an older version up to the program's, one step after the other, each whole or not at all.
// Returns the number of steps done; 0 when it was up to date.
LONG UpgradeStorage(const tagConnection& connection);

// Makes the database count its indexes anew, on a connection of its own, so that it goes on choosing the right ones
// after much has come in at once: its counts are from when they were last taken, at first from the empty database.
// Hosts may be at work meanwhile. The user has to be one who may change the schema.
void RefreshStatistics(const tagConnection& connection);

// The registry key of a product's connection parameters, below the machine root.
std::wstring ConnectionKey(const std::wstring& company, const std::wstring& product);

// Whether the key names a database already.
bool IsRegistered(const std::wstring& key);

// Writes the four values in one go; an empty dictionary path is left out.
void RegisterConnection(const std::wstring& key, const tagConnection& connection);

} // namespace sqSetup
