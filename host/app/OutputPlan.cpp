#include "OutputPlan.h"

#include "FileNames.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <iterator>

namespace {

/// Returns the canonical name of a file or folder; the name unchanged if it doesn't exist.
QString CanonicalName(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

/// Returns an absolute path without "." and "..". Paths in which ".." follows a link to a folder are resolved with the
/// folder's canonical path, because removing both parts would lead to another folder.
QString AbsoluteName(const QString &file)
{
    const QFileInfo named(file.startsWith(QLatin1Char('/')) ? file : Joined(QDir::currentPath(), file));
    const QFileInfo clean(QDir::cleanPath(named.filePath()));
    const QString folder = named.canonicalPath();
    return folder.isEmpty() || folder == clean.canonicalPath() ? clean.filePath() : Joined(folder, named.fileName());
}

struct Field {
    QLatin1String name;
    QString (*value)(const QFileInfo &picture);
};

const Field kFields[] = {
    {QLatin1String("name"), [](const QFileInfo &picture) { return picture.completeBaseName(); }},
    {QLatin1String("ext"), [](const QFileInfo &picture) { return picture.suffix(); }},
    {QLatin1String("folder"), [](const QFileInfo &picture) { return QFileInfo(picture.path()).fileName(); }},
};

/// Replaces each {field}. @param unknown  set to the first unknown field.
QString Filled(const QString &pattern, const QFileInfo &picture, QString *unknown = nullptr)
{
    QString filled;
    int at = 0;
    for (;;) {
        const int end = pattern.indexOf(QLatin1Char('}'), at);
        const int begin = end <= at ? -1 : pattern.lastIndexOf(QLatin1Char('{'), end - 1); // innermost braces
        if (end == -1)
            return filled + pattern.midRef(at);
        if (begin < at) { // an unmatched brace
            filled += pattern.midRef(at, end + 1 - at);
            at = end + 1;
            continue;
        }
        filled += pattern.midRef(at, begin - at);
        at = end + 1;
        const QStringRef name = pattern.midRef(begin + 1, end - begin - 1);
        const auto field =
            std::find_if(std::begin(kFields), std::end(kFields), [&](const Field &row) { return name == row.name; });
        if (field != std::end(kFields))
            filled += field->value(picture);
        else if (unknown && unknown->isEmpty())
            *unknown = pattern.mid(begin, at - begin);
    }
}

struct FormatRow {
    QLatin1String name;
    QLatin1String suffixes;
};

const FormatRow kFormats[] = {
    {QLatin1String("tiff"), QLatin1String("tiff tif")},
    {QLatin1String("jpeg"), QLatin1String("jpg jpeg")},
    {QLatin1String("png"), QLatin1String("png")},
    {QLatin1String("exr"), QLatin1String("exr")},
};

PlannedPicture PlanOne(const NamedPicture &named, const OutputNaming &naming)
{
    const QFileInfo info(AbsoluteName(named.name));
    PlannedPicture planned;
    planned.asNamed = named.name;
    planned.picture = info.filePath();
    planned.outputFolder = naming.folder.isEmpty() ? info.path() : AbsoluteName(naming.folder);
    if (!naming.folder.isEmpty() && !named.subpath.isEmpty())
        planned.outputFolder = Joined(planned.outputFolder, named.subpath);
    planned.output = Joined(planned.outputFolder, Filled(naming.pattern, info) + naming.ending);
    return planned;
}

QString BaseName(const QString &path)
{
    return QFileInfo(path).completeBaseName();
}

void FindLostPictures(QVector<PlannedPicture> *plan)
{
    QHash<QString, QString> pictures; // canonical name to name as typed
    for (const PlannedPicture &planned : qAsConst(*plan))
        pictures.insert(CanonicalName(planned.picture), planned.asNamed);
    for (PlannedPicture &planned : *plan) {
        const QString output = CanonicalName(planned.output); // may be a link to the picture
        if (BaseName(planned.output) == BaseName(planned.picture) || output == CanonicalName(planned.picture))
            planned.lost = pictures.value(output);
    }
}

} // namespace

QStringList SuffixesOfFormat(const QString &format)
{
    for (const FormatRow &row : kFormats) {
        if (format == row.name)
            return QString(row.suffixes).split(QLatin1Char(' '));
    }
    return {};
}

QString OutputEnding(const QString &format, const QString &ending)
{
    return ending + QLatin1Char('.') + SuffixesOfFormat(format).value(0);
}

QStringList OutputEndings(const QString &ending)
{
    QStringList endings;
    for (const FormatRow &row : kFormats)
        endings << OutputEnding(row.name, ending);
    return endings;
}

QString FaultOfOutputNames(const OutputNaming &naming, const QStringList &suffixes)
{
    QString unknown;
    const QString filled = Filled(naming.pattern, QFileInfo(QStringLiteral("/a/a.a")), &unknown) + naming.ending;
    if (!unknown.isEmpty())
        return QStringLiteral("has %1, expected {name}, {ext} or {folder}").arg(unknown);
    if (!naming.pattern.contains(QLatin1String("{name}")))
        return QStringLiteral("lacks {name}, without which all pictures in a folder would have the same output");
    if (filled.contains(QLatin1Char('/')))
        return QStringLiteral("has a slash; -o names the folder");
    if (!suffixes.contains(QFileInfo(filled).suffix().toLower()))
        return QStringLiteral("does not end in .%1, the suffix of the output format; --format chooses another one")
            .arg(suffixes.join(QLatin1String(" or .")));
    return QString();
}

QVector<PlannedPicture> PlanOutputs(const QVector<NamedPicture> &pictures, const OutputNaming &naming)
{
    QVector<PlannedPicture> plan;
    QHash<QString, int> firstByOutput; // indices of the pictures
    for (const NamedPicture &named : pictures) {
        PlannedPicture planned = PlanOne(named, naming);
        const QString key =
            CanonicalName(planned.outputFolder) + QLatin1Char('/') + QFileInfo(planned.output).fileName();
        const auto found = firstByOutput.constFind(key);
        if (found != firstByOutput.constEnd()) {
            const PlannedPicture &first = plan.at(*found);
            planned.rival = first.asNamed;
            planned.repeated = CanonicalName(first.picture) == CanonicalName(planned.picture);
        } else {
            firstByOutput.insert(key, plan.size());
        }
        plan.append(planned);
    }
    FindLostPictures(&plan);
    return plan;
}
