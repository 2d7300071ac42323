#include "WizardCommand.h"

#include "Console.h"
#include "app/FileNames.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PluginLoader.h"
#include "app/ProfileLookup.h"
#include "wizard/CorrectionWizard.h"

namespace {

/// Makes the page show and store the folder as the user knows it.
/// @param folder  empty: the stored one.
void PassFolderToPlugin(HostApplication *application, const QString &folder)
{
    const QString given = folder.isEmpty() ? QString() : AbsolutePath(folder);
    application->AdaptPluginSettings([given](const QString &key, const QVariant &stored) {
        if (key != ProfileLookup::kLensPath)
            return stored;
        return QVariant(given.isEmpty() ? ProfileLookup::UsableFolder(stored.toString()) : given);
    });
}

} // namespace

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
    PassFolderToPlugin(&application, options.lensPath);
    const PluginLoader plugin(options.plugin);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    // The lookup uses a folder of links instead of the profile folder, so it needs a separate process object.
    ProfileLookup lookup(&application, options.lensPath, &guard);
    const std::unique_ptr<QObject> second = plugin.MakeProcess();
    auto *lookupProcess = qobject_cast<KIPluginOne2One *>(second.get());
    const auto findProfile = [&](const QString &picture) {
        return lookupProcess ? lookup.Find(lookupProcess, picture).profile : QString();
    };
    CorrectionWizard wizard(&application, plugin.Process(), findProfile, &guard);
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
