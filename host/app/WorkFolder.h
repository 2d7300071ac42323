// The private folder in which one picture's output is created.
#pragma once

#include "PrivateFolder.h"

#include <QCoreApplication>

class ReplacedFile;

/// The plug-in writes next to its input file and overwrites existing files. Therefore it is given the picture, under
/// its own name, in a private folder inside the output folder. Because that is on the same file system, a complete
/// output moves into place in one step, and an existing one is untouched until then. All other files in the private
/// folder are removed with this object or, on an interruption, by the guard.
///
/// All functions throw KException with a message about the failed operation.
class WorkFolder {
    Q_DECLARE_TR_FUNCTIONS(WorkFolder)
public:
    /// Creates the folder @p path (absolute) and its parents unless they exist.
    static void MakeOutputFolder(const QString &path);

    /// Creates the private folder in @p outputFolder (absolute), which must exist.
    WorkFolder(const QString &outputFolder, InterruptGuard *guard);

    /// Adds @p picture (absolute) as a link or, if the file system has no links, as a copy. @return its path in this
    /// folder.
    QString Admit(const QString &picture);

    /// Moves @p result, a file in this folder, to @p target, a path in the output folder where no file should exist
    /// yet. @return false if one was created there in the meantime; it is kept.
    [[nodiscard]] bool Publish(const QString &result, const QString &target) const;
    /// Moves @p result to @p target, replacing an existing file.
    void Publish(const QString &result, const ReplacedFile &target) const;

    /// Returns @p text with the names of files in this folder replaced by the user's names.
    QString WithKnownNames(QString text) const;

private:
    QString m_outputFolder;
    PrivateFolder m_folder;
    QString m_picture;  // as passed to Admit
    QString m_admitted; // its path in the private folder
};
