// The correction of a picture, with the chosen profile or one found automatically.
#pragma once

#include "Fit.h"
#include "ProfileMatch.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>

/// Returns the folders to search if the user names none: "vitrelux/profiles" in the XDG data folders, then the profile
/// folders of raw converters in this user's Wine prefixes. Only existing ones, in order of preference.
QStringList DefaultProfileFolders();
/// Returns the path of "vitrelux/profiles" in the user's data folder, even if no such folder exists.
QString UserProfileFolder();

/// Returns the name to show for FitResult::profile: the file's name, or "lensfun: MAKER/LENS".
QString ShownProfileName(const QString &profile);

/// Fitter of pictures, with the profiles of some folders, or with lensfun's database if none of them fits. Reads the
/// profile index for the first picture that needs it. Thread-safe; one thread at a time reads the index or a profile.
class PictureFitter {
public:
    /// @param folders    searched recursively.
    /// @param cacheFile  cache of the index; empty: no cache.
    explicit PictureFitter(const QStringList &folders, const QString &cacheFile = ProfileIndex::DefaultCacheFile());

    /// Decides how the picture is corrected: with options.profile if the user chose one, otherwise with the one found.
    /// Typed facts override the file's. Throws only std::bad_alloc; the image module must have started.
    FitResult Fit(const PictureFacts &facts, const FitOptions &options);

private:
    using Profile = std::shared_ptr<const LensProfile>;
    struct ReadFile {
        QString path;
        qint64 size, changed; // bytes; milliseconds since the epoch
        Profile profile;
    };

    Profile Read(const QString &path, QString *error);
    FitResult FitChosen(const QString &path, const PictureFacts &facts, const FitOptions &options);
    ProfileMatch Find(const PictureFacts &facts, const FitOptions &options);
    std::function<bool(const QString &, const QString &)> Comparison(const PictureFacts &facts,
                                                                     const FitOptions &options);

    const QStringList m_folders;
    std::mutex m_mutex; // guards all members below
    ProfileIndex m_index;
    bool m_scanned = false;
    QVector<ReadFile> m_read; // most recently used first
};
