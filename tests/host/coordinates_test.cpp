// Runs the whole program over pictures whose values are their own coordinates, so that every pixel of the result tells
// where it was taken from, and compares that with the lens mathematics in double precision.
#include "CorrectFile.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>

#include "TiffRaster.h"

using Samples::LensModel;
using Samples::LensProfile;
using Samples::Point;

namespace {

/// The gain is a polynomial of the fourth degree in float: a few roundings of 6e-8 in terms of up to about 4.
constexpr double kGainTolerance = 2e-6;

LensProfile Profile(const LensModel &distortion, bool fisheye = false)
{
    LensProfile profile;
    profile.name = "test";
    profile.camera = "Test";
    profile.lens = "Test";
    profile.fisheye = fisheye;
    profile.distortion = distortion;
    return profile;
}

/// With chromatic models that differ from the distortion model and from each other in all they can.
LensProfile WithChromatic(LensProfile profile)
{
    profile.green = profile.distortion;
    profile.green->tangential1 = profile.green->tangential2 = 0;
    profile.green->focalLength *= 1.03;
    profile.redGreen = LensModel{0.81, 0.512, 0.489, {0.013, -0.004}, 0, 0, 1.004};
    profile.blueGreen = LensModel{0.79, 0.494, 0.507, {-0.011, 0.003, 0.002}, 0, 0, 0.997};
    return profile;
}

LensProfile WithVignette(LensProfile profile)
{
    profile.vignette = LensModel{0.83, 0.53, 0.46, {-0.52, 0.11, -0.07}, 0, 0, 1, 0.71};
    return profile;
}

enum class Ramp { XYX, YXY };

/// Red, green, blue hold x, y, x as fractions of the size minus one, or y, x, y.
TiffRaster RampPicture(QSize size, Ramp ramp)
{
    TiffRaster raster = BlankRaster(size.width(), size.height(), 3, 32);
    for (int y = 0; y < raster.height; ++y)
        for (int x = 0; x < raster.width; ++x)
            for (int c = 0; c < 3; ++c)
                raster.At(x, y, c) = (c == 1) == (ramp == Ramp::XYX) ? static_cast<float>(y) / float(raster.height - 1)
                                                                     : static_cast<float>(x) / float(raster.width - 1);
    return raster;
}

struct Deviation {
    double worst = 0;
    QString where;
    qint64 compared = 0;
    qint64 unsure = 0;

    void Note(double deviation, int x, int y, int channel, double got, double expected)
    {
        ++compared;
        if (deviation <= worst) // false for a value that is not a number
            return;
        worst = std::isnan(deviation) ? HUGE_VAL : deviation;
        where = QStringLiteral("at (%1, %2), channel %3: got %4, expected %5; off by %6")
                    .arg(x)
                    .arg(y)
                    .arg(channel)
                    .arg(got, 0, 'g', 9)
                    .arg(expected, 0, 'g', 9)
                    .arg(deviation);
    }
};

} // namespace

Q_DECLARE_METATYPE(Samples::LensProfile)

class CoordinatesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyPixelComesFromItsPlace_data();
    void everyPixelComesFromItsPlace();
    void greyIsBrightenedByTheSeries_data();
    void greyIsBrightenedByTheSeries();

private:
    TiffRaster Correct(const TiffRaster &source, const LensProfile &profile, int corrections);
    void Compare(const LensProfile &profile, int corrections, QSize size, Ramp ramp, Deviation *deviation);

    QTemporaryDir m_folder;
};

TiffRaster CoordinatesTest::Correct(const TiffRaster &source, const LensProfile &profile, int corrections)
{
    const QString path = m_folder.filePath(QStringLiteral("source.tiff"));
    WriteTiff(path, source);
    TiffRaster corrected = ReadTiff(CorrectFile(path, profile, corrections));
    if (QSize(corrected.width, corrected.height) != QSize(source.width, source.height) || corrected.channels != 3
        || corrected.bits != 32)
        throw std::runtime_error("the result has another form");
    return corrected;
}

void CoordinatesTest::everyPixelComesFromItsPlace_data()
{
    QTest::addColumn<LensProfile>("profile");
    QTest::addColumn<int>("corrections");
    QTest::addColumn<QSize>("size"); // of the upright picture

    const QSize landscape(600, 400);
    const QSize portrait(400, 600);
    const QSize square(500, 500);
    const LensModel one = {0.9, 0.51, 0.48, {-0.15}};
    const LensModel two = {0.9, 0.49, 0.52, {-0.12, 0.04}};
    const LensModel three = {0.9, 0.51, 0.48, {0.08, -0.05, 0.03}}; // corners reach outside
    const LensModel tangential = {0.9, 0.5, 0.5, {-0.12, 0.04}, 0.012, -0.009};
    const LensModel onlyTangential = {0.9, 0.5, 0.5, {}, -0.01, 0.013};
    const LensModel fish = {0.52, 0.505, 0.495, {-0.04}};
    const LensModel wideFish = {0.42, 0.495, 0.502, {-0.03, 0.004}};

    QTest::newRow("one coefficient") << Profile(one) << int(Distortion) << landscape;
    QTest::newRow("two coefficients, portrait") << Profile(two) << int(Distortion) << portrait;
    QTest::newRow("three coefficients, outwards") << Profile(three) << int(Distortion) << landscape;
    QTest::newRow("three coefficients, square") << Profile(three) << int(Distortion) << square;
    QTest::newRow("three coefficients, portrait") << Profile(three) << int(Distortion) << portrait;
    QTest::newRow("tangential") << Profile(tangential) << int(Distortion) << landscape;
    QTest::newRow("tangential, portrait") << Profile(tangential) << int(Distortion) << portrait;
    QTest::newRow("tangential alone") << Profile(onlyTangential) << int(Distortion) << landscape;
    QTest::newRow("fisheye, one coefficient") << Profile(fish, true) << int(Distortion) << landscape;
    QTest::newRow("fisheye, two coefficients") << Profile(wideFish, true) << int(Distortion) << landscape;
    QTest::newRow("fisheye, portrait") << Profile(wideFish, true) << int(Distortion) << portrait;
    QTest::newRow("fisheye, centre on a pixel")
        << Profile({0.5, 0.5, 0.5, {-0.04}}, true) << int(Distortion) << QSize(601, 401);
    QTest::newRow("three warps") << WithChromatic(Profile(two)) << int(Distortion | Chromatic) << landscape;
    QTest::newRow("three warps, outwards") << WithChromatic(Profile(three)) << int(Distortion | Chromatic) << landscape;
    QTest::newRow("three warps, outwards, portrait")
        << WithChromatic(Profile(three)) << int(Distortion | Chromatic) << portrait;
    QTest::newRow("three warps, fisheye")
        << WithChromatic(Profile(wideFish, true)) << int(Distortion | Chromatic) << landscape;
    QTest::newRow("red and blue alone") << WithChromatic(Profile(two)) << int(Chromatic) << landscape;
    QTest::newRow("red and blue alone, square") << WithChromatic(Profile(two)) << int(Chromatic) << square;
    QTest::newRow("red and blue alone, fisheye") << WithChromatic(Profile(fish, true)) << int(Chromatic) << portrait;
}

void CoordinatesTest::Compare(const LensProfile &profile, int corrections, QSize size, Ramp ramp, Deviation *deviation)
{
    const TiffRaster source = RampPicture(size, ramp);
    const TiffRaster result = Correct(source, profile, corrections);
    const LensOracle oracle(profile, corrections);
    const Samples::Hold hold = HoldOf(size.width(), size.height());
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const OraclePixel pixel = oracle.At(Turned({double(x), double(y)}, size.width(), hold));
            for (int c = 0; c < 3; ++c) {
                const OracleChannel &channel = pixel.channels[c];
                const bool tellsY = (c == 1) == (ramp == Ramp::XYX);
                const int range = (tellsY ? size.height() : size.width()) - 1;
                const Point from = Upright(channel.from, size.width(), hold);
                double expected = 0;
                if (channel.content == Content::Sampled)
                    expected = (tellsY ? from.y : from.x) / range;
                else if (channel.content == Content::Kept && hold == Samples::Hold::Landscape)
                    expected = double(source.At(x, y, c)); // a portrait is warped into a cleared picture
                const double got = double(result.At(x, y, c));
                if (channel.content == Content::Unsure)
                    ++deviation->unsure;
                else
                    deviation->Note(std::abs(got - std::min(expected, 1.0)) * range, x, y, c, got, expected);
            }
        }
}

void CoordinatesTest::everyPixelComesFromItsPlace()
{
    QFETCH(LensProfile, profile);
    QFETCH(const int, corrections);
    QFETCH(const QSize, size);
    profile.width = std::max(size.width(), size.height());
    profile.height = std::min(size.width(), size.height());

    Deviation deviation;
    for (Ramp ramp : {Ramp::XYX, Ramp::YXY}) // both coordinates of each channel
        Compare(profile, corrections, size, ramp, &deviation);
    qInfo("largest deviation %.5f pixels over %lld values", deviation.worst, deviation.compared);
    QVERIFY2(deviation.worst < kTolerancePx, qPrintable(deviation.where + QStringLiteral(" pixels")));
    QVERIFY2(deviation.unsure < deviation.compared / 200, qPrintable(QString::number(deviation.unsure)));
}

void CoordinatesTest::greyIsBrightenedByTheSeries_data()
{
    QTest::addColumn<int>("corrections");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("grey");

    const QSize landscape(600, 400);
    const QSize portrait(400, 600);
    QTest::newRow("alone") << int(Vignetting) << landscape << 0.4f;
    QTest::newRow("alone, portrait") << int(Vignetting) << portrait << 0.4f;
    QTest::newRow("alone, square") << int(Vignetting) << QSize(500, 500) << 0.4f;
    QTest::newRow("alone, up to white") << int(Vignetting) << landscape << 0.8f;
    QTest::newRow("at the warped place") << int(Vignetting | Distortion) << landscape << 0.4f;
    QTest::newRow("at the warped place, up to white") << int(Vignetting | Distortion) << portrait << 0.8f;
    QTest::newRow("at the place of red") << int(Vignetting | Chromatic) << landscape << 0.4f;
    QTest::newRow("at the place of green") << int(Vignetting | Distortion | Chromatic) << portrait << 0.4f;
}

void CoordinatesTest::greyIsBrightenedByTheSeries()
{
    QFETCH(const int, corrections);
    QFETCH(const QSize, size);
    QFETCH(const float, grey);
    LensProfile profile = WithVignette(WithChromatic(Profile({0.9, 0.49, 0.52, {-0.12, 0.04}})));
    profile.width = std::max(size.width(), size.height());
    profile.height = std::min(size.width(), size.height());
    const Samples::Hold hold = HoldOf(size.width(), size.height());

    TiffRaster source = BlankRaster(size.width(), size.height(), 3, 32);
    std::fill(source.values.begin(), source.values.end(), grey);
    const TiffRaster result = Correct(source, profile, corrections);
    const LensOracle oracle(profile, corrections);
    Deviation deviation;
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x) {
            const OraclePixel pixel = oracle.At(Turned({double(x), double(y)}, size.width(), hold));
            for (int c = 0; c < 3; ++c) {
                if (pixel.channels[c].content != Content::Sampled)
                    continue;
                const double expected = std::min(1.0, double(grey) * Gain(profile, pixel.gainAt));
                const double got = double(result.At(x, y, c));
                deviation.Note(std::abs(got / expected - 1), x, y, c, got, expected);
            }
        }
    qInfo("largest deviation %.1e of the value", deviation.worst);
    QVERIFY2(deviation.worst < kGainTolerance, qPrintable(deviation.where));
    QVERIFY(deviation.compared > qint64(size.width()) * size.height() * 2);
}

QTEST_GUILESS_MAIN(CoordinatesTest)
#include "coordinates_test.moc"
