#include "platform/file.h"

#include "platform/posix/descriptor.h"
#include "platform/text.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

constexpr std::int64_t NanosecondsPerSecond = 1'000'000'000;

std::string Describe(std::string_view action, const std::filesystem::path& path, int error) {
    const char* reason = strerrordesc_np(error);
    return "cannot " + std::string(action) + " \"" + path.native() +
           "\": " + (reason != nullptr ? reason : "error " + std::to_string(error));
}

CDescriptor OpenToRead(const std::filesystem::path& path) {
    return CDescriptor(RetryInterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
}

tagFileStamp MakeStamp(const struct stat& status) {
    return {.Modified = status.st_mtim.tv_sec * NanosecondsPerSecond + status.st_mtim.tv_nsec,
            .Size = static_cast<std::uint64_t>(status.st_size),
            .Inode = status.st_ino,
            .Device = status.st_dev};
}

std::string ReadAll(int descriptor, std::size_t expectedSize, const std::filesystem::path& path) {
    std::string bytes;
    std::size_t length = 0;
    for (;;) {
        // One byte more than expected, so that the usual file ends with the second, empty read.
        bytes.resize(std::max(expectedSize + 1, length + length / 2 + 1));
        const ssize_t count =
            RetryInterrupted([&] { return read(descriptor, bytes.data() + length, bytes.size() - length); });
        if (count < 0)
            throw CFileError("read", path, errno);
        length += static_cast<std::size_t>(count);
        if (count == 0)
            break;
    }
    bytes.resize(length);
    return bytes;
}

void WriteAll(int descriptor, std::string_view bytes, const std::filesystem::path& path) {
    while (!bytes.empty()) {
        const ssize_t count = RetryInterrupted([&] { return write(descriptor, bytes.data(), bytes.size()); });
        if (count < 0)
            throw CFileError("write", path, errno);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

// What the path stands for in the end, which need not exist.
std::filesystem::path FollowLinks(std::filesystem::path path) {
    constexpr int mostLinks = 40; // the system's own limit
    std::error_code error;
    for (int i = 0; std::filesystem::is_symlink(path, error); ++i) {
        if (i == mostLinks)
            throw CFileError("follow the links of", path, ELOOP);
        path = path.parent_path() / std::filesystem::read_symlink(path);
    }
    return path;
}

// A file beside `target` that disappears unless it takes the target's place.
class CReplacement {
public:
    CReplacement(const std::filesystem::path& target, EAccess access)
        : m_Target(target), m_Path(MakeName(target)), m_File(RetryInterrupted([&] {
              return open(m_Path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                          access == EAccess::Private ? 0600 : 0666);
          })) {
        if (!m_File.IsOpen())
            throw CFileError("create a temporary file beside", m_Target, errno);
        struct stat replaced;
        if (stat(target.c_str(), &replaced) != 0)
            return;
        m_Replaced = MakeStamp(replaced).Modified;
        if (access == EAccess::Usual && fchmod(m_File.Get(), replaced.st_mode & 07777) != 0)
            throw CFileError("set the permissions of", m_Path, errno);
    }
    ~CReplacement() {
        if (!m_Done)
            unlink(m_Path.c_str());
    }
    CReplacement(const CReplacement&) = delete;
    CReplacement& operator=(const CReplacement&) = delete;

    void Add(std::string_view bytes) { WriteAll(m_File.Get(), bytes, m_Path); }
    void TakePlace() {
        SetLaterTime();
        if (fsync(m_File.Get()) != 0)
            throw CFileError("bring to disk", m_Path, errno);
        if (rename(m_Path.c_str(), m_Target.c_str()) != 0)
            throw CFileError("replace", m_Target, errno);
        m_Done = true;
        SyncDirectory();
    }

private:
    static std::filesystem::path MakeName(const std::filesystem::path& target) {
        static std::atomic<unsigned> counter{0};
        return target.parent_path() / ("." + target.filename().native() + "." + std::to_string(getpid()) + "." +
                                       std::to_string(++counter) + ".tmp");
    }
    // The system's own stamp is coarse: two writes within one tick would look the same to who watches the time.
    void SetLaterTime() {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        const std::int64_t time = std::max(now.tv_sec * NanosecondsPerSecond + now.tv_nsec, m_Replaced + 1);
        const timespec modified{.tv_sec = time / NanosecondsPerSecond, .tv_nsec = time % NanosecondsPerSecond};
        const timespec times[2] = {modified, modified};
        if (futimens(m_File.Get(), times) != 0)
            throw CFileError("set the time of", m_Path, errno);
    }
    // So that the new name outlives a power failure. The bytes are safe either way, hence no error.
    void SyncDirectory() {
        const auto directory = m_Target.has_parent_path() ? m_Target.parent_path() : std::filesystem::path(".");
        const CDescriptor opened = OpenToRead(directory);
        if (opened.IsOpen())
            fsync(opened.Get());
    }

    std::filesystem::path m_Target;
    std::filesystem::path m_Path;
    CDescriptor m_File;
    std::int64_t m_Replaced = 0;
    bool m_Done = false;
};

} // namespace

std::filesystem::path ToPath(std::wstring_view text) { return std::filesystem::path(ToUtf8(text)); }

std::wstring FromPath(const std::filesystem::path& path) { return FromUtf8(path.native()); }

CFileError::CFileError(std::string_view action, const std::filesystem::path& path, int error)
    : std::runtime_error(Describe(action, path, error)), m_Code(error) {}

std::string ReadFile(const std::filesystem::path& path) {
    auto bytes = ReadFileIfExists(path);
    if (!bytes)
        throw CFileError("open", path, ENOENT);
    return *std::move(bytes);
}

std::optional<std::string> ReadFileIfExists(const std::filesystem::path& path) {
    auto file = ReadStampedFileIfExists(path);
    return file ? std::optional(std::move(file->Bytes)) : std::nullopt;
}

std::optional<tagFileStamp> GetFileStamp(const std::filesystem::path& path) {
    struct stat status;
    if (stat(path.c_str(), &status) == 0)
        return MakeStamp(status);
    if (errno == ENOENT)
        return std::nullopt;
    throw CFileError("look at", path, errno);
}

std::optional<tagStampedFile> ReadStampedFileIfExists(const std::filesystem::path& path) {
    const CDescriptor file = OpenToRead(path);
    if (!file.IsOpen() && errno == ENOENT)
        return std::nullopt;
    struct stat status;
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0)
        throw CFileError("open", path, errno);
    const tagFileStamp stamp = MakeStamp(status);
    return tagStampedFile{stamp, ReadAll(file.Get(), stamp.Size, path)};
}

void WriteFileAtomically(const std::filesystem::path& path, std::string_view bytes, EAccess access) {
    WriteFileAtomically(
        path, [&](const TakeBytes& take) { take(bytes); }, access);
}

void WriteFileAtomically(const std::filesystem::path& path, const std::function<void(const TakeBytes&)>& write,
                         EAccess access) {
    CReplacement replacement(FollowLinks(path), access);
    write([&](std::string_view bytes) { replacement.Add(bytes); });
    replacement.TakePlace();
}

} // namespace platform
