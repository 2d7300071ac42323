// The correction of a picture, with the profile found where none was chosen.
#pragma once

#include "Fit.h"
#include "ProfileMatch.h"

#include <QMutex>
#include <QStringList>

#include <memory>

/// Folders that are searched where the user names none: "vitrelux/profiles" in the XDG data folders, then where raw
/// converters of this user keep lens profiles, Wine's prefixes included. Only those that exist, best first.
QStringList DefaultProfileFolders();

/// Fits pictures one after another by the profiles of some folders, and by lensfun's database where none of them fits.
/// The index of the profiles is read with the first picture that needs it. Any thread; searches wait for each other.
class PictureFitter {
public:
    /// @param folders    searched at any depth.
    /// @param cacheFile  of the index; empty: none.
    explicit PictureFitter(const QStringList &folders, const QString &cacheFile = ProfileIndex::DefaultCacheFile());

    /// Decides how the picture is corrected: by options.profile if the user chose one, else by what is found. What the
    /// user typed goes before what the file says. Nothing is thrown; the image module must have started.
    FitResult Fit(const PictureFacts &facts, const FitOptions &options);

private:
    using Profile = std::shared_ptr<const LensProfile>;
    struct ReadFile {
        QString path;
        qint64 size, changed; // milliseconds
        Profile profile;
    };

    Profile Read(const QString &path, QString *error);
    FitResult FitChosen(const QString &path, const PictureFacts &facts, const FitOptions &options);
    ProfileMatch Find(const PictureFacts &facts, const FitOptions &options);
    bool CorrectAlike(const QString &path, const QString &otherPath, const PictureFacts &facts,
                      const FitOptions &options);

    const QStringList m_folders;
    QMutex m_mutex; // guards all below
    ProfileIndex m_index;
    bool m_scanned = false;
    QVector<ReadFile> m_read; // the last ones, newest first
};
