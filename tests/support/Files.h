// Writes and reads test files in one call.
#pragma once

#include <QFile>

/// Writes a file and returns @p path. Aborts the program on failure.
inline QString WriteFile(const QString &path, const QByteArray &bytes = {})
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
    return path;
}

/// Reads a file. On failure, returns a text that no test writes.
inline QByteArray ReadFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}
