// Shared services of the user interface: choice of file dialogs, and opening folders in the desktop's file browser.
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
    /// Starts the module with a host's state, which the host still owns, or with a new state if @p instances is null.
    /// A second call does nothing.
    static void init(KUIInstances *instances);
    /// Stops the module: frees its own state, or stops using the host's.
    static void exit();

    /// Registers "closure-library.rcc" from the application's folder, once; logs a critical message if that fails.
    static void loadJSLibraries();

    /// Returns a value for QFileDialog::Options: 0 for the system's dialogs, QFileDialog::DontUseNativeDialog (16) for
    /// Qt's. 0 before init.
    static int UseSystemFileDialog();
    /// No effect before init.
    static void SetUseSystemFileDialog(bool use);

    /// Opens the folders of @p files, each once, in the desktop's file browser. @p context is not used.
    static void SelectInFileBrowser(QObject *context, const QList<QUrl> &files);

    static KUIInstances ms_instances; // this copy's state, which a host passes to other copies' init
};
