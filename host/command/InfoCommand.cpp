#include "InfoCommand.h"

#include "Console.h"
#include "PictureFit.h"
#include "ProfileFitText.h"
#include "app/FileNames.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PictureHeader.h"
#include "app/PictureSummary.h"
#include "app/PluginLoader.h"
#include "app/ProfileLookup.h"
#include "app/SearchedFolders.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <functional>

namespace {

constexpr int kLabelWidth = 14;

PictureFact ProfileFact(const ProfileLookup::Answer &answer)
{
    const QString label = QStringLiteral("Profile");
    if (!answer.profile.isEmpty())
        return {label, answer.profile, QStringLiteral("profile"), answer.profile};
    return {label, QStringLiteral("none: ") + answer.why, QStringLiteral("noProfile"), answer.why};
}

QString AsText(const QString &file, const PictureSummary &facts)
{
    QString text = OneLine(file) + QLatin1Char('\n');
    for (const PictureFact &fact : facts) {
        if (!fact.label.isEmpty()) // texts from the file may contain line breaks
            text += QStringLiteral("  %1%2\n").arg(fact.label, -kLabelWidth).arg(OneLine(fact.text));
    }
    return text;
}

QString AsJson(const QString &file, const PictureSummary &facts)
{
    QJsonObject object{{QStringLiteral("path"), file}};
    for (const PictureFact &fact : facts) {
        if (!fact.key.isEmpty())
            object.insert(fact.key, fact.value);
    }
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + QLatin1Char('\n');
}

PictureFact ExifFact(const QString &path)
{
    return {QString(), QString(), QStringLiteral("exif"), ExifTable(path)};
}

/// Function that returns facts about the profile that would correct a picture.
using ProfileFinder = std::function<PictureSummary(const QString &path)>;

/// Adds texts as lines and as a list, if there are any.
void AddTexts(const char *label, const char *key, const QStringList &texts, PictureSummary *facts)
{
    if (texts.isEmpty())
        return;
    *facts << PictureFact{QString(), QString(), QLatin1String(key), QJsonArray::fromStringList(texts)};
    for (const QString &text : texts)
        *facts << PictureFact{QLatin1String(label), text, QString(), {}};
}

void AddText(const char *label, const char *key, const QString &text, PictureSummary *facts)
{
    if (!text.isEmpty())
        *facts << PictureFact{QLatin1String(label), text, QLatin1String(key), text};
}

PictureSummary FitFacts(const FitResult &fit)
{
    PictureSummary facts;
    facts << ProfileFact({fit.profile, fit.why});
    if (fit.profile.isEmpty()) {
        AddTexts("Nearest", "nearest", fit.nearest, &facts);
        return facts;
    }
    AddText("Match", "profileReason", fit.reason, &facts);
    AddText("Entries", "entries", fit.entries, &facts);
    AddText("Framing", "framing", FramingText(fit), &facts);
    AddTexts("Assumed", "assumed", fit.assumed, &facts);
    AddText("Left out", "leftOut", fit.why, &facts);
    return facts;
}

/// Returns a picture's lines or its JSON object.
QString Describe(const InfoOptions &options, const QString &file, const QString &path, PictureSummary facts)
{
    if (!options.json)
        return AsText(file, facts) + (options.exif ? Indented(ExifTable(path)) : QString());
    if (options.exif)
        facts << ExifFact(path);
    return AsJson(file, facts);
}

ExitCode ShowAll(const InfoOptions &options, HostApplication *application, const ProfileFinder &find, Console *console)
{
    ExitCode result = kAllDone;
    QString gap; // an empty line between two pictures
    for (const QString &file : options.files) {
        const QString path = AbsolutePath(file);
        const PictureHeader header(path);
        if (!header.Problem().isEmpty()) {
            console->Failure(file, header.Problem());
            result = kSomeFailed;
            continue;
        }
        PictureSummary facts = SummaryOfPicture(path, header);
        facts << find(path);
        console->Print(gap + Describe(options, file, path, facts));
        if (!options.json)
            gap = QStringLiteral("\n");
        application->ForgetImages();
    }
    return result;
}

ExitCode ShowPlain(const InfoOptions &options, HostApplication *application, InterruptGuard *guard, Console *console)
{
    ProfileLookup lookup(application, options.lensPath, guard);
    const PluginLoader plugin(options.plugin);
    const auto find = [&](const QString &path) {
        return PictureSummary{ProfileFact(plugin.Process() ? lookup.Find(plugin.Process(), path)
                                                           : ProfileLookup::Answer{QString(), plugin.Problem()})};
    };
    return ShowAll(options, application, find, console);
}

ExitCode ShowFitted(const InfoOptions &options, HostApplication *application, Console *console)
{
    application->Accept(AcceptedPictures::GrayAndTiled); // as `vitrelux correct` does
    const SearchedFolders folders(application, options.lensPath);
    const PluginLoader plugin(options.plugin, CorrectionMode::Fitted); // loading it gives `folders` the stored folder
    if (!plugin.Process())
        console->Note(QString(), plugin.Problem());
    PictureFitter fitter(folders.Folders());
    const auto find = [&](const QString &path) {
        for (const QString &problem : {application->ProblemOf(path), folders.Problem()}) {
            if (!problem.isEmpty())
                return PictureSummary{ProfileFact({QString(), problem})};
        }
        FitResult fit = fitter.Fit(ReadPictureFacts(path, nullptr), options.fit);
        if (application->IsGray(path))
            LeaveOutColor(&fit);
        return FitFacts(fit);
    };
    return ShowAll(options, application, find, console);
}

} // namespace

ExitCode RunInfo(const InfoOptions &options, Console *console)
{
    InterruptGuard guard;
    ChooseDisplayless();
    const CommandApplication application;
    if (!application->SettingsProblem().isEmpty())
        console->Note(QString(), application->SettingsProblem());
    return options.plain ? ShowPlain(options, application.Get(), &guard, console)
                         : ShowFitted(options, application.Get(), console);
}
