// Bytes of a test's own files in one call.
#pragma once

#include <QFile>

/// Returns @p path. Ends the program if it can't write.
inline QString WriteFile(const QString &path, const QByteArray &bytes = {})
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
    return path;
}

/// A text no test writes, if it can't read.
inline QByteArray ReadFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}
