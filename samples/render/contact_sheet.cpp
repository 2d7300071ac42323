// contact-sheet SAMPLES OUT.png: draws the sample pictures before and after each alpha, tone, filter and lens
// operation.
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include <QColor>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include "ImageSt.h"
#include "KException.h"
#include "KImage.h"
#include "palette.h"

namespace {

constexpr int kWidth = 132, kHeight = 88; // of each picture in the sheet
constexpr int kGap = 6, kLabel = 16, kColumns = 4;

using Operation = std::function<void(KImage &source, KImage &result)>;

struct Cell {
    const char *label;
    KImage source;
    Operation run;
};

KImage Load(const QString &file, int width, int height)
{
    KImage image;
    image.Read(file, GFL_RGBA, /*thumbnail=*/false);
    image.Resize(width, height);
    return image;
}

/// Returns an operation that applies @p change to a copy of the source.
template <typename Change> Operation InPlace(Change change)
{
    return [change](KImage &source, KImage &result) {
        result = source;
        change(result);
    };
}

/// Returns a picture whose alpha falls off from the middle.
KImage WithSoftAlpha(const KImage &picture)
{
    KImage image(picture), alpha(picture.width(), picture.height(), GFL_GREY, 8, true, nullptr, 0);
    const double middleX = picture.width() / 2.0, middleY = picture.height() / 2.0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double away = std::hypot((x - middleX) / middleX, (y - middleY) / middleY);
            *alpha.getData(x, y) = static_cast<unsigned char>(255 * qBound(0.0, 1.4 - away * 1.2, 1.0));
        }
    }
    image.SetAlpha(alpha);
    return image;
}

/// Returns the picture with premultiplied alpha.
KImage Premultiplied(KImage soft)
{
    KImage image(soft.width(), soft.height(), GFL_RGBA, 8, /*clear=*/true, nullptr, 0), alpha;
    soft.ExtractAlpha(alpha, 8);
    soft.BlendTo(image, 0, 0);
    image.SetAlpha(alpha);
    return image;
}

/// Returns the picture in linear light, with a sky up to twelve times as bright as white.
KImage HighRange(const KImage &picture)
{
    KImage image;
    picture.Convert(image, GFL_RGB, 32);
    const KImage same(image);
    image *= same;
    image *= 12.0f;
    return image;
}

/// Returns a picture cropped to a circle slightly off the frame's center.
KImage CircularFrame(const KImage &picture, double radius)
{
    KImage image(picture);
    image.CleanFisheyeData(radius, 9, -5);
    return image;
}

/// Marks the fitted circle with points along it.
void MarkCircle(KImage &image, double radius, double offsetX, double offsetY)
{
    for (int degrees = 0; degrees < 360; degrees += 15) {
        const double angle = degrees * M_PI / 180;
        image.PutPoint(static_cast<float>((image.width() - 1) / 2.0 + offsetX + radius * std::cos(angle)),
                       static_cast<float>((image.height() - 1) / 2.0 + offsetY + radius * std::sin(angle)), 8,
                       static_cast<int>(0xFFFFC000));
    }
}

std::vector<Cell> AlphaCells(const KImage &picture)
{
    const KImage soft = WithSoftAlpha(picture);
    const auto combine = [](KImage &image) {
        KImage mask(image.width(), image.height(), GFL_GREY, 16, true, nullptr, 0), deep;
        for (int x = 0; x < image.width() / 2; ++x)
            mask.PutPoint(static_cast<float>(x), static_cast<float>(image.height()) / 2, 40, -1);
        image.Convert(deep, GFL_RGBA, 32);
        deep.CombineAlpha(mask);
        image = deep;
    };
    return {{"CombineAlpha", soft, InPlace(combine)},
            {"BinarizeAlpha", soft, InPlace([](KImage &image) { image.BinarizeAlpha(); })},
            {"ScaleByAlpha", Premultiplied(soft), InPlace([](KImage &image) { image.ScaleByAlpha(); })}};
}

std::vector<Cell> ToneCells(const KImage &picture)
{
    KImage dull(picture);
    dull.adjustColor(0.8f, 0.4f, 0.7f);
    const KImage bright = HighRange(picture);
    const auto map = [](int mode) { return InPlace([mode](KImage &image) { image.HDR_QuickToneMapper(mode); }); };
    const auto gray = [](KImage &source, KImage &result) {
        ImageSt plane;
        source.GetGrey(plane);
        result = KImage(plane.width, plane.height, GFL_GREY, 32, false, plane.samples.data(), plane.width * 4);
    };
    return {
        {"HistogramAuto", dull, [](KImage &source, KImage &result) { source.HistogramAuto(result); }},
        {"HistogramEqualization", dull, [](KImage &source, KImage &result) { source.HistogramEqualization(result); }},
        {"HDR linear", bright, map(KImage::HDR_LINEAR)},
        {"HDR logarithmic", bright, map(KImage::HDR_LOGARITHMIC)},
        {"HDR Reinhard", bright, map(KImage::HDR_REINHARD)},
        {"adjustColor 1.1, 1.3, 1.6", picture, InPlace([](KImage &image) { image.adjustColor(1.1f, 1.3f, 1.6f); })},
        {"Colorize blue to amber", picture,
         [](KImage &source, KImage &result) { source.Colorize(result, QColor(20, 60, 160), QColor(255, 200, 90)); }},
        {"GetGrey", picture, gray}};
}

std::vector<Cell> FilterCells(const KImage &picture)
{
    return {
        {"ConvolveGaussian 4", picture, [](KImage &source, KImage &result) { source.ConvolveGaussian(4, result); }},
        {"unsharp 2, 1.5", picture, [](KImage &source, KImage &result) { source.unsharp(2, 1.5f, result); }},
        {"unsharpY 2, 1.5", picture, [](KImage &source, KImage &result) { source.unsharpY(2, 1.5f, result); }},
        {"unsharpFull 2, 0.3", picture, [](KImage &source, KImage &result) { source.unsharpFull(2, 0.3f, result); }}};
}

std::vector<Cell> LensCells(const KImage &picture, const KImage &fisheye)
{
    const double side = fisheye.height();
    const KImage circular = CircularFrame(fisheye, 0.42 * side), cut = CircularFrame(fisheye, 0.6 * side);
    const auto find = [](double nominal) {
        return InPlace([nominal](KImage &image) {
            double radius, x, y;
            image.GetCateyeRadiusOffset(radius, x, y, nominal);
            MarkCircle(image, radius, x, y);
        });
    };
    return {{"GetFisheyeRadiusOffset", circular, find(0)},
            {"GetCateyeRadiusOffset", cut, find(0.62 * side)},
            {"CleanFisheyeData", fisheye, InPlace([=](KImage &image) { image.CleanFisheyeData(0.3 * side, 0, 0); })},
            {"CircularFiskeyeToSpherical", circular,
             [](KImage &source, KImage &result) { source.CircularFiskeyeToSpherical(528, 180, result); }},
            {"CircularCateyeToSpherical", cut,
             [=](KImage &source, KImage &result) { source.CircularCateyeToSpherical(528, 0.6 * side, 9, -5, result); }},
            {"PutPoint", picture, InPlace([](KImage &image) { image.PutPoint(150, 90, 30, int(0xC0FF2020)); })},
            {"Optical 0.25", picture, InPlace([](KImage &image) { image.Optical(0.25f, 0, 0, 0, 0, 0); })},
            {"Optical2 R, 1.03", picture, InPlace([](KImage &image) { image.Optical2(0, 0, 0, 'R', 1.03f, 0); })}};
}

void DrawPicture(QPainter &painter, KImage &image, int left, int top)
{
    QImage picture;
    image.ToQImage(picture);
    const QRect place(left, top, kWidth, kHeight);
    painter.fillRect(place, QBrush(Qt::gray, Qt::Dense4Pattern)); // shows through transparent areas
    const QImage scaled = picture.scaled(place.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(left + (kWidth - scaled.width()) / 2, top + (kHeight - scaled.height()) / 2, scaled);
}

QImage DrawSheet(std::vector<Cell> &cells)
{
    constexpr int kCellWidth = 2 * kWidth + kGap * 2, kCellHeight = kHeight + kLabel + kGap;
    const int rows = (static_cast<int>(cells.size()) + kColumns - 1) / kColumns;
    QImage sheet(kColumns * kCellWidth + kGap, rows * kCellHeight + kGap, QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 7));
    for (int i = 0; i < static_cast<int>(cells.size()); ++i) {
        Cell &cell = cells[static_cast<size_t>(i)];
        const int left = kGap + i % kColumns * kCellWidth, top = kGap + i / kColumns * kCellHeight;
        KImage result;
        cell.run(cell.source, result);
        painter.drawText(left, top + kLabel - 5, QLatin1String(cell.label));
        DrawPicture(painter, cell.source, left, top + kLabel);
        DrawPicture(painter, result, left + kWidth + 2, top + kLabel);
    }
    return sheet;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    if (argc != 3) {
        std::fputs("usage: contact-sheet SAMPLES OUT.png\n", stderr);
        return 2;
    }
    KImage::init(nullptr);
    try {
        const QString folder = QFile::decodeName(argv[1]);
        const KImage facade = Load(folder + QStringLiteral("/facade.jpg"), 264, 176);
        const KImage hall = Load(folder + QStringLiteral("/fisheye.jpg"), 528, 352);
        std::vector<Cell> cells;
        for (const auto &part : {AlphaCells(facade), ToneCells(facade), FilterCells(facade), LensCells(facade, hall)})
            cells.insert(cells.end(), part.begin(), part.end());
        if (!WithPalette(DrawSheet(cells)).save(QFile::decodeName(argv[2]), "PNG"))
            throw KException(QStringLiteral("can't be written"), QFile::decodeName(argv[2]));
    } catch (const KException &e) {
        std::fprintf(stderr, "contact-sheet: %s\n", qPrintable(e.what()));
        return 1;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "contact-sheet: %s\n", e.what());
        return 1;
    }
    KImage::exit();
    return 0;
}
