// Which lens profile the plug-in finds for a picture, and why it finds none.
#pragma once

#include "LensFolder.h"

#include <memory>

class HostApplication;
class ImageDef;
class KIPluginOne2One;

/// The plug-in looks a profile up when it is run with a record that names none; it then leaves the pixels as they are
/// and the profile in the record. Here it is run so on a picture that lends a single pixel.
///
/// To be made before the process that it is to run, which reads the folder of profiles when it starts. Find is for one
/// thread at a time.
class ProfileLookup {
public:
    static const QLatin1String kLensPath; // the plug-in's setting: the folder of profiles

    /// The folder that @p stored, a value of that setting, stands for. One that isn't absolute, such as the plug-in's
    /// default, a path of Windows, is not taken relative to the current folder: there pictures may lie that bring
    /// profiles of their own. It becomes a path that doesn't exist.
    static QString UsableFolder(const QString &stored);

    struct Answer {
        QString profile; // absolute; empty: none
        QString why;     // there is none, for the user
    };

    /// @param folder  of profiles, shadows the stored one; empty: the stored one.
    ProfileLookup(HostApplication *application, const QString &folder, InterruptGuard *guard);
    ~ProfileLookup();
    ProfileLookup(const ProfileLookup &) = delete;
    ProfileLookup &operator=(const ProfileLookup &) = delete;

    /// @param process  the last one that was made while this stands.
    /// @param picture  absolute.
    Answer Find(KIPluginOne2One *process, const QString &picture);

private:
    QString AskPlugin(KIPluginOne2One *process, const ImageDef &image);
    Answer Judge(const QString &found, const ImageDef &image) const;

    HostApplication *m_application;
    InterruptGuard *m_guard;
    QString m_given;
    std::unique_ptr<LensFolder> m_folder; // null until the plug-in has asked for it
};
