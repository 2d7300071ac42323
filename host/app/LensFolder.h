// The folder of lens profiles, under the names that the plug-in expects.
#pragma once

#include "PrivateFolder.h"

#include <QString>

/// Profiles are stored as FOLDER/BRAND/FILE.lcp. The plug-in joins folder and brand with a backslash on every platform,
/// so on systems other than Windows it looks for a folder named "FOLDER\BRAND". This class creates a folder of links in
/// which both names lead to the profiles.
class LensFolder {
public:
    /// @param folder  the user's folder; if it doesn't exist, the folder of links is empty.
    LensFolder(const QString &folder, InterruptGuard *guard);

    /// Returns the user's folder as an absolute path.
    QString Folder() const { return m_folder; }
    /// Returns why the folder of links could not be created, in one line; empty if it exists.
    QString Problem() const;
    /// Returns the path of the folder of links, for the plug-in; empty if it could not be created.
    QString Place() const;
    /// Returns a private folder for temporary files.
    QString Scratch() const { return m_place.Path(); }

private:
    QString m_folder;
    PrivateFolder m_place;
};
