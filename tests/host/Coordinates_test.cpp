// Runs the program on pictures whose pixel values are their coordinates. Every pixel of the result then holds its
// source position, which is compared with the lens models in double precision.
#include "LensOracle.h"
#include "ProgramRun.h"
#include "Table.h"
#include "TestFiles.h"
#include "TiffRaster.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <stdexcept>

using Samples::LensModel;
using Samples::LensProfile;
using Samples::Point;

namespace {

/// The gain is a fourth-degree polynomial in single precision: a few rounding errors of 6e-8 in terms of up to about 4.
constexpr double kGainTolerance = 2e-6;

LensProfile Profile(const LensModel &distortion, bool fisheye = false)
{
    LensProfile profile;
    profile.fisheye = fisheye;
    profile.distortion = distortion;
    return profile;
}

/// Returns the profile with chromatic models. Green differs from the distortion model in the focal length, red and blue
/// from both and from each other in all values.
LensProfile WithChromatic(LensProfile profile)
{
    profile.green = profile.distortion;
    profile.green->tangential1 = profile.green->tangential2 = 0;
    profile.green->focalLength *= 1.03;
    profile.redGreen = LensModel{0.81, 0.512, 0.489, {0.013, -0.004}, 0, 0, 1.004};
    profile.blueGreen = LensModel{0.79, 0.494, 0.507, {-0.011, 0.003, 0.002}, 0, 0, 0.997};
    return profile;
}

/// Corrects a picture with exactly @p corrections enabled. Sets the size of @p profile to the picture's in landscape
/// orientation. Throws std::runtime_error if the program fails.
TiffRaster Corrected(const TiffRaster &source, LensProfile *profile, int corrections)
{
    profile->width = std::max(source.width, source.height);
    profile->height = std::min(source.width, source.height);
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.tiff"_s), profilePath = folder.filePath("a.lcp"_s);
    WriteTiff(path, source);
    WriteFile(profilePath, QByteArray::fromStdString(ProfileText(*profile)));
    QStringList arguments = {"correct"_s, "--plain"_s, "--profile"_s, profilePath, path};
    for (const auto &[correction, option] : {std::pair(Distortion, "--distortion"_s), std::pair(Chromatic, "--ca"_s),
                                             std::pair(Vignetting, "--vignetting"_s)})
        if (corrections & correction)
            arguments << option;
    const ProgramResult result = ProgramRun().Run(arguments);
    if (result.exitCode != 0)
        throw std::runtime_error(result.error.toStdString());
    return ReadTiff(folder.filePath("a_corrected.tiff"_s));
}

/// Expected source of channel c at (x, y).
struct Expected {
    int x, y, c;
    OracleChannel channel; // its `from` is in the upright picture
    Point gainAt;
    Samples::Hold hold;
};

/// Largest of the deviations that `deviate` returned, and its position.
struct Deviation {
    double worst = 0;
    QString where;
    qint64 compared = 0, unsure = 0;

    template <typename Deviate> void Note(const TiffRaster &result, const LensOracle &oracle, Deviate deviate)
    {
        const Samples::Hold hold = HoldOf(result.width, result.height);
        for (int y = 0; y < result.height; ++y)
            for (int x = 0; x < result.width; ++x) {
                const OraclePixel pixel = oracle.At(Turned({double(x), double(y)}, result.width, hold));
                for (int c = 0; c < 3; ++c) {
                    Expected at = {x, y, c, pixel.channels[size_t(c)], pixel.gainAt, hold};
                    at.channel.from = Upright(at.channel.from, result.width, hold);
                    if (at.channel.content == Content::Unsure)
                        ++unsure;
                    else
                        Take(deviate(at, double(result.At(x, y, c))), at);
                }
            }
    }

private:
    void Take(double deviation, const Expected &at)
    {
        ++compared;
        if (deviation <= worst) // false for NaN
            return;
        worst = std::isnan(deviation) ? HUGE_VAL : deviation;
        where = QStringLiteral("off by %1 at (%2, %3), channel %4").arg(deviation).arg(at.x).arg(at.y).arg(at.c);
    }
};

const QSize kLandscape(600, 400), kPortrait(400, 600), kSquare(500, 500);

} // namespace

Q_DECLARE_METATYPE(Samples::LensProfile)

class tst_Coordinates : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyPixelHasItsSourcePosition_data();
    void everyPixelHasItsSourcePosition();
    void vignettingGainOfGray_data();
    void vignettingGainOfGray();
};

void tst_Coordinates::everyPixelHasItsSourcePosition_data()
{
    QTest::addColumn<LensProfile>("profile");
    QTest::addColumn<int>("corrections");
    QTest::addColumn<QSize>("size"); // of the upright picture

    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/lens-models.tsv"))) {
        const auto number = [&row](int i) { return row.at(i).toDouble(); };
        LensModel model = {number(3), number(4), number(5), {}, number(7), number(8)};
        for (const QString &coefficient : row[6].split(QLatin1Char(' '), Qt::SkipEmptyParts))
            model.coefficients.push_back(coefficient.toDouble());
        LensProfile profile = Profile(model, row[1] == "fisheye"_s);
        if (row[2] == "3"_s)
            profile = WithChromatic(profile);
        for (const auto &[shape, size] :
             {std::pair("landscape", kLandscape), std::pair("portrait", kPortrait), std::pair("square", kSquare)}) {
            QTest::addRow("%s, %s", qPrintable(row[0]), shape)
                << profile << int(profile.green ? Distortion | Chromatic : Distortion) << size;
            if (profile.green)
                QTest::addRow("%s, red and blue only, %s", qPrintable(row[0]), shape)
                    << profile << int(Chromatic) << size;
        }
    }
    QTest::newRow("fisheye, center on a pixel")
        << Profile({0.5, 0.5, 0.5, {-0.04}}, true) << int(Distortion) << QSize(601, 401);
}

void tst_Coordinates::everyPixelHasItsSourcePosition()
{
    QFETCH(LensProfile, profile);
    QFETCH(const int, corrections);
    QFETCH(const QSize, size);
    Deviation deviation;
    for (int yChannels : {0b010, 0b101}) { // channels with y; the others have x, so both are checked in every channel
        const auto coordinate = [=](Point p, int c) { return yChannels >> c & 1 ? p.y : p.x; };
        const Point range = {size.width() - 1.0, size.height() - 1.0};
        TiffRaster source = BlankRaster(size.width(), size.height(), 3, 32);
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width; ++x)
                for (int c = 0; c < 3; ++c)
                    source.At(x, y, c) = float(coordinate({double(x), double(y)}, c) / coordinate(range, c));
        const TiffRaster result = Corrected(source, &profile, corrections);
        QCOMPARE(QSize(result.width, result.height), size);
        deviation.Note(result, LensOracle(profile, corrections), [&](const Expected &at, double got) {
            double expected = 0;
            if (at.channel.content == Content::Sampled)
                expected = std::min(1.0, coordinate(at.channel.from, at.c) / coordinate(range, at.c));
            else if (at.channel.content == Content::Kept && at.hold == Samples::Hold::Landscape)
                expected = double(source.At(at.x, at.y, at.c)); // a portrait is warped into a cleared picture
            return std::abs(got - expected) * coordinate(range, at.c);
        });
    }
    QVERIFY2(deviation.worst < kTolerancePx, qPrintable(deviation.where));
    QVERIFY2(deviation.unsure < deviation.compared / 200, qPrintable(QString::number(deviation.unsure)));
}

void tst_Coordinates::vignettingGainOfGray_data()
{
    QTest::addColumn<int>("corrections");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<float>("gray");
    for (int others : {0, Distortion + 0, Chromatic + 0, Distortion | Chromatic})
        for (const QSize &size : {kLandscape, kPortrait, kSquare})
            QTest::addRow("%d, width %d", others, size.width())
                << (others | Vignetting) << size << (size == kSquare ? 0.8f : 0.4f); // 0.8 clips to white
}

void tst_Coordinates::vignettingGainOfGray()
{
    QFETCH(const int, corrections);
    QFETCH(const QSize, size);
    QFETCH(const float, gray);
    LensProfile profile = WithChromatic(Profile({0.9, 0.49, 0.52, {-0.12, 0.04}}));
    profile.vignette = LensModel{0.83, 0.53, 0.46, {-0.52, 0.11, -0.07}, 0, 0, 1, 0.71};
    TiffRaster source = BlankRaster(size.width(), size.height(), 3, 32);
    std::fill(source.values.begin(), source.values.end(), gray);
    const TiffRaster result = Corrected(source, &profile, corrections);
    Deviation deviation;
    qint64 sampled = 0;
    deviation.Note(result, LensOracle(profile, corrections), [&](const Expected &at, double got) {
        if (at.channel.content != Content::Sampled)
            return 0.0;
        ++sampled;
        return std::abs(got / std::min(1.0, double(gray) * Gain(profile, at.gainAt)) - 1);
    });
    QVERIFY2(deviation.worst < kGainTolerance, qPrintable(deviation.where));
    QVERIFY(sampled > qint64(size.width()) * size.height() * 2);
}

QTEST_GUILESS_MAIN(tst_Coordinates)
#include "Coordinates_test.moc"
