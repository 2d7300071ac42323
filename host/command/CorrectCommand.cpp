#include "CorrectCommand.h"

#include "Console.h"
#include "CorrectRun.h"
#include "KException.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PluginLoader.h"
#include "app/ProfileLookup.h"
#include "app/SearchedFolders.h"

#include <algorithm>

namespace {

/// Returns this shard's pictures. Output names are assigned to the pictures of all shards, so that they don't depend on
/// how the pictures are divided.
QVector<PlannedPicture> PlanShard(const CorrectOptions &options, QVector<NamedPicture> pictures)
{
    if (options.shard.count > 1) {
        std::sort(pictures.begin(), pictures.end(),
                  [](const NamedPicture &a, const NamedPicture &b) { return a.name < b.name; });
    }
    const QVector<PlannedPicture> all = PlanOutputs(pictures, options.outputs);
    QVector<PlannedPicture> mine;
    for (int i = options.shard.index - 1; i < all.size(); i += options.shard.count)
        mine.append(all[i]);
    return mine;
}

} // namespace

ExitCode RunCorrect(const CorrectOptions &options, Console *console)
{
    InterruptGuard guard;
    const PictureFiles files = ListPictures(options.pictures);
    ChooseDisplayless();
    const CommandApplication application;
    if (!options.plain) // plain corrections support only pictures that the kernel accepts
        application->Accept(options.convert ? AcceptedPictures::Converted : AcceptedPictures::GrayAndTiled);
    if (!application->SettingsProblem().isEmpty())
        console->Note(QString(), application->SettingsProblem());
    std::unique_ptr<ProfileLookup> lookup;
    if (options.plain && options.profile.isEmpty())
        lookup = std::make_unique<ProfileLookup>(application.Get(), options.lensPath, &guard);
    std::unique_ptr<SearchedFolders> folders;
    if (!options.plain)
        folders = std::make_unique<SearchedFolders>(application.Get(), options.lensPath);
    PictureCorrector corrector(options, application.Get(), lookup.get(), folders.get(), &guard);
    CorrectRun run(options, PlanShard(options, files.pictures), application.Get(), &corrector, &guard, console);
    const int threads = run.ShareProcessors();
    const PluginLoader plugin(options.plugin, options.plain ? CorrectionMode::Plain : CorrectionMode::Fitted);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    for (const QString &folder : files.unreadable)
        console->Failure(folder, QStringLiteral("cannot be read"));
    const ExitCode result = run.CorrectAll(plugin, threads);
    if (guard.IsAskedToStop())
        guard.EndAsInterrupted();
    return files.unreadable.isEmpty() ? result : kSomeFailed;
}
