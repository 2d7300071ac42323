// The folders in which fitted corrections look for profiles.
#pragma once

#include <QStringList>

class HostApplication;

/// The same for the plug-in and for fits of the host's own: the folder that the user names, else the one of the
/// plug-in's settings if it exists, else the usual places. To be made before the plug-in is loaded, which reads its
/// folder then.
class SearchedFolders {
public:
    /// @param given  shadows the stored folder; empty: none.
    SearchedFolders(HostApplication *application, const QString &given);
    ~SearchedFolders();
    SearchedFolders(const SearchedFolders &) = delete;
    SearchedFolders &operator=(const SearchedFolders &) = delete;

    /// Once the plug-in is loaded.
    QStringList All() const;
    /// Why nothing can be found there, in one line: the folder that the user names doesn't exist. Empty if it does.
    QString Problem() const;

private:
    HostApplication *m_application;
    QString m_given;  // absolute
    QString m_stored; // as the plug-in got it
};
