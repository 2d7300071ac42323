// What is known of the machine.
#pragma once

#include <QString>

class KSystemInfo {
public:
    /// Bytes that an unprivileged user may still take on the file system of @p path, and its whole size. Both are 0
    /// for a path that doesn't exist. Any thread.
    static void DiskInfo(const QString &path, unsigned long long &freeBytes, unsigned long long &totalBytes);
};
