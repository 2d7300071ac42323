// before-after PHOTO.jpg CORRECTED.tiff OUT.png: draws the facade before and after its correction side by side, each
// with an enlarged spot near a corner, in 256 colors so that the file stays small.
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <tiffio.h>

#include "palette.h"
#include "set.h"

namespace {

constexpr int kHalfWidth = 512; // of each picture in the sheet
constexpr int kGap = 8;
constexpr int kLoupe = 128; // side of the enlarged spot in the sheet
constexpr int kZoom = 2;
/// Center of the spot in the corrected picture: dark stone between light borders.
constexpr Samples::Point kSpot = {2358, 1525};

QImage ReadTiff(const char *path)
{
    const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(TIFFOpen(path, "r"), &TIFFClose);
    uint32_t width = 0;
    uint32_t height = 0;
    if (!tiff || !TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width)
        || !TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height))
        throw std::runtime_error(std::string(path) + ": can't be read");
    QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_RGBX8888);
    auto *pixels = reinterpret_cast<uint32_t *>(image.bits());
    if (!TIFFReadRGBAImageOriented(tiff.get(), width, height, pixels, ORIENTATION_TOPLEFT, 0))
        throw std::runtime_error(std::string(path) + ": can't be read");
    return image;
}

void DrawHalf(QPainter *painter, const QImage &picture, int left, int height, Samples::Point spot, const QString &label)
{
    painter->drawImage(left, 0, picture.scaled(kHalfWidth, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    const int shown = kLoupe / kZoom;
    const QRect source(static_cast<int>(spot.x) - shown / 2, static_cast<int>(spot.y) - shown / 2, shown, shown);
    const QRect target(left + kHalfWidth - kLoupe - 10, height - kLoupe - 10, kLoupe, kLoupe);
    painter->fillRect(target.adjusted(-2, -2, 2, 2), Qt::white);
    painter->drawImage(target, picture.copy(source).scaled(kLoupe, kLoupe));
    painter->setPen(Qt::white);
    painter->drawText(left + 12, height - 14, label);
}

void Make(const char *photo, const char *corrected, const char *out)
{
    const QImage before(QString::fromLocal8Bit(photo));
    const QImage after = ReadTiff(corrected);
    if (before.isNull() || before.size() != after.size())
        throw std::runtime_error(std::string(photo) + " and " + corrected + " don't have the same size");
    const Samples::LensProfile lens = Samples::AllSamples().front().lens;
    const Samples::Point source = ToSource(lens, lens.distortion, Samples::Projection::Perspective, kSpot);
    const int height = kHalfWidth * before.height() / before.width();
    QImage sheet(2 * kHalfWidth + kGap, height, QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(19);
    font.setBold(true);
    painter.setFont(font);
    DrawHalf(&painter, before, 0, height, source, QStringLiteral("as taken"));
    DrawHalf(&painter, after, kHalfWidth + kGap, height, kSpot, QStringLiteral("corrected"));
    painter.end();
    if (!WithPalette(sheet).save(QString::fromLocal8Bit(out), "PNG", 0))
        throw std::runtime_error(std::string(out) + ": can't be written");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: before-after PHOTO.jpg CORRECTED.tiff OUT.png\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    try {
        Make(argv[1], argv[2], argv[3]);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "before-after: %s\n", e.what());
        return 1;
    }
    return 0;
}
