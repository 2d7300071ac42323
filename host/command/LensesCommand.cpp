#include "LensesCommand.h"

#include "Console.h"
#include "InputLimits.h"
#include "LensfunDatabase.h"
#include "PictureFit.h"
#include "ProfileIndex.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PluginLoader.h"
#include "app/SearchedFolders.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace {

bool ContainsAll(const QString &text, const QStringList &words)
{
    return std::all_of(words.begin(), words.end(),
                       [&](const QString &word) { return text.contains(word, Qt::CaseInsensitive); });
}

/// Returns the lens of a profile's first entry: its name, or "the lens of CAMERA" if it has none.
QString LensOf(const ProfileHead &head)
{
    return head.lensNames.isEmpty() ? QStringLiteral("the lens of %1 %2").arg(head.make, head.model).simplified()
                                    : head.lensNames.first();
}

/// One folder: its number of files, its lenses, and its unreadable profiles and subfolders.
class Place {
public:
    explicit Place(const QString &folder) : m_folder(folder), m_prefix(QFileInfo(folder).canonicalFilePath())
    {
        if (!m_prefix.endsWith(QLatin1Char('/')))
            m_prefix += QLatin1Char('/');
    }

    bool Contains(const QString &path) const { return (path + QLatin1Char('/')).startsWith(m_prefix); }
    void AddUnread(const UnreadPath &unread) { m_faults.append(unread); }
    void Add(const IndexedProfile &profile)
    {
        ++m_files;
        if (!profile.error.isEmpty())
            AddUnread({profile.path, profile.error});
        else
            m_lenses.insert(LensOf(profile.head));
    }
    QString Text() const
    {
        QString text =
            QStringLiteral("%1\n  %2 files for %3 lenses\n").arg(OneLine(m_folder)).arg(m_files).arg(m_lenses.size());
        for (const auto &[path, error] : m_faults)
            text += QStringLiteral("  %1: %2\n").arg(OneLine(path), OneLine(error));
        return text;
    }
    QJsonObject Json() const
    {
        QJsonArray faults;
        for (const auto &[path, error] : m_faults)
            faults.append(QJsonObject{{QStringLiteral("path"), path}, {QStringLiteral("error"), error}});
        return {{QStringLiteral("folder"), m_folder},
                {QStringLiteral("files"), m_files},
                {QStringLiteral("lenses"), m_lenses.size()},
                {QStringLiteral("unreadable"), faults}};
    }

private:
    QString m_folder;
    QString m_prefix; // of paths in the index, which are canonical
    int m_files = 0;
    QSet<QString> m_lenses;
    QVector<UnreadPath> m_faults;
};

QString JsonLine(const QJsonObject &object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + QLatin1Char('\n');
}

QVector<Place> PlacesOf(const QStringList &folders, const ProfileIndex &index)
{
    QVector<Place> places;
    for (const QString &folder : folders) {
        places.append(Place(folder));
        for (const IndexedProfile &profile : index.Profiles()) {
            if (places.last().Contains(profile.path))
                places.last().Add(profile);
        }
        for (const UnreadPath &unread : index.UnreadFolders())
            if (places.last().Contains(unread.path))
                places.last().AddUnread(unread);
    }
    return places;
}

QString PlacesText(const QStringList &folders, const ProfileIndex &index)
{
    QString text;
    const QVector<Place> places = PlacesOf(folders, index);
    for (const Place &place : places)
        text += place.Text();
    if (places.isEmpty())
        text = QStringLiteral("no profile folder; %1 is searched once it exists\n").arg(UserProfileFolder());
    return text + QStringLiteral("lensfun\n  %1 lenses\n").arg(LensfunDatabase::Instance().LensCount());
}

QString PlacesJson(const QStringList &folders, const ProfileIndex &index)
{
    QString text;
    const QVector<Place> places = PlacesOf(folders, index);
    for (const Place &place : places)
        text += JsonLine(place.Json());
    return text
        + JsonLine({{QStringLiteral("database"), QStringLiteral("lensfun")},
                    {QStringLiteral("lenses"), LensfunDatabase::Instance().LensCount()}});
}

/// A lens and its profiles; lensfun's lenses have none.
struct FoundLens {
    QString name;
    QStringList paths;
};

QVector<FoundLens> FindLenses(const QStringList &words, const ProfileIndex &index)
{
    QMap<QString, QStringList> byName;
    for (const IndexedProfile &profile : index.Profiles()) {
        const QString names = profile.head.lensNames.join(QLatin1Char('\n')) + QLatin1Char('\n') + profile.head.make
            + QLatin1Char('\n') + profile.head.model;
        if (profile.error.isEmpty() && ContainsAll(names, words))
            byName[LensOf(profile.head)] << profile.path;
    }
    QVector<FoundLens> found;
    for (auto lens = byName.cbegin(); lens != byName.cend(); ++lens)
        found.append({lens.key(), *lens});
    QStringList titles = LensfunDatabase::Instance().Search(words);
    titles.sort();
    for (const QString &title : qAsConst(titles))
        found.append({QLatin1String("lensfun:") + title, {}});
    return found;
}

/// Returns one line per lens, followed by its files.
QString FoundText(const QVector<FoundLens> &found)
{
    QString text;
    for (const FoundLens &lens : found) {
        text += OneLine(lens.name) + QLatin1Char('\n');
        for (const QString &path : lens.paths)
            text += QStringLiteral("  %1\n").arg(OneLine(path));
    }
    return text;
}

QString FoundJson(const QVector<FoundLens> &found)
{
    QString text;
    for (const FoundLens &lens : found)
        text += JsonLine({{QStringLiteral("lens"), lens.name},
                          {QStringLiteral("profiles"), QJsonArray::fromStringList(lens.paths)}});
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
    const PluginLoader plugin(options.plugin, CorrectionMode::Fitted); // loading it gives `folders` the stored folder
    if (!folders.Problem().isEmpty()) {
        console->Failure(QString(), folders.Problem());
        return kSomeFailed;
    }
    if (!plugin.Process())
        console->Note(QString(), plugin.Problem());

    ProfileIndex index;
    if (!index.Scan(folders.Folders()))
        console->Note(QString(),
                      QStringLiteral("more than %1 profiles; the rest are left out").arg(kMaxIndexedProfiles));
    if (options.words.isEmpty()) {
        console->Print(options.json ? PlacesJson(folders.Folders(), index) : PlacesText(folders.Folders(), index));
        return kAllDone;
    }
    const QVector<FoundLens> found = FindLenses(options.words, index);
    if (found.isEmpty()) {
        console->Failure(QString(), QStringLiteral("no lens named \"%1\"").arg(options.words.join(QLatin1Char(' '))));
        return kSomeFailed;
    }
    console->Print(options.json ? FoundJson(found) : FoundText(found));
    return kAllDone;
}
