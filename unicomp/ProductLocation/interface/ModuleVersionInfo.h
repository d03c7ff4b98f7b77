// Who made a module, and as what: the strings of its version block.
//
// An absent block or value leaves its string empty. Threads: a plain value.
// Errors: platform::CVersionInfoError for a side file that exists and is malformed.
#pragma once

#include "platform/module.h"

#include <string>

struct ModuleVersionInfo {
    // Working copies of CompanyName and ProductName, for building paths. Set only when the block names a
    // translation, so a block that cannot be read leaves them empty.
    std::wstring Company;
    std::wstring Product;
    std::wstring CompanyName;
    std::wstring ProductName;
    std::wstring ProductVersion;
    std::wstring FileDescription;
    std::wstring FileVersion;
    std::wstring LegalCopyright;

    // A null module means the host executable.
    explicit ModuleVersionInfo(const platform::CModule* module);
};
