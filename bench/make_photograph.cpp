// Writes a picture with photographic texture: make_photograph MEGAPIXELS FILE, in the format given by FILE's suffix.
// The same size always gives the same pixels.
#include "Photograph.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const double megapixels = argc == 3 ? std::atof(argv[1]) : 0.0;
    if (!(megapixels > 0.001 && megapixels < 2000.0)) {
        std::fprintf(stderr, "usage: make_photograph MEGAPIXELS FILE\n");
        return 2;
    }
    KImage::init(nullptr);
    int result = 0;
    try {
        const QString file = QString::fromLocal8Bit(argv[2]), format = QFileInfo(file).suffix();
        constexpr int kQualityOfCameras = 11, kPlain = 0;
        KImage image;
        MakePhotograph(&image, megapixels);
        image.Write(file, format, format.startsWith(QLatin1Char('j')) ? kQualityOfCameras : kPlain, QString());
    } catch (const KException &e) {
        std::fprintf(stderr, "make_photograph: %s\n", qPrintable(e.what()));
        result = 1;
    }
    KImage::exit();
    return result;
}
