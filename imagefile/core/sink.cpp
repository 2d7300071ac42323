#include "sink.h"

#include "allocator.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace imagefile {

namespace {

constexpr int kMaxLinks = 40; // the kernel's limit

std::string FolderOf(const std::string &path) // with its trailing slash; empty for the current folder
{
    return path.substr(0, path.rfind('/') + 1);
}

// Returns the path at the end of a chain of symbolic links; it need not exist. std::filesystem doesn't resolve dangling
// links.
std::string FollowLinks(std::string path)
{
    for (int i = 0; i < kMaxLinks; ++i) {
        char link[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), link, sizeof link);
        if (length <= 0)
            break;
        path = link[0] == '/' ? std::string() : FolderOf(path);
        path.append(link, static_cast<std::size_t>(length));
    }
    return path;
}

thread_local bool isSyncedByCaller = false;

Status CreateFailure(const std::string &path, const char *why)
{
    return Status::Fail(GFL_ERROR_FILE_CREATE, Text("can't create %s: %s", path.c_str(), why));
}

Status WriteFailure(const std::string &path)
{
    return Status::Fail(GFL_ERROR_FILE_WRITE, Text("can't write %s: %s", path.c_str(), std::strerror(errno)));
}

} // namespace

void SetSyncedByCaller(bool isSynced)
{
    isSyncedByCaller = isSynced;
}

FileSink::~FileSink()
{
    if (m_file >= 0)
        ::close(m_file);
    if (!m_temporary.empty())
        ::unlink(m_temporary.c_str());
}

Status FileSink::Create(const std::string &path)
{
    m_target = FollowLinks(path);
    if (Status status = CheckTarget(); !status)
        return status;
    return OpenTemporary();
}

Status FileSink::CheckTarget()
{
    struct stat existing = {};
    m_replaces = ::stat(m_target.c_str(), &existing) == 0;
    m_flushesEarly = m_replaces || isSyncedByCaller;
    if (!m_replaces) // a missing file can be created; other errors, such as circular links, would prevent that
        return errno == ENOENT ? Status::Ok() : CreateFailure(m_target, std::strerror(errno));
    m_mode = existing.st_mode & 07777;
    if (!S_ISREG(existing.st_mode))
        return CreateFailure(m_target, "it is not a regular file");
    if (::faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0)
        return CreateFailure(m_target, std::strerror(errno));
    return Status::Ok();
}

Status FileSink::OpenTemporary()
{
    // The target's name may already have the maximum length, so the temporary one isn't derived from it.
    static std::atomic<unsigned> counter{0};
    constexpr int kTries = 100; // a name is taken only if a crashed process with the same ID left the file
    for (int i = 0; i < kTries; ++i) {
        const std::string name = FolderOf(m_target) + Text(".%x-%x.part", static_cast<unsigned>(::getpid()), counter++);
        m_file = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666); // minus the process's umask
        if (m_file >= 0) {
            m_temporary = name;
            return Status::Ok();
        }
        if (errno != EEXIST)
            break;
    }
    return CreateFailure(m_target, std::strerror(errno));
}

Status FileSink::Commit()
{
    if (m_replaces && ::fchmod(m_file, m_mode) != 0)
        return WriteFailure(m_target);
    // Ensures that the old or the new file survives a system crash. If there is no old file, the new one isn't synced:
    // otherwise a batch of pictures would have to wait for the disk, and the sources still exist.
    if (m_replaces && ::fsync(m_file) != 0 && errno != EINVAL)
        return WriteFailure(m_target);
    const int file = m_file;
    m_file = -1;
    if (::close(file) != 0) // on network disks or with quotas, a lack of space may be reported only here
        return WriteFailure(m_target);
    if (::rename(m_temporary.c_str(), m_target.c_str()) != 0)
        return CreateFailure(m_target, std::strerror(errno));
    m_temporary.clear();
    return Status::Ok();
}

Status FileSink::WriteAt(std::uint64_t offset, const void *data, std::size_t length)
{
    std::size_t done = 0;
    while (done < length) {
        const ssize_t count =
            ::pwrite(m_file, static_cast<const char *>(data) + done, length - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            errno = ENOSPC;
        if (count <= 0)
            return WriteFailure(m_target);
        done += static_cast<std::size_t>(count);
    }
    m_size = std::max<std::uint64_t>(m_size, offset + length);
    StartFlush();
    return Status::Ok();
}

/// Starts flushing new data to disk, without waiting for it. Failures are reported when the file is synced.
void FileSink::StartFlush()
{
    constexpr std::uint64_t kMinFlushBytes = 4 << 20;
    if (!m_flushesEarly || m_size < m_flushed + kMinFlushBytes)
        return;
    ::sync_file_range(m_file, static_cast<off_t>(m_flushed), static_cast<off_t>(m_size - m_flushed),
                      SYNC_FILE_RANGE_WRITE);
    m_flushed = m_size;
}

Status FileSink::ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count)
{
    for (*count = 0; *count < length;) {
        const ssize_t got =
            ::pread(m_file, static_cast<char *>(buffer) + *count, length - *count, static_cast<off_t>(offset + *count));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return Status::Fail(GFL_ERROR_FILE_WRITE,
                                Text("can't read back %s: %s", m_target.c_str(), std::strerror(errno)));
        if (got == 0)
            break;
        *count += static_cast<std::size_t>(got);
    }
    return Status::Ok();
}

MemorySink::~MemorySink()
{
    Release(m_data);
}

std::uint8_t *MemorySink::Take()
{
    return std::exchange(m_data, nullptr);
}

Status MemorySink::WriteAt(std::uint64_t offset, const void *data, std::size_t length)
{
    const std::uint64_t end = offset + length;
    if (end > m_capacity) {
        const std::uint64_t capacity = std::max<std::uint64_t>({end, m_capacity * 2, 65536});
        auto *grown = static_cast<std::uint8_t *>(Reallocate(m_data, capacity));
        if (!grown)
            return Status::Fail(GFL_ERROR_NO_MEMORY,
                                Text("no memory for a file of %llu bytes", static_cast<unsigned long long>(end)));
        m_data = grown;
        m_capacity = capacity;
    }
    if (offset > m_size)
        std::memset(m_data + m_size, 0, offset - m_size);
    if (length > 0)
        std::memcpy(m_data + offset, data, length);
    m_size = std::max(m_size, end);
    return Status::Ok();
}

Status MemorySink::ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count)
{
    *count = offset < m_size ? static_cast<std::size_t>(std::min<std::uint64_t>(length, m_size - offset)) : 0;
    if (*count > 0)
        std::memcpy(buffer, m_data + offset, *count);
    return Status::Ok();
}

} // namespace imagefile
