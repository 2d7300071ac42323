#include "source.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace imagefile {

Source::~Source()
{
    if (m_file >= 0)
        ::close(m_file);
}

Status Source::Open(const std::string &path)
{
    m_path = path;
    m_file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); // don't block on a pipe without a writer
    if (m_file < 0)
        return Status::Fail(GFL_ERROR_FILE_OPEN, Text("can't open %s: %s", path.c_str(), std::strerror(errno)));
    struct stat status = {};
    if (::fstat(m_file, &status) != 0 || !S_ISREG(status.st_mode))
        return Status::Fail(GFL_ERROR_FILE_OPEN, Text("%s is not a regular file", path.c_str()));
    m_size = static_cast<std::uint64_t>(status.st_size);
    return Status::Ok();
}

Status Source::Check() const
{
    if (m_shrank)
        return Status::Fail(GFL_ERROR_FILE_READ, Text("%s was truncated while being read", m_path.c_str()));
    if (m_failure == 0)
        return Status::Ok();
    return Status::Fail(GFL_ERROR_FILE_READ, Text("can't read %s: %s", m_path.c_str(), std::strerror(m_failure)));
}

std::size_t Source::ReadAt(std::uint64_t offset, void *buffer, std::size_t length) const
{
    if (offset >= m_size || length == 0) // nothing to read: m_data or buffer may be null
        return 0;
    length = static_cast<std::size_t>(std::min<std::uint64_t>(length, m_size - offset));
    if (m_data) {
        std::memcpy(buffer, m_data + offset, length);
        return length;
    }
    std::size_t done = 0;
    while (done < length) {
        const ssize_t count =
            ::pread(m_file, static_cast<char *>(buffer) + done, length - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            m_failure = errno;
        if (count == 0) // before the recorded end
            m_shrank = true;
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

} // namespace imagefile
