#include "WizardCommand.h"

#include "Console.h"
#include "CorrectionWizard.h"
#include "HostApplication.h"
#include "InterruptGuard.h"
#include "PluginLoader.h"

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
    const PluginLoader plugin(options.plugin);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    CorrectionWizard wizard(&application, plugin.Process(), &guard);
    wizard.Add(options.files);
    wizard.show();
    HostApplication::exec();
    return wizard.FailedCount() > 0 ? kSomeFailed : kAllDone;
}
