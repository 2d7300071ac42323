// Can a file be read or written: the answers, and the messages that users read. All functions: any thread.
#pragma once

#include <QString>

/// All free bytes on the file system of @p path, those for root included; -1 if the path doesn't exist.
qint64 getFreeDiskSpace(QString path);

/// Whether @p size bytes fit into the folder of @p fileName. A folder that can't be asked counts as roomy.
bool CheckForDiskSpace(QString fileName, qint64 size);

/// To be called after a failed save, to say why: throws a KException if the disk lacks @p size bytes or the file can't
/// be opened for writing, otherwise returns. Trap: opening creates a file that wasn't there, empty.
void CheckAndThrowForDiskSpace(QString fileName, qint64 size, QString where);

/// Throws a KException if @p fileName doesn't exist; its message begins with a line feed.
void CheckIfFileExists(QString fileName, QString where);
