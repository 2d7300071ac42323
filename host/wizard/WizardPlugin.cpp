#include "WizardPlugin.h"

#include "KOmp.h"
#include "app/HostApplication.h"

WizardPlugin::WizardPlugin(HostApplication *application, const QString &file, const QString &lensPath,
                           InterruptGuard *guard)
    : m_folders(application, lensPath),
      m_loader(file, CorrectionMode::Fitted),
      m_process(m_loader.Process()),
      m_correction(m_folders.Folders(), application, guard)
{
    if (m_process && EnableUnchosenCorrections(application)) {
        m_another = m_loader.MakeProcess(); // a process object reads the settings when it is created
        if (auto *process = qobject_cast<KIPluginOne2One *>(m_another.get()))
            m_process = process;
    }
    m_processes = std::make_unique<ThreadProcesses>(m_loader, m_process, komp_num_threads);
}

QString WizardPlugin::Problem() const
{
    return m_folders.Problem().isEmpty() ? m_loader.Problem() : m_folders.Problem();
}

/// Enables the corrections for which no choice is stored. @return whether there were any.
bool WizardPlugin::EnableUnchosenCorrections(HostApplication *application) const
{
    bool isChanged = false;
    for (const char *name : {"Disto", "CA", "Falloff"}) {
        const QString key = QString::fromLatin1(name);
        if (application->GetPluginSetting(m_process->UID(), key, QVariant()).isValid())
            continue;
        application->SetPluginSetting(m_process->UID(), key, true);
        isChanged = true;
    }
    return isChanged;
}
