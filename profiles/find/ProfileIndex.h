// Index of all profiles in some folders, kept between runs.
#pragma once

#include "ProfileHead.h"

#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QVector>

/// A file or folder that cannot be used, and why.
struct UnreadPath {
    QString path; // with replacement characters if it isn't UTF-8
    QString error;
};

/// One profile file.
struct IndexedProfile {
    QString path;
    qint64 bytes = 0;
    qint64 modifiedMs = 0; // since the epoch
    QString error;         // why it cannot be used; empty: `head` is valid
    ProfileHead head;
};

/// Index of the profiles in some folders and their subfolders. Files are recognized by the suffix ".lcp".
///
/// The heads are cached in one file in the user's cache folder, by path, size and modification time, so that a later
/// run reads only changed files. Two programs may use it at once: each replaces the whole file, and the next run reads
/// lost entries again. A damaged cache is rebuilt, and unfinished files left by a killed program are removed after an
/// hour.
class ProfileIndex {
public:
    /// @param cacheFile  empty: no cache. See DefaultCacheFile.
    explicit ProfileIndex(const QString &cacheFile = DefaultCacheFile());

    /// Returns a path in the user's cache folder; empty if there is no cache folder.
    static QString DefaultCacheFile();

    /// Scans @p folders and reads new and changed files. Unreadable files are in Profiles() with their error.
    /// @return false if there are more than kMaxIndexedProfiles files; those beyond the limit are ignored.
    bool Scan(const QStringList &folders);

    /// Returns the profiles in the order of their paths. Valid until the next Scan.
    const QVector<IndexedProfile> &Profiles() const { return m_profiles; }
    /// Returns the folders that the last Scan could not list.
    const QVector<UnreadPath> &UnreadFolders() const { return m_unreadFolders; }
    /// Returns the number of files that the last Scan read because they were not cached.
    int FilesRead() const { return m_filesRead; }

private:
    void LoadCache();
    void SaveCache() const;
    void RemoveLeftovers() const;
    void Walk(const QString &folder, int depth, QSet<QString> *walked, QStringList *files);
    void AddMisnamed(const QString &folder, QStringList *files);

    QString m_cacheFile;
    QHash<QString, IndexedProfile> m_known; // by path
    QVector<IndexedProfile> m_profiles;
    QVector<UnreadPath> m_unreadFolders;
    int m_filesRead = 0;
};
