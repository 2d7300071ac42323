// Tests of fitted corrections: tables against formulas, the twin against the models, the fast warp against the twin.
#include "Case.h"
#include "FittedWarpTwin.h"

#include "ReferenceWarp.h"
#include "SamplingQuality.h"

#include <QtTest>

#include <cmath>

namespace {

using Instructions = FloatWarp::Instructions;
using Sampling = FittedWarp::Sampling;
using Point = SourcePlaces::Point;

constexpr auto kBaseline = Instructions(0);

/// Textbook lens model; its coefficients apply to radii in focal lengths.
struct Model {
    double centerX, centerY, focalPixels, scale, k1, k2, t1, t2;

    Point At(Point p) const
    {
        const double u = (p.x - centerX) / focalPixels, v = (p.y - centerY) / focalPixels, r2 = u * u + v * v;
        const double k = 1.0 + k1 * r2 + k2 * r2 * r2;
        return {centerX + scale * focalPixels * (k * u + (2.0 * u * u + r2) * t2 + 2.0 * u * v * t1),
                centerY + scale * focalPixels * (k * v + (2.0 * v * v + r2) * t1 + 2.0 * u * v * t2)};
    }

    RadialMap Map(double toRadius) const
    {
        constexpr int kNodes = 129;
        const double step = toRadius * toRadius / (kNodes - 1), unit = focalPixels * focalPixels;
        std::vector<double> nodes;
        for (int i = 0; i < kNodes; ++i)
            nodes.push_back(scale * (1.0 + (k1 + k2 * step * i / unit) * step * i / unit));
        return {centerX,
                centerY,
                RadialCurve(step, nodes),
                scale * t1 / focalPixels,
                scale * t2 / focalPixels,
                std::numeric_limits<double>::infinity()};
    }
};

/// Wide-angle lens for a picture of the given size. @p bend is 1 for an ordinary one.
struct Lens {
    Lens(int width, int height, double bend, bool split = true)
        : side(std::hypot(width, height)),
          green{0.51 * width, 0.48 * height, 0.7 * side, 1.002, -0.11 * bend, 0.05 * bend, 0.003 * bend, -0.002 * bend},
          red{0.49 * width, 0.5 * height, 0.7 * side, 1.0008, 0.0006 * bend, 0.0, 0.0, 0.0001},
          blue{0.5 * width, 0.52 * height, 0.72 * side, 0.9993, -0.0006 * bend, 0.0004, 0.0, 0.0}
    {
        fitted.width = width;
        fitted.height = height;
        fitted.geometry = green.Map(side);
        if (split) {
            fitted.red = red.Map(side);
            fitted.blue = blue.Map(side);
        }
        fitted.light = GainMap{0.5 * width, 0.5 * height, Model{0, 0, side, 1.0, 2.0, 1.0, 0, 0}.Map(side).factor};
    }

    double side;
    Model green, red, blue;
    Correction fitted;
};

/// Returns a picture with the same value in every color, and alpha 1.
template <typename Function> Pixels Made(int width, int height, Function at)
{
    Pixels pixels{width, height, 4, 32, QVector<float>(width * height * 4, 1.0F)};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < 3; ++c)
                pixels.At(x, y, c) = static_cast<float>(at(x, y));
    return pixels;
}

Pixels Rendered(const FittedWarp &warp, const Pixels &source, Instructions instructions)
{
    GuardedImage from(source, 3), to(Made(source.width, source.height, [](int, int) { return 9.0; }), 5);
    if (!warp.Render(from.image, 0, to.image, 0, instructions) || !to.GuardsAreIntact())
        return {};
    return to.Read();
}

/// Describes the first difference between another instruction set's result and @p baseline; empty if there is none.
QString DifferenceOfSets(const FittedWarp &warp, const Pixels &source, const Pixels &baseline)
{
    for (Instructions set : {Instructions::Avx2, Instructions::Avx512})
        if (set <= FloatWarp::BestInstructions())
            if (const QString found = FirstDifference(Rendered(warp, source, set), baseline); !found.isEmpty())
                return QStringLiteral("instructions %1: %2").arg(int(set)).arg(found);
    return {};
}

} // namespace

Q_DECLARE_METATYPE(Sampling)
Q_DECLARE_METATYPE(FittedWarp::Source)

class tst_FittedWarp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void curveIsExactForCubics();
    void twinFollowsTheModels();
    void warpFollowsTheTwin_data();
    void warpFollowsTheTwin();
    void foldsAreEmpty();
    void bandsAreTheWhole();
    void storedIsConverted();
    void transferCurves_data();
    void transferCurves();
    void flatFields_data();
    void flatFields();
    void badCurves();
    void beyondTheTables();
    void rampsStayRamps();
    void sharpness_data();
    void sharpness();
    void overshoot();
};

void tst_FittedWarp::curveIsExactForCubics()
{
    const auto cubic = [](double s) { return 1.0 + s * (0.5 - s * (0.3 - 0.01 * s)); };
    std::vector<double> nodes;
    for (int i = 0; i < 6; ++i)
        nodes.push_back(cubic(2.0 * i));
    const RadialCurve curve(2.0, nodes);
    QCOMPARE(curve.EndSquared(), 10.0);
    for (double s = 0.0; s < 10.0; s += 0.125)
        QVERIFY2(std::abs(curve.AtSquared(s) - cubic(s)) < 1e-12, qPrintable(QString::number(s)));
    for (double beyond : {10.0, 1e300, double(INFINITY)}) {
        const Case named(beyond);
        QCOMPARE(curve.AtSquared(beyond), cubic(10.0));
    }
    QCOMPARE(RadialCurve(0.75).AtSquared(1e9), 0.75);
    QCOMPARE(RadialCurve(4.0, {1.0, 3.0}).AtSquared(1.0), 1.5);
    QCOMPARE(RadialCurve(4.0, {1.0, 3.0, 0.0}).AtSquared(6.0), 1.5);
}

void tst_FittedWarp::twinFollowsTheModels()
{
    Lens lens(600, 400, 2.0);
    lens.fitted.zoom = 1.1;
    const CorrectionTwin twin(lens.fitted);
    for (Point p : {Point{0, 0}, {599, 399}, {300.5, 7}, {17, 222.25}}) {
        const Case named(p.x, p.y);
        const Point a = {299.5 + (p.x - 299.5) / 1.1, 199.5 + (p.y - 199.5) / 1.1};
        const Point green = lens.green.At(a), red = lens.red.At(green), blue = lens.blue.At(green);
        const SourcePlaces places = twin.At(p.x, p.y);
        for (const auto &[got, want] : {std::pair{places.green, green}, {places.red, red}, {places.blue, blue}})
            QVERIFY(std::hypot(got.x - want.x, got.y - want.y) < 1e-6);
        const double r2 = std::pow((green.x - 300) / lens.side, 2) + std::pow((green.y - 200) / lens.side, 2);
        QVERIFY(std::abs(places.gain - (1.0 + 2.0 * r2 + r2 * r2)) < 1e-9);
    }
}

void tst_FittedWarp::warpFollowsTheTwin_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("bend");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<bool>("split");
    QTest::addColumn<Sampling>("sampling");
    QTest::addColumn<FittedWarp::Source>("form");
    const FittedWarp::Source forms[] = {{false, false}, {true, false}, {false, true}};
    for (QSize size : {QSize(1, 1), {3, 1}, {1, 70}, {67, 41}, {400, 267}})
        for (int i = 0; i < 12; ++i)
            QTest::addRow("%dx%d split=%d sharp=%d float=%d alpha=%d", size.width(), size.height(), i & 1, i & 2,
                          forms[i / 4].isFloat, forms[i / 4].hasAlpha)
                << size << 1.0 << 1.0 << bool(i & 1) << (i & 2 ? Sampling::Sharp : Sampling::Bilinear) << forms[i / 4];
    for (Sampling sampling : {Sampling::Bilinear, Sampling::Sharp}) {
        QTest::addRow("cells of 1 pixel, %d", int(sampling))
            << QSize(90, 60) << -9.0 << 0.7 << true << sampling << forms[0];
        QTest::addRow("all outside, %d", int(sampling)) << QSize(90, 60) << 0.0 << 1e-3 << true << sampling << forms[0];
    }
}

/// Samples between random pixels: an error of e pixels in the position changes the result by at most e times the gain.
void tst_FittedWarp::warpFollowsTheTwin()
{
    QFETCH(QSize, size);
    QFETCH(double, bend);
    QFETCH(double, zoom);
    QFETCH(bool, split);
    QFETCH(Sampling, sampling);
    QFETCH(FittedWarp::Source, form);
    Lens lens(size.width(), size.height(), bend, split);
    lens.fitted.zoom = zoom;
    Pixels source = RandomPixels(size.width(), size.height(), 4, 32, 1);
    for (int i = 0; i < source.values.size(); ++i)
        source.values[i] = i % 4 == 3 ? 0.25F + 0.75F * float(i % 29) / 29.0F
            : form.isFloat            ? source.values[i]
                                      : qBound(0.0F, float(qRound(source.values[i] * 65535.0F)) / 65535.0F, 1.0F);
    const FittedWarp warp(lens.fitted, sampling, TransferCurve::Linear(), form);
    const FittedWarpTwin twin(lens.fitted, sampling, TransferCurve::Linear(), form);
    const CorrectionTwin places(lens.fitted);
    const Pixels got = Rendered(warp, source, kBaseline);
    QVERIFY(!got.values.isEmpty());
    const GuardedImage from(source, 0);
    const int step = size.width() > 100 ? 7 : 1; // odd, so that every column of a block occurs
    for (int i = 0; i < size.width() * size.height(); i += step) {
        const int x = i % size.width(), y = i / size.width();
        // The limits of sharp sampling change from one source pixel to the next; near the boundary, either may apply.
        FittedWarpTwin::Pixel least = twin.At(from.image, x, y), greatest = least;
        for (int j = 0; j < 9 && sampling == Sampling::Sharp && size.width() > 100; ++j) {
            const FittedWarpTwin::Pixel near = twin.At(from.image, x + (j % 3 - 1) * 0.004, y + (j / 3 - 1) * 0.004);
            for (int c = 0; c < 4; ++c) {
                least[c] = std::min(least[c], near[c]);
                greatest[c] = std::max(greatest[c], near[c]);
            }
        }
        const double tolerance = 0.02 * places.At(x, y).gain * (form.hasAlpha ? 8.0 : 1.0);
        for (int c = 0; c < 4; ++c)
            QVERIFY2(got.At(x, y, c) > least[c] - tolerance && got.At(x, y, c) < greatest[c] + tolerance,
                     qPrintable(QStringLiteral("(%1, %2) channel %3: %4, not %5 to %6")
                                    .arg(x)
                                    .arg(y)
                                    .arg(c)
                                    .arg(double(got.At(x, y, c)))
                                    .arg(least[c])
                                    .arg(greatest[c])));
    }
    QCOMPARE(DifferenceOfSets(warp, source, got), QString());
}

/// Pixels beyond the fold are empty; those just before it aren't.
void tst_FittedWarp::foldsAreEmpty()
{
    Correction fisheye;
    fisheye.width = 200;
    fisheye.height = 100;
    fisheye.geometry = RadialMap{90, 50, RadialCurve(), 0, 0, 70.3};
    Correction inside; // the fold lies inside the picture, so sharp sampling near it reads nothing outside
    inside.width = 900;
    inside.height = 400;
    inside.geometry = RadialMap{440, 200, RadialCurve(), 0, 0, 150.3};
    for (const Correction &correction : {fisheye, inside}) {
        const RadialMap &map = *correction.geometry;
        for (const auto &[sampling, isFloat] : {std::pair(Sampling::Bilinear, false), std::pair(Sampling::Sharp, false),
                                                std::pair(Sampling::Sharp, true)}) {
            const Case named(correction.width, int(sampling), isFloat);
            const FittedWarp warp(correction, sampling, TransferCurve::Linear(), {isFloat, false});
            QVERIFY(warp.LeavesEmpty());
            const Pixels source = Made(correction.width, correction.height, [](int, int) { return 0.5; });
            const Pixels got = Rendered(warp, source, FloatWarp::BestInstructions());
            for (int y = 0; y < correction.height; ++y)
                for (int x = 0; x < correction.width; ++x)
                    QCOMPARE(got.At(x, y, 3),
                             std::hypot(x - map.centerX, y - map.centerY) > map.endRadius ? 0.0F : 1.0F);
        }
    }
    fisheye.geometry->endRadius = 125.0; // the farthest corner is 120 away
    QVERIFY(!FittedWarp(fisheye, Sampling::Bilinear, TransferCurve::Linear(), {}).LeavesEmpty());
}

/// Stored pixels (noise of 8 and 16 bits, with both ends of the range) give the same result as their float conversion.
void tst_FittedWarp::storedIsConverted()
{
    constexpr int kWidth = 331, kHeight = 120;
    for (const int bits : {8, 16}) {
        Pixels source = RandomPixels(kWidth, kHeight, 3, bits, 6);
        source.At(70, 60, 0) = source.At(80, 60, 2) = bits == 8 ? 255.0F : 65535.0F;
        source.At(71, 60, 0) = source.At(80, 61, 1) = 0.0F;
        const GuardedImage from(source, 0);
        KImage floats;
        from.image.Convert(floats, GFL_RGBA, 32);
        for (const double bend : {-3.0, 1.0}) {
            const FittedWarp warp(Lens(kWidth, kHeight, bend).fitted, Sampling::Sharp, TransferCurve::Srgb(), {});
            QVERIFY(warp.ReadsStored(from.image) && !warp.ReadsStored(floats));
            for (int set = 0; set <= int(FloatWarp::BestInstructions()); ++set) {
                const Case named("bits", bits, "bend", bend, "instructions", set);
                KImage results[2];
                for (KImage &result : results)
                    result.AllocBitmap(kWidth, kHeight, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
                QVERIFY(warp.Render(from.image, 0, results[0], 0, Instructions(set)));
                QVERIFY(warp.Render(floats, 0, results[1], 0, Instructions(set)));
                for (int y = 0; y < kHeight; ++y)
                    QVERIFY(std::memcmp(results[0].getData(0, y), results[1].getData(0, y), kWidth * 16) == 0);
            }
        }
    }
}

void tst_FittedWarp::bandsAreTheWhole()
{
    constexpr int kWidth = 150, kHeight = 120;
    const Pixels source = RandomPixels(kWidth, kHeight, 4, 32, 5);
    const GuardedImage from(source, 0);
    for (int i = 0; i < 6; ++i) {
        const Case named("lens and sampling", i);
        const double bends[] = {-3.0, 1.0, 4.0};
        const FittedWarp warp(Lens(kWidth, kHeight, bends[i / 2]).fitted, i % 2 ? Sampling::Bilinear : Sampling::Sharp,
                              TransferCurve::Linear(), {});
        const Pixels whole = Rendered(warp, source, FloatWarp::BestInstructions());
        GuardedImage banded(source, 0);
        const GuardedImage expected(whole, 0);
        for (int y = 0; y < kHeight; y += 7) {
            const Case namedRow("row", y);
            const int rows = qMin(7, kHeight - y);
            const auto bytes = static_cast<size_t>(rows * kWidth * 16);
            KImage band(kWidth, rows, GFL_RGBA, 32, /*clear=*/false, banded.image.getData(0, y),
                        int(banded.image.bytesPerLine()));
            const auto render = [&](FittedWarp::RowRange range) {
                const KImage window(kWidth, range.end - range.first, GFL_RGBA, 32, /*clear=*/false,
                                    from.image.getData(0, range.first), int(from.image.bytesPerLine()));
                return warp.Render(window, range.first, band, y);
            };
            QVERIFY(!render({kHeight - 1, kHeight}) || y > kHeight - 10);
            const FittedWarp::RowRange range = warp.RowsFor(y, rows);
            for (int less = 60; less >= 0;
                 --less) { // a window with too few rows is reported, whichever color needs more
                const FittedWarp::RowRange fewer = {std::min(range.first + less, y),
                                                    std::max(range.end - less, y + rows)};
                QVERIFY(render(fewer) ? std::memcmp(band.getData(0, 0), expected.image.getData(0, y), bytes) == 0
                                      : less > 0);
            }
            QVERIFY(range.end - range.first < 70);
        }
        QCOMPARE(FirstDifference(banded.Read(), whole), QString());
    }
}

namespace {

double SrgbLight(double v)
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

/// Returns light that rises slowly at first, then steeply: not a power function.
double BentLight(double v)
{
    return 0.3 * v + 0.7 * v * v * v;
}

std::vector<double> Sampled(double (*light)(double), int points)
{
    std::vector<double> samples;
    for (int i = 0; i < points; ++i)
        samples.push_back(light(double(i) / (points - 1)));
    return samples;
}

} // namespace

Q_DECLARE_METATYPE(TransferCurve)
using Function = double (*)(double);
Q_DECLARE_METATYPE(Function)

void tst_FittedWarp::transferCurves_data()
{
    QTest::addColumn<TransferCurve>("curve");
    QTest::addColumn<QVector<Function>>("lights"); // one for all channels, or one per channel
    const auto row = [](const char *name, const TransferCurve &curve, const QVector<Function> &lights) {
        QTest::newRow(name) << curve << lights;
    };
    const Function linear = [](double v) { return v; },
                   romm = [](double v) { return v < 1.0 / 32.0 ? v / 16.0 : std::pow(v, 1.8); },
                   lightness =
                       [](double v) { return v < 0.08 ? v * 2700.0 / 24389.0 : std::pow((v + 0.16) / 1.16, 3.0); },
                   video = [](double v) { return v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1.0 / 0.45); };
    row("linear", TransferCurve::Linear(), {linear});
    row("sRGB", TransferCurve::Srgb(), {SrgbLight});
    row("gamma 1.8", TransferCurve::Power(1.8), {[](double v) { return std::pow(v, 1.8); }});
    row("Adobe RGB", TransferCurve::Power(563.0 / 256.0), {[](double v) { return std::pow(v, 563.0 / 256.0); }});
    row("points", *TransferCurve::FromSamples({Sampled(BentLight, 4097)}), {BentLight});
    row("points by channel",
        *TransferCurve::FromSamples({Sampled(BentLight, 4097), Sampled(SrgbLight, 4097), Sampled(linear, 2)}),
        {BentLight, SrgbLight, linear});
    for (const auto &[name, light] :
         {std::pair("sRGB", Function(SrgbLight)), {"ROMM RGB", romm}, {"L*", lightness}, {"BT.709", video}}) {
        std::vector<double> rounded = Sampled(light, 1024); // as stored in profiles
        for (double &point : rounded)
            point = std::round(point * 65535.0) / 65535.0;
        const TransferCurve curve = *TransferCurve::FromSamples({rounded});
        QVERIFY2(curve.ByFormula(), name);
        if (light != video) // BT.709 has a step at the end of its toe, which tables round off
            row(qPrintable(QLatin1String(name) + QStringLiteral(" by rounded points")), curve, {light});
    }
}

/// The warp uses tables. Its result must be the stored value of the light times the gain, within 1e-5 of that value,
/// and within 2.5e-6 (a sixth of a 16-bit code) below 0.25.
void tst_FittedWarp::transferCurves()
{
    QFETCH(TransferCurve, curve);
    QFETCH(QVector<Function>, lights);
    constexpr int kWidth = 501; // odd, for vectors of two pixels
    Correction correction;
    correction.width = kWidth;
    correction.height = 1;
    for (double gain : {1.0, 1.5, 4.0, 16.0}) {
        const Case named("gain", gain);
        correction.light = GainMap{0.0, 0.0, RadialCurve(gain)};
        const Pixels source = Made(kWidth, 1, [](int x, int) { return std::round(0.262 * x * x) / 65535.0; });
        for (bool isFloat : {false, true}) {
            const Case namedForm("float", isFloat);
            const FittedWarp warp(correction, Sampling::Bilinear, curve, {isFloat, false});
            const Pixels got = Rendered(warp, source, kBaseline);
            QCOMPARE(DifferenceOfSets(warp, source, got), QString());
            for (int i = 0; i < 3 * kWidth; ++i) {
                const int x = i / 3, c = i % 3;
                const Function light = lights[c % lights.size()];
                // Compare light on both sides, which needs no inverse.
                const double wanted = gain * light(double(source.At(x, 0, 0)));
                const double bright = double(got.At(x, 0, c)), error = 1e-5 * std::max(bright, 0.25);
                if (wanted >= 1.0 && !isFloat)
                    QCOMPARE(got.At(x, 0, c), 1.0F);
                else if (wanted <= 1.0)
                    QVERIFY2(
                        light(bright + error) >= wanted && light(std::max(bright - error, 0.0)) <= wanted,
                        qPrintable(QStringLiteral("%1 times %2: %3").arg(source.At(x, 0, 0)).arg(gain).arg(bright)));
                else
                    QVERIFY(bright > 1.0 - error);
            }
            QCOMPARE(got.At(0, 0, 1), 0.0F);
        }
        Pixels negative = source;
        for (float &value : negative.values)
            value = -value;
        const FittedWarp warp(correction, Sampling::Bilinear, curve, {/*isFloat=*/true, false});
        QCOMPARE(Rendered(warp, negative, kBaseline).At(99, 0, 2), -Rendered(warp, source, kBaseline).At(99, 0, 2));
    }
}

void tst_FittedWarp::flatFields_data()
{
    QTest::addColumn<TransferCurve>("curve");
    QTest::addColumn<Function>("light");
    QTest::addColumn<int>("greatest"); // largest code; 0: float
    for (int greatest : {255, 65535}) {
        QTest::addRow("sRGB up to %d", greatest) << TransferCurve::Srgb() << Function(SrgbLight) << greatest;
        const Function adobe = [](double v) { return std::pow(v, 563.0 / 256.0); };
        QTest::addRow("Adobe RGB up to %d", greatest) << TransferCurve::Power(563.0 / 256.0) << adobe << greatest;
        const Function proPhoto = [](double v) { return std::pow(v, 1.8); };
        QTest::addRow("ProPhoto up to %d", greatest) << TransferCurve::Power(1.8) << proPhoto << greatest;
        QTest::addRow("points up to %d", greatest)
            << *TransferCurve::FromSamples({Sampled(BentLight, 1024)}) << Function(BentLight) << greatest;
    }
    QTest::newRow("float") << TransferCurve::Linear() << Function([](double v) { return v; }) << 0;
}

/// Corrects a gray picture whose light falls by up to 2 EV toward the corners.
void tst_FittedWarp::flatFields()
{
    QFETCH(TransferCurve, curve);
    QFETCH(Function, light);
    QFETCH(int, greatest);
    constexpr int kWidth = 120, kHeight = 80;
    const double radius2 = std::pow((kWidth - 1) / 2.0, 2) + std::pow((kHeight - 1) / 2.0, 2);
    std::vector<double> gain;
    for (int i = 0; i <= 320; ++i) // far beyond the corner, so that gains are interpolated
        gain.push_back(1.0 + 3.0 * i / 64.0);
    Correction correction;
    correction.width = kWidth;
    correction.height = kHeight;
    correction.light = GainMap{(kWidth - 1) / 2.0, (kHeight - 1) / 2.0, RadialCurve(radius2 / 64.0, gain)};
    const double gray = greatest ? std::round(0.7 * greatest) / greatest : 3.0;
    const Pixels source = Made(kWidth, kHeight, [&](int x, int y) {
        const double r2 = std::pow(x - (kWidth - 1) / 2.0, 2) + std::pow(y - (kHeight - 1) / 2.0, 2);
        const double wanted = light(gray) / (1.0 + 3.0 * r2 / radius2);
        double low = 0.0, high = 4.0;
        for (int i = 0; i < 60; ++i)
            (light((low + high) / 2.0) < wanted ? low : high) = (low + high) / 2.0;
        return greatest ? std::round(low * greatest) / greatest : low;
    });
    for (Sampling sampling : {Sampling::Bilinear, Sampling::Sharp}) {
        const FittedWarp warp(correction, sampling, curve, {/*isFloat=*/greatest == 0, false});
        const Pixels got = Rendered(warp, source, FloatWarp::BestInstructions());
        double most = 0.0;
        for (int i = 0; i < got.values.size(); ++i)
            if (i % 4 != 3)
                most = std::max(most, std::abs(double(got.values[i]) - gray));
        if (greatest == 255)
            QVERIFY2(std::round(most * 255) <= 1.0, qPrintable(QString::number(most * 255)));
        else
            QVERIFY2(most / gray <= 1e-3, qPrintable(QString::number(most)));
    }
}

/// For floats beyond a table, its outermost segments are extended.
void tst_FittedWarp::beyondTheTables()
{
    Correction bright;
    bright.width = 3;
    bright.height = 1;
    bright.light = GainMap{0.0, 0.0, RadialCurve(1.0, std::vector<double>(65, 2.0))};
    const Pixels source = Made(3, 1, [](int x, int) { return std::pow(10.0, x - 1); });
    const TransferCurve curve = TransferCurve::Power(1.8);
    const FittedWarp warp(bright, Sampling::Bilinear, curve, {/*isFloat=*/true, false});
    const Pixels got = Rendered(warp, source, kBaseline);
    for (int x = 0; x < 3; ++x) {
        const double wanted = curve.StoredTable(0).At(2.0F * curve.LightTable(0).At(source.At(x, 0, 0)));
        QVERIFY2(std::abs(double(got.At(x, 0, 0)) - wanted) <= 1e-5 * wanted,
                 qPrintable(QStringLiteral("%1 is %2, not %3").arg(x).arg(double(got.At(x, 0, 0))).arg(wanted)));
    }
}

void tst_FittedWarp::badCurves()
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const std::vector<std::vector<double>> &curves : std::vector<std::vector<std::vector<double>>>{
             {}, {{0.5}}, {{0, 0}}, {{1, 0}}, {{0, 1, nan}}, {{0, HUGE_VAL}}, {{0, 1}, {0, 1}}}) {
        const Case named(curves);
        QVERIFY(!TransferCurve::FromSamples(curves));
    }
    // At least 64 points count as a known formula if they follow it to within one 16-bit code; powers from 0.25 to 4.
    const struct {
        int count;
        double gamma, codes; // codes: error of one point
        bool isKnown;
    } known[] = {{64, 2, 0.9, true},   {63, 2, 0, false}, {64, 2, 1.1, false}, {65, 0.25, 0, true},
                 {65, 0.24, 0, false}, {65, 4, 0, true},  {65, 4.1, 0, false}};
    for (const auto &row : known) {
        const Case named(row.count, row.gamma, row.codes);
        std::vector<double> points;
        for (int i = 0; i < row.count; ++i)
            points.push_back(std::pow(i / (row.count - 1.0), row.gamma) + 0.1); // black is subtracted
        points[20] += row.codes / 65535.0;
        QCOMPARE(TransferCurve::FromSamples({points})->ByFormula() != nullptr, row.isKnown);
    }
    const std::vector<double> square = Sampled([](double v) { return v * v; }, 64),
                              cube = Sampled([](double v) { return v * v * v; }, 64);
    QVERIFY(TransferCurve::FromSamples({square, square, square})->ByFormula());
    QVERIFY(!TransferCurve::FromSamples({square, square, cube})->ByFormula());
    // Flat at both ends: black and white are unchanged, and nothing in between gets darker.
    const TransferCurve level = *TransferCurve::FromSamples({{0.1, 0.1, 0.6, 0.4, 0.6, 0.6}});
    Correction correction;
    correction.width = 101;
    correction.height = 1;
    correction.light = GainMap{0.0, 0.0, RadialCurve(1.0)};
    const Pixels source = Made(101, 1, [](int x, int) { return x / 100.0; });
    const FittedWarp warp(correction, Sampling::Bilinear, level, {});
    const Pixels got = Rendered(warp, source, kBaseline);
    for (int x = 0; x < 101; ++x) {
        const Case named("column", x);
        QVERIFY(got.At(x, 0, 0) >= source.At(x, 0, 0) && got.At(x, 0, 0) < source.At(x, 0, 0) + 0.21F);
    }
    QCOMPARE(got.At(0, 0, 0), 0.0F);
    // Steep between two nodes: the cubic would leave the range from 1 to 16.
    correction.light->gain = RadialCurve(16.0, {1.0, 1.0, 16.0, 16.0, 1.0, 1.0});
    for (int x = 0; x <= 10; ++x) {
        const double gain = CorrectionTwin(correction).At(x, 0.0).gain;
        QVERIFY2(gain >= 1.0 && gain <= 16.0, qPrintable(QStringLiteral("%1 at %2").arg(gain).arg(x)));
    }
}

namespace {

/// Renders gray pictures, as floats or at 16 bits, with the fast warp.
std::vector<double> RenderSharp(const std::vector<double> &gray, const Correction &lens, bool isFloat)
{
    const Pixels source = Made(lens.width, lens.height, [&](int x, int y) { return gray[size_t(y * lens.width + x)]; });
    const FittedWarp warp(lens, Sampling::Sharp, TransferCurve::Linear(), {isFloat, false});
    const Pixels got = Rendered(warp, source, FloatWarp::BestInstructions());
    std::vector<double> result;
    for (int i = 0; i < got.values.size(); i += 4)
        result.push_back(double(got.values[i]));
    return result;
}

} // namespace

/// On a ramp the result is the sampling position itself, except for the rounding of phases and values.
void tst_FittedWarp::rampsStayRamps()
{
    const Correction lens = QualityLens();
    const CorrectionTwin twin(lens);
    for (bool isFloat : {false, true}) {
        const Case named("float", isFloat);
        const std::vector<double> got =
            RenderSharp(QualityPicture([](int x, int y) { return (x + 0.5 * y) / 400.0; }), lens, isFloat);
        for (int i = 0; i < kQualitySide * kQualitySide; ++i) {
            const SourcePlaces::Point place = twin.At(i % kQualitySide, i / kQualitySide).green;
            if (place.x > 3 && place.y > 3 && place.x < kQualitySide - 4 && place.y < kQualitySide - 4)
                QVERIFY(std::abs(got[size_t(i)] * 400.0 - (place.x + 0.5 * place.y)) < 0.01);
        }
    }
}

void tst_FittedWarp::sharpness_data()
{
    QTest::addColumn<double>("frequency"); // cycles per pixel
    QTest::addColumn<double>("leastContrast");
    QTest::addColumn<double>("mostContrast");
    QTest::addColumn<double>("mostFalseDetail");
    QTest::newRow("0.1") << 0.1 << 0.97 << 1.03 << 0.03;
    QTest::newRow("0.2") << 0.2 << 0.96 << 1.03 << 0.03;
    QTest::newRow("0.3") << 0.3 << 0.97 << 1.03 << 0.03;
    QTest::newRow("0.4") << 0.4 << 0.85 << 1.06 << 0.11;
}

void tst_FittedWarp::sharpness()
{
    QFETCH(double, frequency);
    QFETCH(double, leastContrast);
    QFETCH(double, mostContrast);
    QFETCH(double, mostFalseDetail);
    for (bool isFloat : {false, true})
        for (int degrees : {0, 17, 45, 90}) {
            const SamplingQuality quality =
                QualityOf([&](const std::vector<double> &gray,
                              const Correction &lens) { return RenderSharp(gray, lens, isFloat); },
                          frequency, degrees * kPi / 180.0);
            QVERIFY2(quality.contrast >= leastContrast && quality.contrast <= mostContrast
                         && quality.falseDetail <= mostFalseDetail,
                     qPrintable(QString::asprintf("%d degrees: contrast %.3f, false detail %.3f", degrees,
                                                  quality.contrast, quality.falseDetail)));
        }
}

void tst_FittedWarp::overshoot()
{
    for (double soft : {-1.0, 0.0, 0.3, 0.5, 0.8})
        for (int degrees : {0, 3, 8, 15, 22, 30, 38, 45, 90, 140}) {
            const double most = OvershootOf(
                [](const std::vector<double> &gray, const Correction &lens) { return RenderSharp(gray, lens, false); },
                degrees * kPi / 180.0, soft);
            QVERIFY2(most <= 0.03, qPrintable(QString::asprintf("%d degrees, soft %g: %.3f", degrees, soft, most)));
        }
}

QTEST_GUILESS_MAIN(tst_FittedWarp)
#include "FittedWarp_test.moc"
