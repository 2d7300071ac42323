#include "WizardCommand.h"

#include "Console.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "wizard/CorrectionWizard.h"
#include "wizard/WizardPlugin.h"

ExitCode RunWizard(const WizardOptions &options, Console *console)
{
    InterruptGuard guard;
    const QString problem = ChooseDisplay();
    if (!problem.isEmpty()) {
        console->Failure(QString(), problem);
        return kSomeFailed;
    }
    ProgramName name;
    HostApplication application(name.argc, name.argv);
    application.TranslateWindows();
    application.MakeThumbnails();
    if (!application.SettingsProblem().isEmpty())
        console->Note(QString(), application.SettingsProblem());
    WizardPlugin plugin(&application, options.plugin, options.lensPath, &guard);
    if (!plugin.Problem().isEmpty()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    CorrectionWizard wizard(&application, plugin.Processes(), plugin.Correction(), &guard);
    QStringList files = options.files;
    for (QString &file : files) {
        if (file.startsWith(QLatin1Char(':'))) // otherwise QFile would take it for a Qt resource
            file.prepend(QLatin1String("./"));
    }
    wizard.Add(files);
    wizard.show();
    HostApplication::exec();
    return wizard.FailedCount() > 0 ? kSomeFailed : kAllDone;
}
