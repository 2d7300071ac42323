// The plug-in, prepared for the wizard.
#pragma once

#include "app/FittedCorrection.h"
#include "app/PictureThreads.h"
#include "app/PluginLoader.h"
#include "app/SearchedFolders.h"

/// The plug-in, loaded for fitted corrections. For users who have never stored a choice, all corrections are on, as on
/// the command line; the plug-in alone begins with none. The arguments must outlive the object, and the object must
/// outlive the windows.
class WizardPlugin {
public:
    /// @param file  the plug-in's library; empty: the one installed with this program.
    /// @param lensPath  the only folder that is searched for profiles; empty: the usual ones.
    WizardPlugin(HostApplication *application, const QString &file, const QString &lensPath, InterruptGuard *guard);

    /// Returns why the object cannot be used; empty if it can.
    QString Problem() const;
    /// Returns one process object per CPU; the first one is for the page.
    const std::vector<KIPluginOne2One *> &Processes() const { return m_processes->All(); }
    FittedCorrection *Correction() { return &m_correction; }

private:
    bool EnableUnchosenCorrections(HostApplication *application) const;

    SearchedFolders m_folders; // declared before the plug-in, which reads the stored folder when it is loaded
    PluginLoader m_loader;
    std::unique_ptr<QObject> m_another; // the process object in use, if it isn't the loader's
    KIPluginOne2One *m_process;
    std::unique_ptr<ThreadProcesses> m_processes;
    FittedCorrection m_correction;
};
