#include "TestFiles.h"

#include <QDir>
#include <QImage>
#include <QRandomGenerator>

#include "lens_reference.h"

void WriteJpeg(const QString &path, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator noise(1);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb(x * 191 / width + noise.bounded(64), y * 191 / height + noise.bounded(64), 128));
    }
    if (!image.save(path, "JPG", 100))
        qFatal("can't write %s", qPrintable(path));
}

QByteArray ProfileText(const ProfileModels &models, int width, int height)
{
    const auto radial = [](double value) { return Samples::LensModel{1, 0.5, 0.5, {value}}; };
    Samples::LensProfile profile;
    profile.width = width;
    profile.height = height;
    if (models.distortion)
        profile.distortion = radial(0.05);
    if (models.chromatic) {
        profile.green = radial(0.05);
        profile.redGreen = radial(0.001);
        profile.blueGreen = radial(-0.001);
    }
    if (models.vignetting)
        profile.vignette = Samples::LensModel{1, 0.5, 0.5, {-0.1, -0.1, -0.1}};
    return QByteArray::fromStdString(Samples::ProfileText(profile));
}

QStringList Names(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}
