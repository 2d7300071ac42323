// Shared services of the interface: the choice of file dialogs, and showing files in the desktop's file browser.
#pragma once

#include <QList>

class QObject;
class QUrl;
struct KUIState;

/// State shared between copies of the module; the copy that created it owns it.
struct KUIInstances {
    KUIState *state;
};

/// GUI thread only.
class KUI {
public:
    /// Starts the module with a host's state, which the host keeps, or with a new one for null. A second start does
    /// nothing.
    static void init(KUIInstances *instances);
    /// Stops the module: frees its state, or releases a host's.
    static void exit();

    /// Registers "closure-library.rcc" from the application's folder, once; logs a critical message if it is not
    /// available.
    static void loadJSLibraries();

    /// Returns a value for QFileDialog::Options: 0 for the system's dialogs, QFileDialog::DontUseNativeDialog (16) for
    /// Qt's. 0 before init.
    static int UseSystemFileDialog();
    /// No effect before init.
    static void SetUseSystemFileDialog(bool use);

    /// Opens the folders of @p files, each once, in the desktop's file browser. @p context is not used.
    static void SelectInFileBrowser(QObject *context, const QList<QUrl> &files);

    static KUIInstances ms_instances; // of this copy, for hosts that share it
};
