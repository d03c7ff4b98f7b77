#include "LockDirectory.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/known_folder.h"

#include <optional>
#include <stdexcept>

namespace IDM_dmFirebird {

namespace {

constexpr std::wstring_view LockVariable = L"FIREBIRD_LOCK";
// The engine appends file names of its own and keeps the result in buffers of fixed size.
constexpr std::size_t LongestPath = 200;

std::optional<std::wstring> MakePrivate(const std::wstring& parent) {
    const std::wstring path = parent + L"/firebird";
    if (path.size() > LongestPath)
        return std::nullopt;
    try {
        platform::CreateDirectories(platform::ToPath(path), platform::EAccess::Private);
        return path;
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

std::optional<std::wstring> BelowRuntimeDirectory() {
    const std::optional<std::wstring> runtime = platform::GetEnvironment(L"XDG_RUNTIME_DIR");
    if (!runtime || runtime->empty() || runtime->front() != L'/')
        return std::nullopt;
    if (!platform::IsDirectory(platform::ToPath(*runtime)))
        return std::nullopt;
    return MakePrivate(*runtime + L"/sqstorage");
}

std::optional<std::wstring> BelowStateDirectory() {
    try {
        return MakePrivate(platform::StateDirectory());
    } catch (const std::runtime_error&) {
        return std::nullopt; // no home directory
    }
}

} // namespace

void ChooseLockDirectory() {
    if (platform::GetEnvironment(LockVariable))
        return;
    std::optional<std::wstring> path = BelowRuntimeDirectory();
    if (!path)
        path = BelowStateDirectory();
    if (path)
        platform::SetEnvironment(LockVariable, *path);
}

} // namespace IDM_dmFirebird
