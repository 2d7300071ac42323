// The private folder in which one picture's output comes into being.
#pragma once

#include "PrivateFolder.h"

#include <QCoreApplication>

class ReplacedFile;

/// The plug-in writes beside the file that it is given, over whatever is there. So it is given the picture under its
/// own name in a private folder made inside the output folder: same file system, hence a whole output moves into
/// place in one step, and an existing one is untouched until then. Whatever else is left is removed with this object,
/// or by the interruption that the guard catches.
///
/// All functions throw KException, with a message that says what could not be done.
class WorkFolder {
    Q_DECLARE_TR_FUNCTIONS(WorkFolder)
public:
    /// Makes the folder @p path (absolute), with those above it, if it doesn't exist.
    static void MakeOutputFolder(const QString &path);

    /// Makes the private folder in @p outputFolder (absolute), which exists.
    WorkFolder(const QString &outputFolder, InterruptGuard *guard);

    /// Brings @p picture (absolute) in, as a link or, where the file system knows no links, as a copy.
    /// @return its name in here.
    QString Admit(const QString &picture);

    /// Moves @p result, a file in here, to @p target in the output folder, where nothing stood.
    /// @return false if something came to stand there meanwhile, which stays.
    [[nodiscard]] bool Publish(const QString &result, const QString &target) const;
    /// Moves @p result to @p target, be there a file or not.
    void Publish(const QString &result, const ReplacedFile &target) const;

    /// @p text with the names of this folder's files turned into those that the user knows.
    QString WithKnownNames(QString text) const;

private:
    QString m_outputFolder;
    PrivateFolder m_folder;
    QString m_picture; // as admitted
    QString m_admitted;
};
