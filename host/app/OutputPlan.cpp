#include "OutputPlan.h"

#include "FileNames.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace {

/// One name for a file or folder that can be reached by several, as through links; as it stands if it doesn't exist.
QString CanonicalName(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

/// Absolute, without "." and "..". Behind a link to a folder ".." is not the folder that the name shows: there the
/// folder goes by its canonical name, or another file than the one named would be taken.
QString AbsoluteName(const QString &file)
{
    const QFileInfo named(file.startsWith(QLatin1Char('/')) ? file : Joined(QDir::currentPath(), file));
    const QFileInfo clean(QDir::cleanPath(named.filePath()));
    const QString folder = named.canonicalPath();
    return folder.isEmpty() || folder == clean.canonicalPath() ? clean.filePath() : Joined(folder, named.fileName());
}

PlannedPicture PlanOne(const QString &file, const QString &outputFolder)
{
    const QFileInfo info(AbsoluteName(file));
    PlannedPicture planned;
    planned.asNamed = file;
    planned.picture = info.filePath();
    planned.outputFolder = outputFolder.isEmpty() ? info.path() : AbsoluteName(outputFolder);
    planned.output = Joined(planned.outputFolder, info.completeBaseName() + QLatin1String("_corrected.tiff"));
    return planned;
}

} // namespace

QVector<PlannedPicture> PlanOutputs(const QStringList &files, const QString &outputFolder)
{
    QVector<PlannedPicture> plan;
    QHash<QString, int> takers; // output: index of the first picture that wants it
    for (const QString &file : files) {
        PlannedPicture planned = PlanOne(file, outputFolder);
        const QString key =
            CanonicalName(planned.outputFolder) + QLatin1Char('/') + QFileInfo(planned.output).fileName();
        const auto taker = takers.constFind(key);
        if (taker != takers.constEnd()) {
            const PlannedPicture &first = plan.at(*taker);
            planned.rival = first.asNamed;
            planned.repeated = CanonicalName(first.picture) == CanonicalName(planned.picture);
        } else {
            takers.insert(key, plan.size());
        }
        plan.append(planned);
    }
    return plan;
}
