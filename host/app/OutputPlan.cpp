#include "OutputPlan.h"

#include "FileNames.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>

namespace {

/// Returns the canonical name of a file or folder; the name unchanged if it doesn't exist.
QString CanonicalName(const QString &path)
{
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

/// Returns an absolute name without "." and "..". After a link to a folder, ".." is not the folder in the name: such
/// names use the folder's canonical name; otherwise they would lead to another file.
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
    QHash<QString, int> takers; // output: index of the first picture with it
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
