// Where a database is: a file of this machine, opened by the engine inside this process, or a file of a server.
#pragma once

#include "DatabaseError.h"

#include <string>
#include <string_view>

namespace IDM_dmFirebird {

struct tagDatabasePlace {
    std::wstring Path; // as the client library takes it, host included
    std::wstring Host; // empty for the embedded engine
    std::wstring Port; // empty for the server's usual one
    std::wstring File;

    bool IsEmbedded() const { return Host.empty(); }
};

// "host:path", "host/port:path" and "[address]/port:path" name a server. Everything else is a file of this machine,
// so are a path that starts with a separator and one that starts with a drive letter.
tagDatabasePlace ParseDatabasePlace(std::wstring_view path);

// A plain sentence for an attempt to open or to create the database.
std::wstring DescribeOpenFailure(const tagEngineReport& report, const tagDatabasePlace& place,
                                 std::wstring_view userName);
std::wstring DescribeCreateFailure(const tagEngineReport& report, const tagDatabasePlace& place,
                                   std::wstring_view userName);

} // namespace IDM_dmFirebird
