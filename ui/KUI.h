// Shared services of the interface: which file dialogs are used, and files shown in the desktop's file browser.
#pragma once

#include <QList>

class QObject;
class QUrl;
struct KUIState;

/// What one copy of the module shares with another; the state belongs to the copy that made it.
struct KUIInstances {
    KUIState *state;
};

/// GUI thread only.
class KUI {
public:
    /// Starts the module: on a host's state, which stays the host's, or alone for null. A second start does nothing.
    static void init(KUIInstances *instances);
    /// Ends what init began: a state of its own is freed, a host's is let go.
    static void exit();

    /// Registers "closure-library.rcc" of the application's folder, once; a critical log line if it can't be had.
    static void loadJSLibraries();

    /// A value for QFileDialog::Options: 0 for the system's dialogs, QFileDialog::DontUseNativeDialog (16) for Qt's
    /// own. The system's before init.
    static int UseSystemFileDialog();
    /// Without effect before init.
    static void SetUseSystemFileDialog(bool use);

    /// Opens the folders of @p files, each once, in the desktop's file browser. @p context is not used.
    static void SelectInFileBrowser(QObject *context, const QList<QUrl> &files);

    static KUIInstances ms_instances; // of this copy, for hosts that share it
};
