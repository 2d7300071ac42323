#include "WorkFolder.h"

#include "InterruptGuard.h"
#include "KException.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace {

QString SystemError(int error)
{
    return qt_error_string(error);
}

[[noreturn]] void ThrowCannotWrite(const QString &folder, const QString &why)
{
    throw KException(WorkFolder::tr("cannot write into the folder \"%1\": %2").arg(folder, why), KPlace());
}

/// rename(2) that leaves an existing @p to alone. @return 0 or the error.
int MoveIfAbsent(const QByteArray &from, const QByteArray &to)
{
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without that kind of rename, such as NFS. A hard link doesn't replace either.
    if (link(from.constData(), to.constData()) == 0)
        return 0; // the other name goes with the work folder
    if (errno == EEXIST)
        return errno;
    // Without links either: what is left is to look and to rename.
    if (access(to.constData(), F_OK) == 0)
        return EEXIST;
    return std::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

} // namespace

WorkFolder::WorkFolder(const QString &outputFolder, InterruptGuard *guard)
    : m_outputFolder(outputFolder), m_guard(guard)
{
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(outputFolder).constData(), error);
    if (error) {
        throw KException(WorkFolder::tr("cannot make the folder \"%1\": %2")
                             .arg(outputFolder, QString::fromLocal8Bit(error.message().c_str())),
                         KPlace());
    }
    m_guard->Protect([this] {
        m_folder = std::make_unique<QTemporaryDir>(m_outputFolder + QLatin1String("/.vitrelux-XXXXXX"));
        return m_folder->path();
    });
    if (!m_folder->isValid())
        ThrowCannotWrite(outputFolder, m_folder->errorString());
}

WorkFolder::~WorkFolder()
{
    const QString path = m_folder->path();
    m_folder.reset();
    m_guard->Release(path);
}

QString WorkFolder::Admit(const QString &picture)
{
    m_picture = picture;
    m_admitted = m_folder->filePath(QFileInfo(picture).fileName());
    if (symlink(QFile::encodeName(picture).constData(), QFile::encodeName(m_admitted).constData()) == 0)
        return m_admitted;
    QFile file(picture);
    if (!file.copy(m_admitted))
        ThrowCannotWrite(m_outputFolder, file.errorString());
    return m_admitted;
}

void WorkFolder::Publish(const QString &result, const QString &target, ExistingOutput existing)
{
    const QByteArray from = QFile::encodeName(result);
    const QByteArray to = QFile::encodeName(target);
    const int error = existing != ExistingOutput::Overwrite  ? MoveIfAbsent(from, to)
        : std::rename(from.constData(), to.constData()) == 0 ? 0
                                                             : errno;
    if (error)
        throw KException(WorkFolder::tr("cannot write \"%1\": %2").arg(target, SystemError(error)), KPlace());
}

QString WorkFolder::WithKnownNames(QString text) const
{
    // Not where the output's longer name begins with the picture's.
    const QRegularExpression admitted(QRegularExpression::escape(m_admitted) + QStringLiteral("(?![\\w.])"));
    for (auto match = admitted.match(text); match.hasMatch(); match = admitted.match(text))
        text.replace(match.capturedStart(), match.capturedLength(), m_picture);
    return text.replace(m_folder->path(), m_outputFolder);
}
