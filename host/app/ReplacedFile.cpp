#include "ReplacedFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QScopeGuard>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString SystemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// Returns the path at the end of a chain of links; it need not exist. A circular chain gives one of its links.
QByteArray FollowLinks(QByteArray path)
{
    constexpr int kMaxLinks = 40; // Linux's limit
    for (int i = 0; i < kMaxLinks; ++i) {
        char link[PATH_MAX];
        const ssize_t length = readlink(path.constData(), link, sizeof link);
        if (length <= 0)
            break;
        const QByteArray target(link, static_cast<int>(length));
        path = target.startsWith('/') ? target : path.left(path.lastIndexOf('/') + 1) + target;
    }
    return path;
}

/// Sets a file's permissions and flushes it to disk. @return 0, or -1 with errno set.
int SetModeAndSync(const char *file, mode_t mode)
{
    const int descriptor = open(file, O_RDONLY | O_CLOEXEC);
    if (descriptor == -1)
        return -1;
    const auto closed = qScopeGuard([descriptor] { close(descriptor); });
    if (fchmod(descriptor, mode) != 0)
        return -1;
    return fsync(descriptor) != 0 && errno != EINVAL ? -1 : 0; // EINVAL: not supported by the file system
}

} // namespace

ReplacedFile::ReplacedFile(const QString &path) : m_path(QFile::decodeName(FollowLinks(QFile::encodeName(path)))) { }

QString ReplacedFile::Problem() const
{
    const QByteArray name = QFile::encodeName(m_path);
    struct stat status = {};
    if (stat(name.constData(), &status) != 0)
        return errno == ENOENT ? QString() : SystemError();
    if (!S_ISREG(status.st_mode))
        return QCoreApplication::translate("WorkFolder", "it exists and is not a regular file");
    return faccessat(AT_FDCWD, name.constData(), W_OK, AT_EACCESS) == 0 ? QString() : SystemError();
}

QString ReplacedFile::ReplaceBy(const QString &from) const
{
    const QString problem = Problem(); // the file may have changed in the meantime
    if (!problem.isEmpty())
        return problem;
    const QByteArray source = QFile::encodeName(from), target = QFile::encodeName(m_path);
    struct stat status = {};
    if (stat(target.constData(), &status) == 0 && SetModeAndSync(source.constData(), status.st_mode & 07777) != 0)
        return SystemError();
    return std::rename(source.constData(), target.constData()) == 0 ? QString() : SystemError();
}
