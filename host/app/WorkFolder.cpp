#include "WorkFolder.h"

#include "KException.h"
#include "ReplacedFile.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace {

QString SystemError(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

[[noreturn]] void ThrowCannotWrite(const QString &file, const QString &why)
{
    throw KException(WorkFolder::tr("cannot write \"%1\": %2").arg(file, why), KPlace());
}

[[noreturn]] void ThrowCannotWriteInto(const QString &folder, const QString &why)
{
    throw KException(WorkFolder::tr("cannot write into the folder \"%1\": %2").arg(folder, why), KPlace());
}

/// Renames a file, but doesn't replace an existing @p to. @return 0 or the error.
int MoveIfAbsent(const QByteArray &from, const QByteArray &to)
{
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // Some file systems, such as NFS, don't support this kind of rename. A hard link doesn't replace files either.
    if (link(from.constData(), to.constData()) == 0)
        return 0; // the other name is removed with the work folder
    if (errno == EEXIST)
        return errno;
    // No hard links either: check and rename.
    if (access(to.constData(), F_OK) == 0)
        return EEXIST;
    return std::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

} // namespace

void WorkFolder::MakeOutputFolder(const QString &path)
{
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(path).constData(), error);
    if (error) {
        throw KException(WorkFolder::tr("cannot create the folder \"%1\": %2")
                             .arg(path, QString::fromLocal8Bit(error.message().c_str())),
                         KPlace());
    }
}

WorkFolder::WorkFolder(const QString &outputFolder, InterruptGuard *guard)
    : m_outputFolder(outputFolder), m_folder(outputFolder, guard)
{
    if (!m_folder.Problem().isEmpty())
        ThrowCannotWriteInto(outputFolder, m_folder.Problem());
}

QString WorkFolder::Admit(const QString &picture)
{
    m_picture = picture;
    m_admitted = m_folder.FilePath(QFileInfo(picture).fileName());
    if (symlink(QFile::encodeName(picture).constData(), QFile::encodeName(m_admitted).constData()) == 0)
        return m_admitted;
    const int error = errno;
    QFile file(picture);
    if (!file.copy(m_admitted)) {
        const bool supportsLinks = error != EPERM && error != EOPNOTSUPP && error != ENOSYS;
        ThrowCannotWriteInto(m_outputFolder, supportsLinks ? SystemError(error) : file.errorString());
    }
    return m_admitted;
}

bool WorkFolder::Publish(const QString &result, const QString &target) const
{
    const int error = MoveIfAbsent(QFile::encodeName(result), QFile::encodeName(target));
    if (error && error != EEXIST)
        ThrowCannotWrite(target, SystemError(error));
    return error == 0;
}

void WorkFolder::Publish(const QString &result, const ReplacedFile &target) const
{
    const QString why = target.ReplaceBy(result);
    if (!why.isEmpty())
        ThrowCannotWrite(target.Path(), why);
}

QString WorkFolder::WithKnownNames(QString text) const
{
    // Don't match the beginning of a longer name, such as the output's.
    const QRegularExpression admitted(QRegularExpression::escape(m_admitted) + QStringLiteral("(?![\\w.])"));
    for (auto match = admitted.match(text); match.hasMatch(); match = admitted.match(text))
        text.replace(match.capturedStart(), match.capturedLength(), m_picture);
    return text.replace(m_folder.Path(), m_outputFolder);
}
