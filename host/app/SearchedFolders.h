// The folders in which fitted corrections look for profiles.
#pragma once

#include <QStringList>

class HostApplication;

/// The profile folders for the plug-in and the host's fits: the folder named by the user, otherwise the one in the
/// plug-in's settings if it exists, otherwise the default folders. Create it before the plug-in, which reads the
/// setting when it is loaded.
class SearchedFolders {
public:
    /// @param given  overrides the stored folder; empty: none.
    SearchedFolders(HostApplication *application, const QString &given);
    ~SearchedFolders();
    SearchedFolders(const SearchedFolders &) = delete;
    SearchedFolders &operator=(const SearchedFolders &) = delete;

    /// Returns the folders; call it after the plug-in is loaded.
    QStringList Folders() const;
    /// Returns one line saying that the folder named by the user doesn't exist; otherwise empty.
    QString Problem() const;

private:
    HostApplication *m_application;
    QString m_given;  // absolute
    QString m_stored; // as passed to the plug-in
};
