// Directories and names: the part of file.h that does not touch the content of a file.
#include "platform/file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>

namespace platform {

bool Exists(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

bool IsDirectory(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

void CreateDirectories(const std::filesystem::path& path, EAccess access) {
    const mode_t mode = access == EAccess::Private ? 0700 : 0777;
    std::filesystem::path current;
    for (const auto& part : path) {
        current /= part;
        if (!part.empty() && mkdir(current.c_str(), mode) != 0 && !IsDirectory(current))
            throw CFileError("create directory", current, errno == EEXIST ? ENOTDIR : errno);
    }
}

void RemoveFile(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::remove(path, error);
    if (error)
        throw CFileError("remove", path, error.value());
}

void RemoveTree(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::remove_all(path, error);
    if (error)
        throw CFileError("remove", path, error.value());
}

std::vector<std::filesystem::path> ListDirectory(const std::filesystem::path& path) {
    std::vector<std::filesystem::path> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end;
         entry.increment(error))
        entries.push_back(entry->path());
    if (error)
        throw CFileError("list directory", path, error.value());
    std::sort(entries.begin(), entries.end());
    return entries;
}

CTemporaryDirectory::CTemporaryDirectory(std::string_view prefix) {
    std::string name = std::filesystem::temp_directory_path() / (std::string(prefix) + "-XXXXXX");
    if (mkdtemp(name.data()) == nullptr)
        throw CFileError("create temporary directory", name, errno);
    m_Path = name;
}

CTemporaryDirectory::~CTemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

} // namespace platform
