// A private folder of this process, removed by the destructor.
#pragma once

#include <QString>

#include <memory>

class InterruptGuard;

/// Folder named ".vitrelux-" plus six random characters. A lock on a file in it shows other processes that its owner is
/// running. When a process creates its first folder in a parent folder, it also removes the folders that killed
/// processes left there. Failures to remove a folder are printed on standard error.
class PrivateFolder {
public:
    /// @param parent  an existing folder.
    PrivateFolder(const QString &parent, InterruptGuard *guard);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;

    /// Returns why the folder could not be created; empty if it exists.
    QString Problem() const { return m_problem; }
    /// Returns the absolute path; empty if the folder could not be created.
    QString Path() const { return m_path; }
    QString FilePath(const QString &name) const { return m_path + QLatin1Char('/') + name; }

private:
    bool TryToMake(const QString &parent);

    InterruptGuard *m_guard;
    QString m_path;
    QString m_problem;
    int m_lock = -1; // file descriptor
};

/// Removes a folder and its contents; links are removed, not followed. @return why it failed; empty if it succeeded.
QString RemoveFolder(const QString &path);
/// Prints a message that a work folder could not be removed.
void PrintNotRemoved(const QString &path, const QString &why);
