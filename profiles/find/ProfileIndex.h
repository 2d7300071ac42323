// What is known of all the profiles in some folders, kept between runs.
#pragma once

#include "ProfileHead.h"

#include <QDateTime>
#include <QHash>
#include <QVector>

/// One profile file.
struct IndexedProfile {
    QString path;
    qint64 bytes = 0;
    qint64 modifiedMs = 0; // since 1970
    QString error;         // why it can't be used; empty: head holds
    ProfileHead head;
};

/// The profiles below some folders, at any depth; file names count for nothing but their suffix ".lcp".
///
/// The heads are kept in one file in the user's cache folder, by path, size and time of change, so that a later run
/// reads only what changed. Two programs may use it at once: each replaces the whole file, and what one lost the next
/// run reads again. A damaged cache is made anew.
class ProfileIndex {
public:
    /// @param cacheFile  empty: kept nowhere. See DefaultCacheFile.
    explicit ProfileIndex(const QString &cacheFile = DefaultCacheFile());

    /// In the user's cache folder; empty if there is none.
    static QString DefaultCacheFile();

    /// Walks @p folders and reads what is new or has changed. What can't be read is in Profiles() with its error.
    /// @return false if there were more than kMostProfiles files: the rest is left out.
    bool Scan(const QStringList &folders);

    /// In the order of their paths. Valid until the next Scan.
    const QVector<IndexedProfile> &Profiles() const { return m_profiles; }
    /// Files that the last Scan read, as against those it knew.
    int FilesRead() const { return m_filesRead; }

    static constexpr int kMostProfiles = 100'000; // an index of 60 MB; the largest collection known has 6,000
    static constexpr int kMostDepth = 32;         // folders within folders

private:
    void LoadCache();
    void SaveCache() const;
    void Walk(const QString &folder, int depth, QStringList *files) const;

    QString m_cacheFile;
    QHash<QString, IndexedProfile> m_known; // by path
    QVector<IndexedProfile> m_profiles;
    int m_filesRead = 0;
};
