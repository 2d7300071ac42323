// The private folder in which one picture's output comes into being.
#pragma once

#include "OutputPlan.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <memory>

class InterruptGuard;

/// The plug-in writes beside the file that it is given, over whatever is there. So it is given the picture under its
/// own name in a folder of its own, made inside the output folder: same file system, hence a whole output moves into
/// place in one step, and an existing one is untouched until then. Whatever else is left goes with this object, or with
/// the interruption that the guard catches.
///
/// All functions throw KException, with a message that says what could not be done.
class WorkFolder {
    Q_DECLARE_TR_FUNCTIONS(WorkFolder)
public:
    /// Makes @p outputFolder (absolute) if it doesn't exist, and the private folder in it.
    WorkFolder(const QString &outputFolder, InterruptGuard *guard);
    ~WorkFolder();
    WorkFolder(const WorkFolder &) = delete;
    WorkFolder &operator=(const WorkFolder &) = delete;

    /// Brings @p picture (absolute) in, as a link or, where the file system knows no links, as a copy.
    /// @return its name in here.
    QString Admit(const QString &picture);

    /// Moves @p result, a file in here, to @p target in the output folder. Unless @p existing is Overwrite, a file
    /// that came to stand there meanwhile stays.
    void Publish(const QString &result, const QString &target, ExistingOutput existing);

    /// @p text with the names of this folder's files turned into those that the user knows.
    QString WithKnownNames(QString text) const;

private:
    QString m_outputFolder;
    InterruptGuard *m_guard;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_picture; // as admitted
    QString m_admitted;
};
