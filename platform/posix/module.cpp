#include "platform/module.h"

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/process.h"
#include "platform/text.h"

#include <algorithm>
#include <dlfcn.h>
#include <link.h>
#include <stdexcept>
#include <utility>
#include <vector>

namespace platform {

namespace {

bool IsPath(std::wstring_view name) { return name.find(L'/') != name.npos; }

bool HasWindowsExtension(std::wstring_view name) { return FoldCase(name).ends_with(L".dll"); }

// "libX.so" and "libX.so.1.2", but not "X.sound".
bool IsLibraryName(std::wstring_view name) {
    constexpr std::wstring_view extension = L".so";
    if (name.ends_with(extension))
        return true;
    const std::size_t version = name.find(L".so.");
    return version != name.npos && name.find_first_not_of(L"0123456789.", version + extension.size()) == name.npos;
}

std::string LibraryName(std::wstring_view name) {
    if (IsLibraryName(name))
        return ToUtf8(name);
    if (HasWindowsExtension(name))
        name.remove_suffix(4);
    return "lib" + ToUtf8(name) + ".so";
}

int CollectName(dl_phdr_info* info, std::size_t, void* result) {
    static_cast<std::vector<std::string>*>(result)->emplace_back(info->dlpi_name);
    return 0;
}

// Loaded under that very file name, or under it with a version behind.
bool HasFileName(const std::string& path, const std::string& name) {
    const std::string file = path.substr(path.rfind('/') + 1);
    return file == name || file.starts_with(name + ".");
}

void* FindLoadedHandle(const std::string& name) {
    std::vector<std::string> loaded;
    dl_iterate_phdr(CollectName, &loaded);
    const bool isPath = name.find('/') != name.npos;
    for (const std::string& path : loaded) {
        if (!path.empty() && (isPath ? path == name : HasFileName(path, name))) {
            // Null when another thread's unloading came first.
            if (void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD))
                return handle;
        }
    }
    return nullptr;
}

std::vector<std::filesystem::path> SearchFolders() {
    std::vector<std::filesystem::path> folders;
    const std::wstring list = GetEnvironment(L"SQSTORAGE_MODULE_PATH").value_or(L"");
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find(L':', start), list.size());
        if (end > start)
            folders.push_back(ToPath(std::wstring_view(list).substr(start, end - start)));
        start = end + 1;
    }
    const CModule self = CModule::ContainingAddress(reinterpret_cast<const void*>(&SearchFolders));
    folders.push_back(ToPath(self.FileName()).parent_path());
    folders.push_back(ToPath(ExecutablePath()).parent_path());
    return folders;
}

// The file to hand to the loader; the bare name leaves the search to it.
std::string LocateLibrary(const std::string& name) {
    for (const auto& folder : SearchFolders()) {
        // The loader takes only a name with a separator as a path.
        const auto file = std::filesystem::absolute(folder / name);
        if (Exists(file))
            return file.native();
    }
    return name;
}

void* LoadHandle(const std::string& file, std::wstring* reason) {
    void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr && reason != nullptr) {
        const char* const text = dlerror();
        *reason = FromUtf8(text != nullptr ? text : "unknown error");
    }
    return handle;
}

} // namespace

CModule::CModule(CModule&& other) noexcept : m_Handle(std::exchange(other.m_Handle, nullptr)) {}

CModule& CModule::operator=(CModule&& other) noexcept {
    std::swap(m_Handle, other.m_Handle);
    return *this;
}

std::optional<CModule> CModule::FindLoaded(std::wstring_view windowsName) {
    if (windowsName.empty())
        return std::nullopt;
    void* const handle = FindLoadedHandle(IsPath(windowsName) ? ToUtf8(windowsName) : LibraryName(windowsName));
    return handle != nullptr ? std::optional(CModule(handle)) : std::nullopt;
}

std::optional<CModule> CModule::Load(std::wstring_view nameOrPath, std::wstring* reason) {
    if (nameOrPath.empty()) {
        if (reason != nullptr)
            *reason = L"no name was given";
        return std::nullopt;
    }
    if (auto loaded = FindLoaded(nameOrPath))
        return loaded;
    const std::string file = IsPath(nameOrPath) ? ToUtf8(nameOrPath) : LocateLibrary(LibraryName(nameOrPath));
    void* const handle = LoadHandle(file, reason);
    return handle != nullptr ? std::optional(CModule(handle)) : std::nullopt;
}

CModule CModule::ContainingAddress(const void* address) {
    Dl_info info{};
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr)
        throw std::invalid_argument("no loaded module contains the address");
    if (map->l_name == nullptr || *map->l_name == '\0')
        return Executable();
    void* const handle = dlopen(map->l_name, RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr)
        throw std::invalid_argument("the module that contains the address is not loaded any more");
    return CModule(handle);
}

CModule CModule::Executable() { return CModule(dlopen(nullptr, RTLD_NOW)); }

void* CModule::Symbol(const char* name) const { return m_Handle != nullptr ? dlsym(m_Handle, name) : nullptr; }

std::wstring CModule::FileName() const {
    link_map* map = nullptr;
    if (m_Handle == nullptr || dlinfo(m_Handle, RTLD_DI_LINKMAP, static_cast<void*>(&map)) != 0)
        return {};
    if (*map->l_name == '\0')
        return ExecutablePath();
    return FromPath(std::filesystem::absolute(map->l_name));
}

} // namespace platform
