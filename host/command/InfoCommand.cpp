#include "InfoCommand.h"

#include "Console.h"
#include "app/FileNames.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PictureProblem.h"
#include "app/PictureSummary.h"
#include "app/PluginLoader.h"
#include "app/ProfileLookup.h"

#include <QJsonDocument>

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
        if (!fact.label.isEmpty()) // texts of the file: no line breaks
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

/// A picture's lines or its object, with the answer of the lookup.
QString Tell(const InfoOptions &options, const QString &file, const QString &path, const ProfileLookup::Answer &answer)
{
    PictureSummary facts = SummaryOfPicture(path);
    facts << ProfileFact(answer);
    if (!options.json)
        return AsText(file, facts) + (options.exif ? Indented(ExifTable(path)) : QString());
    if (options.exif)
        facts << ExifFact(path);
    return AsJson(file, facts);
}

} // namespace

ExitCode RunInfo(const InfoOptions &options, Console *console)
{
    InterruptGuard guard;
    ChooseDisplayless();
    ProgramName name;
    HostApplication application(name.argc, name.argv);
    if (!application.SettingsProblem().isEmpty())
        console->Note(QString(), application.SettingsProblem());
    ProfileLookup lookup(&application, options.lensPath, &guard);
    const PluginLoader plugin(options.plugin);

    ExitCode result = kAllDone;
    QString gap; // an empty line between two pictures
    for (const QString &file : options.files) {
        const QString path = AbsolutePath(file);
        const QString problem = ReadingProblem(path);
        if (!problem.isEmpty()) {
            console->Failure(file, problem);
            result = kSomeFailed;
            continue;
        }
        const ProfileLookup::Answer answer =
            plugin.Process() ? lookup.Find(plugin.Process(), path) : ProfileLookup::Answer{QString(), plugin.Problem()};
        console->Print(gap + Tell(options, file, path, answer));
        if (!options.json)
            gap = QStringLiteral("\n");
        application.ForgetImages();
    }
    return result;
}
