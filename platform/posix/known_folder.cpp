#include "platform/known_folder.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/text.h"

#include <cerrno>
#include <pwd.h>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

using Folder = std::optional<std::wstring>;

// Without the separators at its end; the root directory keeps its one.
std::wstring TrimEnd(std::wstring path) {
    while (path.size() > 1 && path.back() == PathSeparator)
        path.pop_back();
    return path;
}

bool IsAbsolute(const std::wstring& path) { return !path.empty() && path.front() == PathSeparator; }

Folder FromVariable(std::wstring_view name) {
    const auto value = GetEnvironment(name);
    return value && IsAbsolute(*value) ? Folder(TrimEnd(*value)) : std::nullopt;
}

Folder HomeOfAccount() {
    std::vector<char> buffer(16'384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return std::nullopt;
    const std::wstring home = FromUtf8(found->pw_dir);
    return IsAbsolute(home) ? Folder(TrimEnd(home)) : std::nullopt;
}

Folder Home() {
    const Folder home = FromVariable(L"HOME");
    return home ? home : HomeOfAccount();
}

Folder BelowHome(std::wstring_view name) {
    const Folder home = Home();
    return home ? Folder(TrimEnd(*home + PathSeparator + std::wstring(name))) : std::nullopt;
}

Folder FromVariableOrHome(std::wstring_view variable, std::wstring_view belowHome) {
    const Folder folder = FromVariable(variable);
    return folder ? folder : BelowHome(belowHome);
}

// The text between the quotes, its escapes resolved as a shell does; empty when the quotes do not close.
Folder Unquote(std::wstring_view text) {
    std::wstring result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'"')
            return result;
        if (text[i] == L'\\' && i + 1 < text.size())
            ++i;
        result += text[i];
    }
    return std::nullopt;
}

// One line of user-dirs.dirs: XDG_DOCUMENTS_DIR="$HOME/Documents", or an absolute path in place of "$HOME/".
Folder ParseUserDirectory(std::wstring_view line) {
    constexpr std::wstring_view start = L"XDG_DOCUMENTS_DIR=\"";
    constexpr std::wstring_view home = L"$HOME/";
    const std::size_t begin = line.find_first_not_of(L" \t");
    if (begin == line.npos || !line.substr(begin).starts_with(start))
        return std::nullopt;
    line.remove_prefix(begin + start.size());
    const bool belowHome = line.starts_with(home);
    if (belowHome)
        line.remove_prefix(home.size());
    const Folder folder = Unquote(line);
    if (folder && belowHome)
        return BelowHome(*folder);
    return folder && IsAbsolute(*folder) ? Folder(TrimEnd(*folder)) : std::nullopt;
}

// Another program's file: what cannot be read counts as not there.
std::wstring ReadUserDirectories() try {
    const Folder settings = FromVariableOrHome(L"XDG_CONFIG_HOME", L".config");
    return settings ? FromUtf8(ReadFile(ToPath(*settings + L"/user-dirs.dirs"))) : L"";
} catch (const CFileError&) {
    return {};
} catch (const CTextError&) {
    return {};
}

Folder DocumentsOfUserDirectories() {
    Folder result;
    const std::wstring text = ReadUserDirectories();
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        if (const Folder folder = ParseUserDirectory(std::wstring_view(text).substr(start, end - start)))
            result = folder; // the last line counts, as in a shell
        start = end + 1;
    }
    return result;
}

Folder Documents() {
    if (const Folder chosen = FromVariable(L"XDG_DOCUMENTS_DIR"))
        return chosen;
    const Folder configured = DocumentsOfUserDirectories();
    return configured ? configured : BelowHome(L"Documents");
}

} // namespace

std::optional<std::wstring> GetKnownFolder(EKnownFolder folder) {
    switch (folder) {
    case EKnownFolder::Documents:
        return Documents();
    case EKnownFolder::AppData:
        return FromVariableOrHome(L"XDG_CONFIG_HOME", L".config");
    case EKnownFolder::LocalAppData:
    case EKnownFolder::CommonAppData:
        return FromVariableOrHome(L"XDG_DATA_HOME", L".local/share");
    case EKnownFolder::CommonProgramFiles:
        return BelowHome(L".local/lib");
    }
    return std::nullopt;
}

std::wstring StateDirectory() {
    const auto chosen = GetEnvironment(L"SQSTORAGE_STATE_DIR");
    if (chosen && !chosen->empty())
        return *chosen;
    const Folder state = FromVariableOrHome(L"XDG_STATE_HOME", L".local/state");
    if (!state)
        throw std::runtime_error("there is no place for the program's state: this user has no home directory. "
                                 "Name a directory in SQSTORAGE_STATE_DIR");
    return *state + L"/sqstorage";
}

int CreateDirectoryTree(std::wstring_view path) {
    if (path.empty())
        return ENOENT;
    const std::filesystem::path directory = ToPath(path);
    if (IsDirectory(directory))
        return DirectoryExists;
    try {
        CreateDirectories(directory);
        return 0;
    } catch (const CFileError& error) {
        return error.Code();
    }
}

} // namespace platform
