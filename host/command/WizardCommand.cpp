#include "WizardCommand.h"

#include "Console.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PluginLoader.h"
#include "app/SearchedFolders.h"
#include "wizard/CorrectionWizard.h"

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
    const SearchedFolders folders(&application, options.lensPath);
    if (!folders.Problem().isEmpty()) {
        console->Failure(QString(), folders.Problem());
        return kSomeFailed;
    }
    const PluginLoader plugin(options.plugin, CorrectionMode::Fitted);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    FittedCorrection correction(folders.Folders(), &application, &guard);
    CorrectionWizard wizard(&application, plugin.Process(), &correction, &guard);
    QStringList files = options.files;
    for (QString &file : files) {
        if (file.startsWith(QLatin1Char(':'))) // not a Qt resource
            file.prepend(QLatin1String("./"));
    }
    wizard.Add(files);
    wizard.show();
    HostApplication::exec();
    return wizard.FailedCount() > 0 ? kSomeFailed : kAllDone;
}
