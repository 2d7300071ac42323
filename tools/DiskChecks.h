// Checks of free space, write access and missing files, with messages for users. All functions are thread-safe.
#pragma once

#include <QString>

/// Returns the free bytes on the file system of @p path, including those reserved for root; -1 if it can't be queried,
/// for example because the path doesn't exist.
qint64 getFreeDiskSpace(QString path);

/// Returns whether the disk of @p fileName has room for @p size bytes; true if the file's folder can't be queried.
bool CheckForDiskSpace(QString fileName, qint64 size);

/// Explains a failed save: throws a KException if the disk has no room for @p size bytes or the file can't be opened
/// for writing. Otherwise returns, after creating an empty file if there was none.
void CheckAndThrowForDiskSpace(QString fileName, qint64 size, QString where);

/// Throws a KException if @p fileName doesn't exist; its message begins with a line feed.
void CheckIfFileExists(QString fileName, QString where);
