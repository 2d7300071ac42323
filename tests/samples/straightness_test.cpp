// Corrects the sample pictures with the whole program and measures them before and after: bends of straight edges,
// colour fringes and dark corners.
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include "EdgeMeter.h"
#include "ProgramRun.h"
#include "set.h"

using Samples::Point;
using Samples::Sample;

namespace {

/// What a sample must show before its correction, and what may remain.
struct Limits {
    double bendBefore;   ///< pixels, at least, of the most bent edge
    double fringeBefore; ///< pixels, at least, of the widest fringe
    double cornerBefore; ///< share of the light at most, in each corner patch
};
constexpr double kBendAfter = 0.5;
constexpr double kFringeAfter = 0.2;
constexpr double kLightAfter = 0.02; // off 1, at most
constexpr double kCornerReach = 0.3; // of the picture's diagonal

TiffRaster ReadJpeg(const QString &path)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_RGB888);
    TiffRaster raster = BlankRaster(image.width(), image.height(), 3, 8);
    for (int y = 0; y < raster.height; ++y)
        std::copy_n(image.constScanLine(y), raster.width * 3,
                    raster.values.data() + size_t(y) * size_t(raster.width) * 3);
    return raster;
}

struct Figures {
    double bend = 0;
    QString bendAt;
    double fringe[2] = {};     ///< red, blue
    std::vector<double> light; ///< of each patch, 1 means as in the scene

    QString Text() const
    {
        QString text = QStringLiteral("bend %1 px (%2), red fringe %3 px, blue %4 px, light")
                           .arg(bend, 0, 'f', 2)
                           .arg(bendAt)
                           .arg(fringe[0], 0, 'f', 2)
                           .arg(fringe[1], 0, 'f', 2);
        for (double share : light)
            text += QStringLiteral(" %1").arg(share, 0, 'f', 3);
        return text;
    }
};

double LightOf(const TiffRaster &picture, const Sample &sample, const Samples::EvenPatch &patch, Point center)
{
    Samples::Rgb sum;
    int count = 0;
    for (double dy = -patch.halfSize; dy <= patch.halfSize; ++dy)
        for (double dx = -patch.halfSize; dx <= patch.halfSize; ++dx, ++count)
            sum = sum + sample.scene->At({{patch.center.x + dx, patch.center.y + dy}, 1, 1});
    const Samples::Rgb seen = MeanColor(picture, center, patch.halfSize);
    return (seen.r + seen.g + seen.b) / 255 / ((sum.r + sum.g + sum.b) / count);
}

Figures MeasurePicture(const TiffRaster &picture, const Sample &sample, const Placement &placement)
{
    Figures figures;
    const double right = picture.width - 1;
    const double bottom = picture.height - 1;
    for (const Samples::StraightEdge &edge : sample.scene->Edges()) {
        const std::vector<EdgePoint> points = FollowEdge(picture, edge, placement);
        const double bend = LargestBend(points);
        if (bend > figures.bend) {
            figures.bend = bend;
            figures.bendAt = QString::fromStdString(edge.name);
        }
        for (const Point corner : {Point{0, 0}, Point{right, 0}, Point{0, bottom}, Point{right, bottom}})
            for (int i : {0, 1})
                figures.fringe[i] = std::max(figures.fringe[i],
                                             Fringe(points, 2 * i, corner, kCornerReach * std::hypot(right, bottom)));
    }
    for (const Samples::EvenPatch &patch : sample.scene->Patches())
        figures.light.push_back(LightOf(picture, sample, patch, placement(patch.center)));
    return figures;
}

} // namespace

Q_DECLARE_METATYPE(Sample)
Q_DECLARE_METATYPE(Limits)

class StraightnessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void faultsAreThereBeforeAndGoneAfter_data();
    void faultsAreThereBeforeAndGoneAfter();
};

void StraightnessTest::faultsAreThereBeforeAndGoneAfter_data()
{
    QTest::addColumn<Sample>("sample");
    QTest::addColumn<Limits>("limits");

    const Limits limits[] = {{10, 1.5, 0.8}, {10, 1.5, 0.8}, {40, 0.8, 0.9}};
    const std::vector<Sample> samples = Samples::AllSamples();
    for (size_t i = 0; i < samples.size(); ++i)
        QTest::newRow(samples[i].picture.c_str()) << samples[i] << limits[i];
}

void StraightnessTest::faultsAreThereBeforeAndGoneAfter()
{
    QFETCH(const Sample, sample);
    QFETCH(const Limits, limits);
    const QString folder = QStringLiteral(VITRELUX_SAMPLES "/");
    const QString name = QString::fromStdString(sample.picture);
    const QTemporaryDir results;
    const ProgramResult run = ProgramRun().Run(
        {QStringLiteral("correct"), folder + name + QStringLiteral(".jpg"), QStringLiteral("--profile"),
         folder + QString::fromStdString(sample.profile) + QStringLiteral(".lcp"), QStringLiteral("-o"),
         results.path()});
    QVERIFY2(run.exitCode == 0, run.error.constData());

    const TiffRaster before = ReadJpeg(folder + name + QStringLiteral(".jpg"));
    const TiffRaster after = ReadTiff(results.filePath(name + QStringLiteral("_corrected.tiff")));
    QCOMPARE(QSize(after.width, after.height), QSize(before.width, before.height)); // upright as it was
    const Placement inPhotograph = [&](Point corrected) {
        const Point source = ToSource(sample.lens, *sample.lens.green, MainProjection(sample.lens),
                                      Turned(corrected, before.width, sample.hold));
        return Upright(source, before.width, sample.hold);
    };
    const Figures faults = MeasurePicture(before, sample, inPhotograph);
    const Figures remains = MeasurePicture(after, sample, [](Point corrected) { return corrected; });
    qInfo("before: %s", qPrintable(faults.Text()));
    qInfo("after:  %s", qPrintable(remains.Text()));

    QVERIFY(faults.bend > limits.bendBefore);
    QVERIFY(remains.bend < kBendAfter);
    for (int i : {0, 1}) {
        QVERIFY(faults.fringe[i] > limits.fringeBefore);
        QVERIFY(remains.fringe[i] < kFringeAfter);
    }
    QVERIFY(faults.light.front() > 0.9); // the middle
    for (size_t i = 1; i < faults.light.size(); ++i)
        QVERIFY(faults.light[i] < limits.cornerBefore);
    for (double light : remains.light)
        QVERIFY(std::abs(light - 1) < kLightAfter);
}

QTEST_GUILESS_MAIN(StraightnessTest)
#include "straightness_test.moc"
