#include "CorrectFile.h"
#include "ProgramRun.h"
#include "TestFiles.h"

#include <QTemporaryDir>

#include <stdexcept>

QString CorrectFile(const QString &source, const Samples::LensProfile &profile, int corrections)
{
    const QString stem = source.section(QLatin1Char('.'), 0, -2);
    WriteFile(stem + ".lcp"_s, QByteArray::fromStdString(ProfileText(profile)));
    QStringList arguments = {"correct"_s, "--plain"_s, "--overwrite"_s, "--profile"_s, stem + ".lcp"_s, source};
    for (const auto &[correction, option] : {std::pair(Distortion, "--distortion"_s), std::pair(Chromatic, "--ca"_s),
                                             std::pair(Vignetting, "--vignetting"_s)})
        if (corrections & correction)
            arguments << option;
    const ProgramResult result = ProgramRun().Run(arguments);
    if (result.exitCode != 0)
        throw std::runtime_error(result.error.toStdString());
    return stem + "_corrected.tiff"_s;
}

TiffRaster Corrected(const TiffRaster &source, Samples::LensProfile *profile, int corrections)
{
    profile->width = std::max(source.width, source.height);
    profile->height = std::min(source.width, source.height);
    const QTemporaryDir folder;
    const QString path = folder.filePath("source.tiff"_s);
    WriteTiff(path, source);
    const TiffRaster result = ReadTiff(CorrectFile(path, *profile, corrections));
    if (result.width != source.width || result.height != source.height || result.bits != source.bits)
        throw std::runtime_error("the result has a different size or depth");
    return result;
}
