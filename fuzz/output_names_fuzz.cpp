// Expands arbitrary patterns for output names, for pictures with arbitrary names.
#include "Target.h"
#include "app/OutputPlan.h"

#include <QFileInfo>

FUZZ_TARGET(output_names)
{
    Input input(data, size);
    OutputNaming naming;
    naming.pattern = QString::fromUtf8(input.Line()).remove(QChar(0)); // arguments can't contain NUL
    naming.folder = QStringLiteral("/outputs");
    const QStringList suffixes = {QStringLiteral("tif"), QStringLiteral("tiff")};
    if (!FaultOfOutputNames(naming, suffixes).isEmpty())
        return;
    QStringList names;
    while (!input.IsEmpty() && names.size() < 8)
        names.append(QLatin1Char('/') + QString::fromUtf8(input.Line()).remove(QChar(0)));
    for (const PlannedPicture &one : PlanOutputs(Named(names), naming)) {
        Require(one.output.startsWith(QLatin1String("/outputs/")) && one.output.lastIndexOf(QLatin1Char('/')) == 8);
        Require(suffixes.contains(QFileInfo(one.output).suffix().toLower()));
    }
}
