#pragma once
// Whole files, locks and directories. Errors: CFileError, which says what was tried, with which file, and why it
// failed. Any thread may call.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// Paths are UTF-8 for the system whatever the locale; malformed text is a CTextError.
[[nodiscard]] std::filesystem::path ToPath(std::wstring_view text);
[[nodiscard]] std::wstring FromPath(const std::filesystem::path& path);

class CFileError : public std::runtime_error {
public:
    // `action` reads on after "cannot": "cannot open "/a/b": No such file or directory".
    CFileError(std::string_view action, const std::filesystem::path& path, int error);
    // The system's error number.
    [[nodiscard]] int Code() const noexcept { return m_Code; }

private:
    int m_Code;
};

// Who may read what is created: what the process usually grants, or the user alone.
enum class EAccess { Usual, Private };

[[nodiscard]] bool Exists(const std::filesystem::path& path);
[[nodiscard]] bool IsDirectory(const std::filesystem::path& path);

[[nodiscard]] std::string ReadFile(const std::filesystem::path& path);
// Empty when there is no such file.
[[nodiscard]] std::optional<std::string> ReadFileIfExists(const std::filesystem::path& path);

// Tells one state of a file from another without reading it: every WriteFileAtomically makes a new one.
struct tagFileStamp {
    std::int64_t Modified; // nanoseconds since 1970
    std::uint64_t Size;    // bytes
    std::uint64_t Inode;
    std::uint64_t Device;
    friend bool operator==(const tagFileStamp&, const tagFileStamp&) = default;
};
// Empty when there is no such file.
[[nodiscard]] std::optional<tagFileStamp> GetFileStamp(const std::filesystem::path& path);
struct tagStampedFile {
    tagFileStamp Stamp;
    std::string Bytes;
};
[[nodiscard]] std::optional<tagStampedFile> ReadStampedFileIfExists(const std::filesystem::path& path);

// After this the file holds the old bytes or the new ones, never a mixture, even through a power failure, and its
// modification time grows with each write. With EAccess::Usual a file that is replaced keeps its permissions. A
// symbolic link stays, and the file it points to is replaced.
void WriteFileAtomically(const std::filesystem::path& path, std::string_view bytes,
                         EAccess access = EAccess::Usual);

// The same for bytes that come one part after another: `write` hands each part to the function it is given. What it
// raises leaves the old file as it was.
using TakeBytes = std::function<void(std::string_view)>;
void WriteFileAtomically(const std::filesystem::path& path, const std::function<void(const TakeBytes&)>& write,
                         EAccess access = EAccess::Usual);

// Creates what is missing; what exists keeps its permissions.
void CreateDirectories(const std::filesystem::path& path, EAccess access = EAccess::Usual);
// Nothing there is no error.
void RemoveFile(const std::filesystem::path& path);
void RemoveTree(const std::filesystem::path& path);
// Full paths in alphabetical order.
[[nodiscard]] std::vector<std::filesystem::path> ListDirectory(const std::filesystem::path& path);

// An exclusive lock among threads and processes, held while the object lives. The file is created when missing and
// is left in place. The lock belongs to the object, not to the thread: taking it twice in one thread blocks.
class CFileLock {
public:
    // Waits.
    explicit CFileLock(const std::filesystem::path& path);
    // Empty when another holds it.
    [[nodiscard]] static std::optional<CFileLock> Try(const std::filesystem::path& path);

    CFileLock(CFileLock&& other) noexcept;
    CFileLock& operator=(CFileLock&& other) noexcept;
    CFileLock(const CFileLock&) = delete;
    CFileLock& operator=(const CFileLock&) = delete;
    ~CFileLock();

private:
    explicit CFileLock(int descriptor) noexcept : m_Descriptor(descriptor) {}

    int m_Descriptor;
};

// A fresh empty directory, for the user alone, removed with its content at the end.
class CTemporaryDirectory {
public:
    explicit CTemporaryDirectory(std::string_view prefix = "sqstorage");
    ~CTemporaryDirectory();
    CTemporaryDirectory(const CTemporaryDirectory&) = delete;
    CTemporaryDirectory& operator=(const CTemporaryDirectory&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const noexcept { return m_Path; }
    [[nodiscard]] std::wstring Name() const { return FromPath(m_Path); }

private:
    std::filesystem::path m_Path;
};

} // namespace platform
