#include "PrivateFolder.h"

#include "InterruptGuard.h"

#include <QDirIterator>
#include <QFile>
#include <QScopeGuard>
#include <QSet>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QLatin1String kPrefix(".vitrelux-");
const QLatin1String kRandomPart("XXXXXX");
const QLatin1String kLockName("/.vitrelux-lock"); // differs from any picture's name

enum class Lock { Taken, HeldByOther, NotSupported };

/// Locks a file. The lock belongs to the open file rather than to the process, so it also excludes other threads, and
/// it ends when the last descriptor is closed.
Lock TakeLock(int file)
{
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (fcntl(file, F_OFD_SETLK, &whole) == 0)
        return Lock::Taken;
    return errno == EAGAIN || errno == EACCES ? Lock::HeldByOther : Lock::NotSupported;
}

bool IsUnlinked(int file)
{
    struct stat status = {};
    return fstat(file, &status) == 0 && status.st_nlink == 0;
}

/// Removes a folder whose owner is no longer running. A folder without a lock file is only removed if it is empty: its
/// owner may be about to create that file, and will use another folder if this one is removed.
void RemoveIfAbandoned(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (lstat(name.constData(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid())
        return;
    const int lock = open((name + kLockName.data()).constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (lock == -1) {
        if (errno == ENOENT)
            rmdir(name.constData());
        return;
    }
    if (TakeLock(lock) == Lock::Taken && !IsUnlinked(lock)) {
        const QString why = RemoveFolder(path);
        if (!why.isEmpty())
            PrintNotRemoved(path, why);
    }
    close(lock);
}

/// Removes the private folders of ended processes from @p parent, but only at the first call for that folder, because
/// listing a folder of pictures may take long.
void RemoveAbandoned(const QString &parent)
{
    static std::mutex mutex;
    static QSet<QString> done;
    const std::lock_guard<std::mutex> lock(mutex);
    if (done.contains(parent))
        return;
    done.insert(parent);
    QDirIterator found(parent, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks);
    while (found.hasNext()) {
        found.next();
        const QString name = found.fileName();
        if (name.startsWith(kPrefix) && name.size() == kPrefix.size() + kRandomPart.size())
            RemoveIfAbandoned(found.filePath());
    }
}

} // namespace

QString RemoveFolder(const QString &path)
{
    std::error_code error;
    std::filesystem::remove_all(QFile::encodeName(path).constData(), error);
    return error ? QString::fromLocal8Bit(error.message().c_str()) : QString();
}

void PrintNotRemoved(const QString &path, const QString &why)
{
    std::fprintf(stderr, "vitrelux: cannot remove the work folder \"%s\": %s\n", qUtf8Printable(path),
                 qUtf8Printable(why));
}

PrivateFolder::PrivateFolder(const QString &parent, InterruptGuard *guard) : m_guard(guard)
{
    RemoveAbandoned(parent);
    try {
        m_guard->Protect([&] {
            constexpr int kAttempts = 100; // another process that is starting may remove an unlocked folder
            for (int i = 0; i < kAttempts && !TryToMake(parent); ++i) { }
            return m_path;
        });
    } catch (...) { // no memory to protect the folder; this object's destructor doesn't run
        RemoveFolder(m_path);
        throw;
    }
}

PrivateFolder::~PrivateFolder()
{
    if (m_path.isEmpty())
        return;
    const QString why = RemoveFolder(m_path);
    if (!why.isEmpty())
        PrintNotRemoved(m_path, why);
    m_guard->Release(m_path);
    if (m_lock != -1)
        close(m_lock);
}

/// Creates the folder and locks it. @return false to try again; otherwise either path or problem is set.
bool PrivateFolder::TryToMake(const QString &parent)
{
    const auto fail = [this] { m_problem = QString::fromLocal8Bit(std::strerror(errno)); };
    QByteArray name = QFile::encodeName(parent + QLatin1Char('/') + kPrefix + kRandomPart);
    if (!mkdtemp(name.data())) { // never accessible to others, regardless of the umask
        fail();
        return true;
    }
    auto undo = qScopeGuard([&] { // also if memory runs out while the path is stored
        std::error_code error;
        std::filesystem::remove_all(name.constData(), error);
    });
    m_lock = open((name + kLockName.data()).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (m_lock == -1) {
        if (errno == ENOENT)
            return false;
        fail();
        return true;
    }
    // If the file system has no locks, other processes cannot lock the folder either, so they don't remove it.
    if (TakeLock(m_lock) == Lock::HeldByOther || IsUnlinked(m_lock)) {
        close(m_lock);
        m_lock = -1;
        return false;
    }
    m_path = QFile::decodeName(name);
    undo.dismiss();
    return true;
}
