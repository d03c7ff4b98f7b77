#pragma once
// The version block of an executable or shared library: who made it, and as what.
//
// Looked for in this order:
//   1. the note that the CMake function add_version_info() embedded in the file;
//   2. for the host executable only: the file named by the environment variable SQSTORAGE_VERSION_INFO;
//   3. the file beside it, "<executable or library>.version".
// What a program says of itself is never overridden; the environment comes before the side file because a host
// without a note is an interpreter, which several products share.
//
// Such a file is TOML with one line per value, CompanyName = "..." and so on, and may name another string table
// than the usual one: Translation = "040904b0" (language and code page, four hexadecimal digits each).
//
// Errors: nothing found, or a malformed note, is an empty optional. A file that exists but cannot be read or is
// malformed, and a file named in the environment that is missing, is a CVersionInfoError. Any thread may call.

#include "platform/com/types.h"
#include "platform/module.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

class CVersionInfoError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

class CVersionBlock {
public:
    using Strings = std::map<std::wstring, std::wstring, std::less<>>;

    CVersionBlock(WORD language, WORD codePage, Strings strings)
        : m_Language(language), m_CodePage(codePage), m_Strings(std::move(strings)) {}

    // The first translation: the string table from which Value answers.
    [[nodiscard]] WORD Language() const noexcept { return m_Language; }
    [[nodiscard]] WORD CodePage() const noexcept { return m_CodePage; }
    // "CompanyName", "ProductName", "ProductVersion", "FileDescription", "FileVersion", "LegalCopyright"; empty
    // when the block does not hold it.
    [[nodiscard]] std::optional<std::wstring> Value(std::wstring_view name) const;

private:
    WORD m_Language;
    WORD m_CodePage;
    Strings m_Strings;
};

// A null module means the host executable.
[[nodiscard]] std::optional<CVersionBlock> ReadVersionBlock(const CModule* module);

} // namespace platform
