#pragma once
// The registry: named values under keys, shared by all processes of the user.
//
// Three roots, one hand-editable TOML file each: machine.toml, user.toml and classes.toml in RegistryDirectory().
// A key is named by its path with "\" between the parts; key and value names compare without case. A missing file
// is an empty root. A key exists as soon as it, or a key below it, was created.
//
// Threads and processes: every function may be called from any of them at any time. A change takes the root's file
// lock, reads the file again, and replaces it whole, so that no two writers lose each other's changes and no reader
// ever sees half a file. Comments that a person wrote into the file do not survive a change made by a program.
//
// Errors: CRegistryError when a file is malformed (it is left as it is), unreadable or cannot be written;
// CTextError when a name or text is no valid Unicode. A missing key or value is an empty optional, never an error.

#include "platform/com/types.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace platform {

enum class ERegistryRoot { Machine, User, Classes };

class CRegistryError : public std::runtime_error {
public:
    CRegistryError(const std::string& text, std::wstring file, std::size_t line)
        : std::runtime_error(text), m_File(std::move(file)), m_Line(line) {}
    [[nodiscard]] const std::wstring& File() const noexcept { return m_File; }
    // Counted from 1; 0 when the error is not about one line.
    [[nodiscard]] std::size_t Line() const noexcept { return m_Line; }

private:
    std::wstring m_File;
    std::size_t m_Line;
};

using RegistryValue = std::variant<std::wstring, LONG>;

// The name of a key, cheap to copy; it holds nothing open. Each read sees the root as it is at that moment, and a
// write to a key that was deleted meanwhile creates it again.
class CRegistryKey {
public:
    // Empty when there is no such key. The empty path is the root itself, which always exists.
    [[nodiscard]] static std::optional<CRegistryKey> Open(ERegistryRoot root, std::wstring_view path);
    static CRegistryKey Create(ERegistryRoot root, std::wstring_view path);
    // Removes the key with all below it; false when there was none. The root itself is refused (invalid_argument).
    static bool DeleteTree(ERegistryRoot root, std::wstring_view path);

    // The empty name is the key's default value, in the file under the name "@".
    [[nodiscard]] std::optional<RegistryValue> Read(std::wstring_view name) const;
    // A number reads as its decimal text, since who edits the file by hand may leave the quotes out.
    [[nodiscard]] std::optional<std::wstring> ReadText(std::wstring_view name) const;
    // Empty when the value is a text.
    [[nodiscard]] std::optional<LONG> ReadNumber(std::wstring_view name) const;
    void WriteText(std::wstring_view name, std::wstring_view value) const;
    void WriteNumber(std::wstring_view name, LONG value) const;
    // False when there was no such value.
    bool DeleteValue(std::wstring_view name) const;

    // Names in alphabetical order without regard to case, each spelled as it was first written.
    [[nodiscard]] std::vector<std::wstring> SubKeys() const;
    [[nodiscard]] std::vector<std::wstring> Values() const;

    [[nodiscard]] ERegistryRoot Root() const noexcept { return m_Root; }
    [[nodiscard]] const std::wstring& Path() const noexcept { return m_Path; }

private:
    CRegistryKey(ERegistryRoot root, std::wstring path) : m_Root(root), m_Path(std::move(path)) {}

    ERegistryRoot m_Root;
    std::wstring m_Path;
};

// Many changes, one write of the file. While it lives, the changes that its thread makes to the root gather in
// memory and that thread's reads see them; Commit writes them all at once, and without it they are dropped.
// It holds the root's lock, so keep it short: other writers wait. A batch within a batch of the same root and
// thread joins the outer one, whose Commit then decides. To be destroyed by the thread that built it.
class CRegistryBatch {
public:
    explicit CRegistryBatch(ERegistryRoot root);
    ~CRegistryBatch();
    CRegistryBatch(const CRegistryBatch&) = delete;
    CRegistryBatch& operator=(const CRegistryBatch&) = delete;

    void Commit();

private:
    ERegistryRoot m_Root;
    bool m_Outermost;
};

// SQSTORAGE_REGISTRY_DIR, else $XDG_CONFIG_HOME/sqstorage/registry, else ~/.config/sqstorage/registry. Read anew at
// each access. Created at the first write, for the user alone.
[[nodiscard]] std::wstring RegistryDirectory();

} // namespace platform
