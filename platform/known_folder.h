#pragma once
// Where files of a kind belong. Every folder lies in the user's own place, the "common" ones too, so that nothing
// else on the machine is touched without an administrator's word:
//
//   Documents           XDG_DOCUMENTS_DIR, else what user-dirs.dirs says, else ~/Documents
//   AppData             XDG_CONFIG_HOME, else ~/.config
//   LocalAppData        XDG_DATA_HOME, else ~/.local/share
//   CommonAppData       the same as LocalAppData
//   CommonProgramFiles  ~/.local/lib
//
// A relative path in one of these variables is ignored. The folders need not exist. Any thread may call.

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The values are the system's numbers for these folders.
enum class EKnownFolder {
    Documents = 5,
    AppData = 26,
    LocalAppData = 28,
    CommonAppData = 35,
    CommonProgramFiles = 43,
};

inline constexpr wchar_t PathSeparator = L'/';
inline constexpr int DirectoryExists = 183;

// Without a separator at the end. Empty when the user has no home directory.
[[nodiscard]] std::optional<std::wstring> GetKnownFolder(EKnownFolder folder);

// Logs, sockets and the like: SQSTORAGE_STATE_DIR, else $XDG_STATE_HOME/sqstorage, else ~/.local/state/sqstorage.
// std::runtime_error when the user has no home directory and none of them is set.
[[nodiscard]] std::wstring StateDirectory();

// Creates the directory with all that are missing above it. 0 when created, DirectoryExists (183) when it was
// there, else the system's error number.
[[nodiscard]] int CreateDirectoryTree(std::wstring_view path);

} // namespace platform
