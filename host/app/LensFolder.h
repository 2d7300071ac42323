// The folder of lens profiles, in the form in which the plug-in walks it.
#pragma once

#include "PrivateFolder.h"

#include <QString>

/// Profiles lie in FOLDER/BRAND/FILE.lcp. The plug-in joins folder and brand by a backslash on every platform, so that
/// elsewhere than on Windows it looks for a folder of the name "FOLDER\BRAND". This is a place made of links in which
/// both are the same.
class LensFolder {
public:
    /// @param folder  of the user's; one that doesn't exist gives an empty place.
    LensFolder(const QString &folder, InterruptGuard *guard);

    /// The user's folder, absolute.
    QString Folder() const { return m_folder; }
    /// Why the place could not be made, in one line; empty if it stands.
    QString Problem() const;
    /// What the plug-in is to be given; empty if the place could not be made.
    QString Place() const;
    /// A private folder for whatever comes with it.
    QString Scratch() const { return m_place.Path(); }

private:
    QString m_folder;
    PrivateFolder m_place;
};
