#include "CorrectFile.h"
#include "ProgramRun.h"

#include <QFile>
#include <QFileInfo>

#include <stdexcept>

QString CorrectFile(const QString &source, const Samples::LensProfile &profile, int corrections)
{
    const QFileInfo info(source);
    const QString stem = info.absolutePath() + QLatin1Char('/') + info.completeBaseName();
    QFile lens(stem + QStringLiteral(".lcp"));
    if (!lens.open(QIODevice::WriteOnly))
        throw std::runtime_error("can't write the profile");
    lens.write(QByteArray::fromStdString(ProfileText(profile)));
    lens.close();

    QStringList arguments = {QStringLiteral("correct"), QStringLiteral("--overwrite"), QStringLiteral("--profile"),
                             lens.fileName(), source};
    for (const auto &[correction, option] :
         {std::pair(Distortion, "--distortion"), std::pair(Chromatic, "--ca"), std::pair(Vignetting, "--vignetting")})
        if (corrections & correction)
            arguments << QString::fromLatin1(option);
    const ProgramResult result = ProgramRun().Run(arguments);
    if (result.exitCode != 0)
        throw std::runtime_error(result.error.toStdString());
    return stem + QStringLiteral("_corrected.tiff");
}
