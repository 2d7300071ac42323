// Corrects the sample pictures with the program. Compares their straight edges and even patches with the painted
// scenes, before and after the correction, to measure bends, color fringes and dark corners.
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include "Case.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "TiffRaster.h"
#include "set.h"

#include <cmath>
#include <functional>

using Samples::Point;
using Samples::Sample;

namespace {

/// Aberrations that a sample must have before its correction.
struct Limits {
    double moved;  ///< the lens moves at least one edge by more than this, in pixels
    double fringe; ///< the widest red and the widest blue fringe are wider than this, in pixels
    double corner; ///< each corner patch has less light than this, relative to the scene
};
constexpr Limits kBefore[] = {{10, 1.5, 0.8}, {10, 1.5, 0.8}, {40, 0.8, 0.9}};
constexpr double kShiftPx = 0.3;     // upper limit of the distance of a corrected edge from its place in the scene
constexpr double kLightAfter = 0.02; // upper limit of the deviation of a corrected patch's relative light from 1

TiffRaster ReadJpeg(const QString &path)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_RGB888);
    TiffRaster raster = BlankRaster(image.width(), image.height(), 3, 8);
    for (int y = 0; y < raster.height; ++y)
        std::copy_n(image.constScanLine(y), raster.width * 3, &raster.At(0, y, 0));
    return raster;
}

double Bilinear(const TiffRaster &picture, Point p, int channel)
{
    const int x = std::clamp(int(p.x), 0, picture.width - 2), y = std::clamp(int(p.y), 0, picture.height - 2);
    const auto row = [&, fx = p.x - x](int at) {
        return double(picture.At(x, at, channel)) * (1 - fx) + double(picture.At(x + 1, at, channel)) * fx;
    };
    return row(y) + (row(y + 1) - row(y)) * (p.y - y);
}

struct Figures {
    double shift[3] = {};           ///< largest distance of an edge from its placement, in pixels; per channel
    double moved = 0;               ///< largest distance of an edge's placement from its place in the scene, in pixels
    std::vector<double> light = {}; ///< light of each patch, relative to the scene
    int windows = 0;                ///< number of windows in which an edge was measured, counted per channel
};

/// Maps a point of the scene to the picture.
using Placement = std::function<Point(Point)>;

/// Measures the light of the patches, and the shifts of the edges in windows along them. A shift is the factor with
/// which the scene's derivative across the edge best fits the difference between picture and scene, by least squares.
Figures Measure(const char *what, const TiffRaster &picture, const Sample &sample, const Placement &placement)
{
    Figures figures;
    const auto scene = [&](Point at, int c) {
        const Samples::Rgb color = sample.scene->At({at, 1, 1});
        return 255 * (c == 0 ? color.r : c == 1 ? color.g : color.b);
    };
    for (const Samples::StraightEdge &edge : sample.scene->Edges()) {
        const double length = std::hypot(edge.to.x - edge.from.x, edge.to.y - edge.from.y);
        const Point along = {(edge.to.x - edge.from.x) / length, (edge.to.y - edge.from.y) / length};
        const auto point = [&](double s, double t) {
            return Point{edge.from.x + along.x * s - along.y * t, edge.from.y + along.y * s + along.x * t};
        };
        for (double start = 24; start <= length - 24; start += 48)
            for (int c : {0, 1, 2}) {
                double product = 0, square = 0;
                for (int s = -24; s <= 24; ++s)
                    for (int t = -4; t <= 4; ++t) {
                        const Point at = point(start + s, t);
                        const double slope =
                            (scene(point(start + s, t + 1), c) - scene(point(start + s, t - 1), c)) / 2;
                        product += slope * (scene(at, c) - Bilinear(picture, placement(at), c));
                        square += slope * slope;
                    }
                if (square < 49 * 200) // something covers the edge
                    continue;
                ++figures.windows;
                figures.shift[c] = std::max(figures.shift[c], std::abs(product / square));
                const Point middle = point(start, 0), placed = placement(middle);
                figures.moved = std::max(figures.moved, std::hypot(placed.x - middle.x, placed.y - middle.y));
            }
    }
    for (const Samples::EvenPatch &patch : sample.scene->Patches()) {
        double got = 0, wanted = 0;
        for (double dy = -patch.halfSize; dy <= patch.halfSize; ++dy)
            for (double dx = -patch.halfSize; dx <= patch.halfSize; ++dx)
                for (int c : {0, 1, 2}) {
                    const Point at = {patch.center.x + dx, patch.center.y + dy};
                    got += Bilinear(picture, placement(at), c);
                    wanted += scene(at, c);
                }
        figures.light.push_back(got / wanted);
    }
    qInfo() << what << "shifts" << figures.shift[0] << figures.shift[1] << figures.shift[2] << "px, moved"
            << figures.moved << "px, light" << figures.light << figures.windows << "windows";
    return figures;
}

} // namespace

class tst_Straightness : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aberrationsAreCorrected_data();
    void aberrationsAreCorrected();
};

void tst_Straightness::aberrationsAreCorrected_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Sample &sample : Samples::AllSamples())
        QTest::newRow(sample.picture.c_str()) << index++;
}

void tst_Straightness::aberrationsAreCorrected()
{
    QFETCH(const int, index);
    const Sample sample = Samples::AllSamples().at(size_t(index));
    const Limits limits = kBefore[index];
    const QString stem = QStringLiteral(VITRELUX_SAMPLES "/"), name = QString::fromStdString(sample.picture);
    const QString photograph = stem + name + ".jpg"_s;
    const QTemporaryDir results;
    const ProgramResult run =
        ProgramRun().Run({"correct"_s, "--plain"_s, photograph, "--profile"_s,
                          stem + QString::fromStdString(sample.profile) + ".lcp"_s, "-o"_s, results.path()});
    QVERIFY2(run.exitCode == 0, run.error.constData());

    const TiffRaster before = ReadJpeg(photograph), after = ReadTiff(results.filePath(name + "_corrected.tiff"_s));
    QCOMPARE(QSize(after.width, after.height), QSize(before.width, before.height)); // still upright
    const Figures faults = Measure("before:", before, sample, [&](Point corrected) {
        const Point turned = Turned(corrected, before.width, sample.hold);
        return Upright(ToSource(sample.lens, *sample.lens.green, MainProjection(sample.lens), turned), before.width,
                       sample.hold);
    });
    const Figures remains = Measure("after:", after, sample, [](Point corrected) { return corrected; });
    QVERIFY(faults.moved > limits.moved);
    QVERIFY(faults.shift[0] > limits.fringe && faults.shift[2] > limits.fringe);
    for (double shift : remains.shift)
        QVERIFY(shift < kShiftPx);
    QVERIFY(faults.light.front() > 0.9); // the center
    for (size_t i = 0; i < faults.light.size(); ++i) {
        const Case named("patch", i);
        QVERIFY(i == 0 || faults.light[i] < limits.corner);
        QVERIFY(std::abs(remains.light[i] - 1) < kLightAfter);
    }
}

QTEST_GUILESS_MAIN(tst_Straightness)
#include "Straightness_test.moc"
