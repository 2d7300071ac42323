#include "OutputPlan.h"

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

PlannedPicture PlanOne(const QString &file, const QString &outputFolder)
{
    const QFileInfo info(QDir::cleanPath(QDir().absoluteFilePath(file)));
    PlannedPicture planned;
    planned.asNamed = file;
    planned.picture = info.filePath();
    planned.outputFolder =
        outputFolder.isEmpty() ? info.path() : QDir::cleanPath(QDir().absoluteFilePath(outputFolder));
    planned.output = QDir(planned.outputFolder).filePath(info.completeBaseName() + QLatin1String("_corrected.tiff"));
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
