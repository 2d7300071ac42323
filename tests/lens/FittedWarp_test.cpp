// Fitted corrections: tables against formulas, the twin against the models, the fast warp against the twin.
#include "FittedWarpTwin.h"

#include "WarpStatement.h"

#include <QtTest>

#include <cmath>

namespace {

using Instructions = FloatWarp::Instructions;
using Sampling = FittedWarp::Sampling;
using Point = SourcePlaces::Point;

/// A lens model as text books have it, in units of its focal length.
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

/// A wide-angle lens for a picture of that size. @p bend is 1 for an ordinary one.
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

/// The same in every channel, and alpha 1.
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
    if (!warp.Render(from.image, 0, to.image, 0, instructions) || !to.GuardsAreWhole())
        return {};
    return to.Read();
}

} // namespace

class tst_FittedWarp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void curveIsExactForCubics();
    void twinFollowsTheModels();
    void warpFollowsTheTwin_data();
    void warpFollowsTheTwin();
    void foldsAreEmpty();
    void bandsAreTheWhole();
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
    for (double beyond : {10.0, 1e300, double(INFINITY)})
        QCOMPARE(curve.AtSquared(beyond), cubic(10.0));
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
    QTest::addColumn<bool>("alpha");
    for (QSize size : {QSize(1, 1), {3, 1}, {1, 70}, {67, 41}, {400, 267}})
        for (int i = 0; i < 4; ++i)
            QTest::addRow("%dx%d split=%d alpha=%d", size.width(), size.height(), i & 1, i & 2)
                << size << 1.0 << 1.0 << bool(i & 1) << bool(i & 2);
    QTest::addRow("cells of 1 pixel") << QSize(90, 60) << -9.0 << 0.7 << true << false;
    QTest::addRow("everything outside") << QSize(90, 60) << 0.0 << 1e-3 << true << false;
}

/// Between random pixels, so that a place that is off by e pixels shows by e at most, times the gain.
void tst_FittedWarp::warpFollowsTheTwin()
{
    QFETCH(QSize, size);
    QFETCH(double, bend);
    QFETCH(double, zoom);
    QFETCH(bool, split);
    QFETCH(bool, alpha);
    Lens lens(size.width(), size.height(), bend, split);
    lens.fitted.zoom = zoom;
    const FittedWarp::Source form = {/*isFloat=*/true, alpha};
    Pixels source = RandomPixels(size.width(), size.height(), 4, 32, 1);
    for (int i = 3; alpha && i < source.values.size(); i += 4)
        source.values[i] = 0.25F + 0.75F * float(i % 29) / 29.0F;
    const FittedWarp warp(lens.fitted, Sampling::Bilinear, TransferCurve::Linear(), form);
    const FittedWarpTwin twin(lens.fitted, Sampling::Bilinear, TransferCurve::Linear(), form);
    const CorrectionTwin places(lens.fitted);
    const Pixels got = Rendered(warp, source, Instructions::Sse2);
    QVERIFY(!got.values.isEmpty());
    const GuardedImage from(source, 0);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const FittedWarpTwin::Pixel want = twin.At(from.image, x, y);
            const double tolerance = 0.01 * 2.0 * places.At(x, y).gain * (alpha ? 8.0 : 1.0);
            for (int c = 0; c < 4; ++c)
                QVERIFY2(std::abs(got.At(x, y, c) - want[c]) < tolerance,
                         qPrintable(QStringLiteral("(%1, %2) channel %3: %4, not %5")
                                        .arg(x)
                                        .arg(y)
                                        .arg(c)
                                        .arg(double(got.At(x, y, c)))
                                        .arg(want[c])));
        }
    }
    for (Instructions instructions : {Instructions::Avx2, Instructions::Avx512})
        if (instructions <= FloatWarp::BestInstructions())
            QCOMPARE(FirstDifference(Rendered(warp, source, instructions), got), QString());
}

/// Beyond the fold nothing may come, just before it something must.
void tst_FittedWarp::foldsAreEmpty()
{
    Correction fisheye;
    fisheye.width = 200;
    fisheye.height = 100;
    fisheye.geometry = RadialMap{90, 50, RadialCurve(), 0, 0, 70.3};
    const FittedWarp warp(fisheye, Sampling::Bilinear, TransferCurve::Linear(), {});
    QVERIFY(warp.LeavesEmpty());
    const Pixels got = Rendered(warp, Made(200, 100, [](int, int) { return 0.5; }), FloatWarp::BestInstructions());
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 200; ++x)
            QCOMPARE(got.At(x, y, 3), std::hypot(x - 90, y - 50) > 70.3 ? 0.0F : 1.0F);
    fisheye.geometry->endRadius = 125.0; // the farthest corner is 120 away
    QVERIFY(!FittedWarp(fisheye, Sampling::Bilinear, TransferCurve::Linear(), {}).LeavesEmpty());
}

void tst_FittedWarp::bandsAreTheWhole()
{
    constexpr int kWidth = 150, kHeight = 120;
    const Pixels source = RandomPixels(kWidth, kHeight, 4, 32, 5);
    const GuardedImage from(source, 0);
    for (double bend : {-3.0, 1.0, 4.0}) {
        const FittedWarp warp(Lens(kWidth, kHeight, bend).fitted, Sampling::Bilinear, TransferCurve::Linear(), {});
        const Pixels whole = Rendered(warp, source, FloatWarp::BestInstructions());
        GuardedImage banded(source, 0);
        for (int y = 0; y < kHeight; y += 7) {
            const int rows = qMin(7, kHeight - y);
            KImage band(kWidth, rows, GFL_RGBA, 32, /*clear=*/false, banded.image.getData(0, y),
                        int(banded.image.bytesPerLine()));
            const auto render = [&](FittedWarp::RowRange range) {
                const KImage window(kWidth, range.end - range.first, GFL_RGBA, 32, /*clear=*/false,
                                    from.image.getData(0, range.first), int(from.image.bytesPerLine()));
                return warp.Render(window, range.first, band, y);
            };
            QVERIFY(!render({kHeight - 1, kHeight}) || y > kHeight - 10);
            const FittedWarp::RowRange range = warp.RowsFor(y, rows);
            QVERIFY(render(range));
            QVERIFY(range.end - range.first < 70);
        }
        QCOMPARE(FirstDifference(banded.Read(), whole), QString());
    }
}

QTEST_GUILESS_MAIN(tst_FittedWarp)
#include "FittedWarp_test.moc"
