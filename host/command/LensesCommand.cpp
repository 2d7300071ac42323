#include "LensesCommand.h"

#include "Console.h"
#include "LensfunDatabase.h"
#include "ProfileIndex.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PluginLoader.h"
#include "app/SearchedFolders.h"

#include <QFileInfo>
#include <QMap>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>

namespace {

bool HoldsAll(const QString &text, const QStringList &words)
{
    return std::all_of(words.begin(), words.end(),
                       [&](const QString &word) { return text.contains(word, Qt::CaseInsensitive); });
}

/// Returns the lens of a profile's first entry, "Canon EF 24-70mm f/4L IS USM", or the camera's if it has no name.
QString LensOf(const ProfileHead &head)
{
    return head.lensNames.isEmpty() ? QStringLiteral("the lens of %1 %2").arg(head.make, head.model).simplified()
                                    : head.lensNames.first();
}

/// Files, lenses and unreadable profiles below one folder.
class Place {
public:
    explicit Place(const QString &folder) : m_folder(folder), m_prefix(QFileInfo(folder).canonicalFilePath())
    {
        if (!m_prefix.endsWith(QLatin1Char('/')))
            m_prefix += QLatin1Char('/');
    }

    bool Holds(const IndexedProfile &profile) const { return profile.path.startsWith(m_prefix); }
    void Add(const IndexedProfile &profile)
    {
        ++m_files;
        if (!profile.error.isEmpty())
            m_faults += QStringLiteral("  %1: %2\n").arg(OneLine(profile.path), OneLine(profile.error));
        else
            m_lenses.insert(LensOf(profile.head));
    }
    QString Text() const
    {
        return QStringLiteral("%1\n  %2 files for %3 lenses\n").arg(OneLine(m_folder)).arg(m_files).arg(m_lenses.size())
            + m_faults;
    }

private:
    QString m_folder;
    QString m_prefix; // of paths in the index, which are canonical
    int m_files = 0;
    QSet<QString> m_lenses;
    QString m_faults;
};

QString PlacesText(const QStringList &folders, const ProfileIndex &index)
{
    QString text;
    for (const QString &folder : folders) {
        Place place(folder);
        for (const IndexedProfile &profile : index.Profiles()) {
            if (place.Holds(profile))
                place.Add(profile);
        }
        text += place.Text();
    }
    if (!text.isEmpty())
        return text;
    return QStringLiteral("no folder of profiles; %1/vitrelux/profiles is searched once it exists\n")
        .arg(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

/// Returns each lens on a line, followed by its files.
QString FoundText(const QStringList &words, const ProfileIndex &index)
{
    QMap<QString, QStringList> found; // by lens
    for (const IndexedProfile &profile : index.Profiles()) {
        const QString names = profile.head.lensNames.join(QLatin1Char('\n')) + QLatin1Char('\n') + profile.head.make
            + QLatin1Char('\n') + profile.head.model;
        if (profile.error.isEmpty() && HoldsAll(names, words))
            found[OneLine(LensOf(profile.head))] << OneLine(profile.path);
    }
    QString text;
    for (auto lens = found.cbegin(); lens != found.cend(); ++lens)
        text += QStringLiteral("%1\n  %2\n").arg(lens.key(), lens->join(QLatin1String("\n  ")));
    QStringList titles = LensfunDatabase::Instance().Search(words);
    titles.sort();
    for (const QString &title : qAsConst(titles))
        text += QStringLiteral("lensfun:%1\n").arg(OneLine(title));
    return text;
}

} // namespace

ExitCode RunLenses(const LensesOptions &options, Console *console)
{
    InterruptGuard guard;
    ChooseDisplayless();
    const CommandApplication application;
    if (!application->SettingsProblem().isEmpty())
        console->Note(QString(), application->SettingsProblem());
    const SearchedFolders folders(application.Get(), options.lensPath);
    const PluginLoader plugin(options.plugin, CorrectionMode::Fitted); // reads the stored folder
    if (!folders.Problem().isEmpty()) {
        console->Failure(QString(), folders.Problem());
        return kSomeFailed;
    }
    if (!plugin.Process())
        console->Note(QString(), plugin.Problem());

    ProfileIndex index;
    if (!index.Scan(folders.Folders()))
        console->Note(QString(),
                      QStringLiteral("more than %1 profiles; the rest is left out").arg(ProfileIndex::kMostProfiles));
    if (options.words.isEmpty()) {
        console->Print(PlacesText(folders.Folders(), index)
                       + QStringLiteral("lensfun\n  %1 lenses\n").arg(LensfunDatabase::Instance().LensCount()));
        return kAllDone;
    }
    const QString found = FoundText(options.words, index);
    if (found.isEmpty()) {
        console->Failure(QString(), QStringLiteral("no lens named \"%1\"").arg(options.words.join(QLatin1Char(' '))));
        return kSomeFailed;
    }
    console->Print(found);
    return kAllDone;
}
