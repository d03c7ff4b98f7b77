#include "platform/file.h"
#include "platform/posix/descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace platform {

namespace {

CDescriptor OpenLockFile(const std::filesystem::path& path) {
    CDescriptor file(RetryInterrupted([&] { return open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600); }));
    if (!file.IsOpen())
        throw CFileError("open lock file", path, errno);
    return file;
}

} // namespace

CFileLock::CFileLock(const std::filesystem::path& path) : m_Descriptor(-1) {
    CDescriptor file = OpenLockFile(path);
    if (RetryInterrupted([&] { return flock(file.Get(), LOCK_EX); }) != 0)
        throw CFileError("lock", path, errno);
    m_Descriptor = file.Detach();
}

std::optional<CFileLock> CFileLock::Try(const std::filesystem::path& path) {
    CDescriptor file = OpenLockFile(path);
    if (RetryInterrupted([&] { return flock(file.Get(), LOCK_EX | LOCK_NB); }) == 0)
        return CFileLock(file.Detach());
    if (errno == EWOULDBLOCK)
        return std::nullopt;
    throw CFileError("lock", path, errno);
}

CFileLock::CFileLock(CFileLock&& other) noexcept : m_Descriptor(std::exchange(other.m_Descriptor, -1)) {}

CFileLock& CFileLock::operator=(CFileLock&& other) noexcept {
    std::swap(m_Descriptor, other.m_Descriptor);
    return *this;
}

// Unlocked by name and not only closed: a child that was forked meanwhile may hold a copy of the descriptor.
CFileLock::~CFileLock() {
    if (m_Descriptor < 0)
        return;
    flock(m_Descriptor, LOCK_UN);
    close(m_Descriptor);
}

} // namespace platform
