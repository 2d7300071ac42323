// Reads arbitrary bytes as the camera and lens tables, and looks up cameras and lenses.
#include "CameraProperties.h"
#include "LensIDProperties.h"
#include "Target.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

FUZZ_TARGET(data_tables)
{
    static const QTemporaryDir folder;
    StartKernel();
    Input input(data, size);
    const QString make = QString::fromUtf8(input.Line()), model = QString::fromUtf8(input.Line());
    const QByteArray table = input.Rest();
    for (const char *name : {"cameras.txt", "lensid.txt"}) {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        Require(file.open(QIODevice::WriteOnly) && file.write(table) == table.size());
    }
    QDir::setSearchPaths(QStringLiteral("Data"), {folder.path()});
    CameraProperties cameras;
    cameras.GetSensorSize(make, model);
    LensIDProperties lenses;
    lenses.Initialize();
    const int found = lenses.findLenses(make, model).size();
    Require(lenses.findLensList(make, model).size() == found && lenses.findLenses(make, QString()).size() >= found);
    lenses.isFisheyLens(make, model);
    QDir::setSearchPaths(QStringLiteral("Data"), {QStringLiteral(":/Data")});
}
