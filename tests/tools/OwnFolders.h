// Separate data and settings folders for a test, so that it doesn't touch those of the user.
#pragma once

#include <QTemporaryDir>

/// Temporary folders for data and settings. Create them before the application object, since Qt queries the folders
/// only once.
class OwnFolders {
public:
    OwnFolders()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(Data()));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(Config()));
    }

    QString Data() const { return m_dir.filePath(QStringLiteral("data")); }
    QString Config() const { return m_dir.filePath(QStringLiteral("config")); }
    /// Returns the path of the analytics store for an application.
    QString Store(const QString &application) const
    {
        // MD5 of "analytics", computed with md5sum
        return Data() + QLatin1Char('/') + application + QStringLiteral("/68c4283db8074b12df1660b31c0220a9");
    }

private:
    QTemporaryDir m_dir;
};
