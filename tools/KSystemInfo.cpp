#include "KSystemInfo.h"

#include <sys/vfs.h>

void KSystemInfo::DiskInfo(const QString &path, unsigned long long &freeBytes, unsigned long long &totalBytes)
{
    freeBytes = 0;
    totalBytes = 0;
    struct statfs disk;
    if (statfs(path.toLocal8Bit().constData(), &disk) != 0)
        return;
    const auto blockBytes = static_cast<unsigned long long>(disk.f_bsize);
    freeBytes = disk.f_bavail * blockBytes;
    totalBytes = disk.f_blocks * blockBytes;
}
