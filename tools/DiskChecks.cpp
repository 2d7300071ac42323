#include "DiskChecks.h"

#include "KException.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/statvfs.h>

#include <limits>

qint64 getFreeDiskSpace(QString path)
{
    struct statvfs disk;
    if (statvfs(path.toLocal8Bit().constData(), &disk) != 0)
        return -1;
    qint64 bytes = 0;
    if (__builtin_mul_overflow(disk.f_bfree, disk.f_frsize, &bytes))
        return std::numeric_limits<qint64>::max(); // network file systems without a limit report up to 2^64 bytes
    return bytes;
}

bool CheckForDiskSpace(QString fileName, qint64 size)
{
    const qint64 freeBytes = getFreeDiskSpace(QFileInfo(fileName).absolutePath());
    return freeBytes == -1 || size <= freeBytes;
}

void CheckAndThrowForDiskSpace(QString fileName, qint64 size, QString where)
{
    const QFileInfo info(fileName);
    if (!CheckForDiskSpace(fileName, size)) {
        throw KException(
            QCoreApplication::translate("KException", "Not enough free space on \"%1\" to finish operation")
                .arg(info.absolutePath()),
            where);
    }
    QFile file(info.absoluteFilePath());
    if (file.open(QIODevice::ReadWrite))
        return;
    throw KException(
        QCoreApplication::translate("KException", "Cannot write into file \"%1\"").arg(info.absoluteFilePath()), where);
}

void CheckIfFileExists(QString fileName, QString where)
{
    const QFileInfo info(fileName);
    if (info.exists())
        return;
    throw KException(
        QLatin1Char('\n')
            + QCoreApplication::translate("KException", "File \"%1\" is not found").arg(info.absoluteFilePath()),
        where);
}
