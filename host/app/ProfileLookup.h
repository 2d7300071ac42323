// Lookup of the lens profile that the plug-in finds for a picture, or the reason why it finds none.
#pragma once

#include "LensFolder.h"

#include <memory>

class HostApplication;
class ImageDef;
class KIPluginOne2One;

/// Lookup through the plug-in: if it runs with a record that names no profile, it looks one up, stores it in the record
/// and leaves the pixels unchanged. This class runs it on a picture that provides a single pixel.
///
/// Create it before the process object that it runs, because that object reads the setting for the profile folder when
/// it is created. Only one thread at a time may call Find.
class ProfileLookup {
public:
    static const QLatin1String kLensPath; // the plug-in's setting for the profile folder

    /// Returns the folder for @p stored, a value of that setting. A path that isn't absolute, such as the plug-in's
    /// default (a Windows path), is taken relative to the root folder, where it hardly ever exists. It must not be
    /// resolved against the current folder, where pictures may come with other profiles.
    static QString UsableFolder(const QString &stored);

    struct Answer {
        QString profile; // absolute; empty: none
        QString why;     // the reason if there is none, for the user
    };

    /// @param folder  overrides the stored profile folder; empty: the stored one.
    ProfileLookup(HostApplication *application, const QString &folder, InterruptGuard *guard);
    ~ProfileLookup();
    ProfileLookup(const ProfileLookup &) = delete;
    ProfileLookup &operator=(const ProfileLookup &) = delete;

    /// @param process  the last one created while this object exists: each new process object gets a new profile
    /// folder.
    /// @param picture  absolute path.
    Answer Find(KIPluginOne2One *process, const QString &picture);

private:
    QString LookUpInPlugin(KIPluginOne2One *process, const ImageDef &image);
    Answer Judge(const QString &found, const ImageDef &image) const;

    HostApplication *m_application;
    InterruptGuard *m_guard;
    QString m_given;
    std::unique_ptr<LensFolder> m_folder; // null until the plug-in reads the setting
};
