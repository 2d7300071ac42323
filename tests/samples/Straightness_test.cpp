// Corrects the sample pictures with the program and measures them before and after: bends of straight edges, color
// fringes and dark corners.
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include "Case.h"
#include "EdgeMeter.h"
#include "ProgramRun.h"
#include "TestFiles.h"
#include "set.h"

using Samples::Point;
using Samples::Sample;

namespace {

/// Aberrations that a sample must have before its correction.
struct Limits {
    double bend;   ///< minimum bend of the most bent edge, in pixels
    double fringe; ///< minimum width of the widest fringe, in pixels
    double corner; ///< maximum relative light in each corner patch
};
constexpr Limits kBefore[] = {{10, 1.5, 0.8}, {10, 1.5, 0.8}, {40, 0.8, 0.9}};
constexpr double kBendAfter = 0.5;
constexpr double kFringeAfter = 0.2;
constexpr double kLightAfter = 0.02; // largest deviation from 1

TiffRaster ReadJpeg(const QString &path)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_RGB888);
    TiffRaster raster = BlankRaster(image.width(), image.height(), 3, 8);
    for (int y = 0; y < raster.height; ++y)
        std::copy_n(image.constScanLine(y), raster.width * 3,
                    raster.values.data() + size_t(y) * size_t(raster.width) * 3);
    return raster;
}

struct Figures : EdgeFigures {      // the worst of all edges
    std::vector<double> light = {}; ///< of each patch, relative to the scene
};

double LightOf(const TiffRaster &picture, const Sample &sample, const Samples::EvenPatch &patch, Point center)
{
    Samples::Rgb sum;
    int count = 0;
    for (double dy = -patch.halfSize; dy <= patch.halfSize; ++dy)
        for (double dx = -patch.halfSize; dx <= patch.halfSize; ++dx, ++count)
            sum = sum + sample.scene->At({{patch.center.x + dx, patch.center.y + dy}, 1, 1});
    return MeanLevel(picture, center, patch.halfSize) / 255 / ((sum.r + sum.g + sum.b) / 3 / count);
}

Figures MeasurePicture(const char *what, const TiffRaster &picture, const Sample &sample, const Placement &placement)
{
    Figures figures;
    for (const Samples::StraightEdge &edge : sample.scene->Edges()) {
        const EdgeFigures one = MeasureEdge(picture, edge, placement);
        figures.bend = std::max(figures.bend, one.bend);
        for (int c : {0, 2})
            figures.fringe[c] = std::max(figures.fringe[c], one.fringe[c]);
    }
    for (const Samples::EvenPatch &patch : sample.scene->Patches())
        figures.light.push_back(LightOf(picture, sample, patch, placement(patch.center)));
    qInfo() << what << "bend" << figures.bend << "px, fringes" << figures.fringe[0] << figures.fringe[2] << "px, light"
            << figures.light;
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
    const Figures faults = MeasurePicture("before:", before, sample, [&](Point corrected) {
        const Point turned = Turned(corrected, before.width, sample.hold);
        return Upright(ToSource(sample.lens, *sample.lens.green, MainProjection(sample.lens), turned), before.width,
                       sample.hold);
    });
    const Figures remains = MeasurePicture("after:", after, sample, [](Point corrected) { return corrected; });
    QVERIFY(faults.bend > limits.bend && remains.bend < kBendAfter);
    for (int c : {0, 2}) {
        const Case named("channel", c);
        QVERIFY(faults.fringe[c] > limits.fringe && remains.fringe[c] < kFringeAfter);
    }
    QVERIFY(faults.light.front() > 0.9); // the center
    for (size_t i = 1; i < faults.light.size(); ++i) {
        const Case named("ring", i);
        QVERIFY(faults.light[i] < limits.corner);
    }
    for (double light : remains.light) {
        const Case named("light", light);
        QVERIFY(std::abs(light - 1) < kLightAfter);
    }
}

QTEST_GUILESS_MAIN(tst_Straightness)
#include "Straightness_test.moc"
