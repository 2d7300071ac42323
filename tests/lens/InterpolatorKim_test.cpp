// The warp: every instantiation against a plain statement of it, its traps, and what it refuses.
#include "InterpolatorKim.h"

#include "WarpStatement.h"
#include "newLCP.h"

#include <QRandomGenerator>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
const int kDepths[] = {8, 16, 32};

Pixels SamePixels(int width, int height, int channels, int bits, float value)
{
    return {width, height, channels, bits, QVector<float>(width * height * channels, value)};
}

/// A model that maps each position to itself to the last bit: no coefficients, the focal length a power of two.
LensParam Identity(float focalPixels = 16.0F)
{
    LensParam model;
    model.focalPixels = focalPixels;
    model.focalLengthX = model.focalLengthY = 1.0;
    model.Found();
    return model;
}

bool Render(newLCP &lcp, GuardedImage &source, GuardedImage &destination, WarpSwitches switches)
{
    return lcp.Render(source.image, destination.image, switches.distortion, switches.chromatic, switches.falloff,
                      switches.mode);
}

/// Renders into @p destination, which holds what stands there before; fails unless that was done.
Pixels Rendered(newLCP &lcp, const Pixels &source, const Pixels &destination, WarpSwitches switches)
{
    GuardedImage from(source, 0), to(destination, 0);
    if (!Render(lcp, from, to, switches))
        qFatal("Render refused");
    return to.Read();
}

/// A run that has its source only, for calling the samplers.
template <typename S> InterpolatorKim<S, float> SamplersOn(GuardedImage &source, float inScale)
{
    InterpolatorKim<S, float> run;
    run.source = &source.image;
    run.inScale = inScale;
    run.width = source.image.width();
    run.height = source.image.height();
    run.channels = source.image.m_bitmap->ComponentsPerPixel;
    return run;
}

} // namespace

class tst_InterpolatorKim : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void matchesTheStatement_data();
    void matchesTheStatement();
    void samplerPositions_data();
    void samplerPositions();
    void integerSamplesTruncateAndWrap();
    void lastColumnAndRowAreBlackInside();
    void rawPathsScaleNothing();
    void pixelsEndAtTheFirstChannelOutside();
    void blackPixelsBecomeTransparent();
    void negativeValuesWrapInIntegers();
    void fisheyeOfThreeCoefficientsIsUniform();
    void nothingRunsWithoutItsModel_data();
    void nothingRunsWithoutItsModel();
    void depths_data();
    void depths();
    void shapes_data();
    void shapes();
    void brokenImagesAreRefused();
};

void tst_InterpolatorKim::matchesTheStatement_data()
{
    QTest::addColumn<int>("sourceBits");
    QTest::addColumn<int>("destinationBits");
    for (int from : kDepths) {
        for (int to : kDepths)
            QTest::addRow("%d to %d bits", from, to) << from << to;
    }
}

void tst_InterpolatorKim::matchesTheStatement()
{
    QFETCH(int, sourceBits);
    QFETCH(int, destinationBits);
    const QSize sizes[] = {{1, 1}, {2, 1}, {1, 3}, {7, 5}, {13, 17}};
    quint32 seed = 1;
    for (QSize size : sizes) {
        for (int round = 0; round < 64; ++round, ++seed) {
            const WarpSwitches switches{bool(round & 1), bool(round & 2), bool(round & 4), round & 8 ? 0 : 1};
            const int channels = round & 16 ? 3 : 4;
            newLCP lcp = StrongModels(size.width(), size.height(), round & 32 ? 1 : 0, seed);
            const Pixels source = RandomPixels(size.width(), size.height(), channels, sourceBits, seed);
            Pixels want = RandomPixels(size.width(), size.height(), channels, destinationBits, seed + 1000);
            GuardedImage from(source, int(seed % 5)), to(want, int(seed % 7)); // rows at odd addresses too
            StateWarp(lcp, source, switches, want);
            QVERIFY(Render(lcp, from, to, switches));
            const QString difference = FirstDifference(to.Read(), want);
            QVERIFY2(difference.isEmpty(),
                     qPrintable(QStringLiteral("round %1 of %2 x %3: ").arg(round).arg(size.width()).arg(size.height())
                                + difference));
            QVERIFY(to.GuardsAreWhole());
        }
    }
}

void tst_InterpolatorKim::samplerPositions_data()
{
    QTest::addColumn<float>("x");
    QTest::addColumn<float>("y");
    QTest::addColumn<float>("nearest");  // -1: outside
    QTest::addColumn<float>("bilinear"); // -1: outside, 9: inside but not written
    // The picture: 1 2 4
    //              3 6 8
    QTest::newRow("on a pixel") << 1.0F << 0.0F << 2.0F << 2.0F;
    QTest::newRow("between four") << 1.25F << 0.5F << 2.0F << (2 * 0.75F + 4 * 0.25F) / 2 + (6 * 0.75F + 8 * 0.25F) / 2;
    QTest::newRow("left of the first column") << -0.5F << 0.0F << -1.0F << 1 * 1.5F - 2 * 0.5F;
    QTest::newRow("above the first row") << 0.0F << -0.75F << -1.0F << 1 * 1.75F - 3 * 0.75F;
    QTest::newRow("just inside -1") << -0.999F << 0.0F << -1.0F << 1 * 1.999F - 2 * 0.999F;
    QTest::newRow("at -1") << -1.0F << 0.0F << -1.0F << -1.0F;
    QTest::newRow("last column") << 2.0F << 0.0F << 4.0F << 9.0F;
    QTest::newRow("behind the last column") << 2.75F << 0.0F << 4.0F << 9.0F;
    QTest::newRow("last row") << 0.0F << 1.5F << 3.0F << 9.0F;
    QTest::newRow("right outside") << 3.0F << 0.0F << -1.0F << -1.0F;
    QTest::newRow("below outside") << 1.0F << 2.0F << -1.0F << -1.0F;
    QTest::newRow("not a number") << kNaN << 0.0F << -1.0F << -1.0F;
    QTest::newRow("not a number down") << 0.0F << kNaN << -1.0F << -1.0F;
    QTest::newRow("infinite") << kInfinity << 0.0F << -1.0F << -1.0F;
    QTest::newRow("infinite the other way") << 0.0F << -kInfinity << -1.0F << -1.0F;
    QTest::newRow("beyond an integer") << 2147483648.0F << 0.0F << -1.0F << -1.0F;
    QTest::newRow("2^32: low bits would be 0") << 4294967296.0F << 0.0F << -1.0F << -1.0F;
    QTest::newRow("far below") << 0.0F << -1e30F << -1.0F << -1.0F;
}

void tst_InterpolatorKim::samplerPositions()
{
    QFETCH(float, x);
    QFETCH(float, y);
    const Pixels picture{3, 2, 1, 32, {1, 2, 4, 3, 6, 8}};
    GuardedImage source(picture, 0);
    auto run = SamplersOn<float>(source, 0.5F);
    const auto check = [&](auto sample, float want) {
        int ix = 77, iy = 77;
        float value = 4.5F;
        const bool inside = sample(value, ix, iy);
        QCOMPARE(inside, want != -1.0F);
        QVERIFY(std::abs(value - (inside ? want * 0.5F : 4.5F)) < 1e-6F);
        if (inside)
            QVERIFY(ix >= 0 && ix < 3 && iy >= 0 && iy < 2);
        else
            QVERIFY(ix < 0 || ix >= 3 || iy < 0 || iy >= 2);
    };
    QFETCH(float, nearest);
    check([&](float &value, int &ix, int &iy) { return run.Interpolate0(&value, x, y, ix, iy); }, nearest);
    check([&](float &value, int &ix, int &iy) { return run.Interpolate0c(value, 0, x, y, ix, iy); }, nearest);
    QFETCH(float, bilinear);
    check([&](float &value, int &ix, int &iy) { return run.InterpolateN(&value, x, y, ix, iy); }, bilinear);
    check([&](float &value, int &ix, int &iy) { return run.InterpolateNc(value, 0, x, y, ix, iy); }, bilinear);
}

void tst_InterpolatorKim::integerSamplesTruncateAndWrap()
{
    GuardedImage bytes(Pixels{2, 2, 1, 8, {10, 41, 10, 41}}, 0);
    auto run = SamplersOn<unsigned char>(bytes, 1.0F);
    int ix, iy;
    float value;
    QVERIFY(run.InterpolateN(&value, 0.5F, 0.0F, ix, iy));
    QCOMPARE(value, 25.0F); // 25.5
    QVERIFY(run.InterpolateN(&value, -0.5F, 0.0F, ix, iy));
    QCOMPARE(value, 251.0F); // 10 * 1.5 - 41 * 0.5 = -5.5, truncated to -5

    GuardedImage words(Pixels{2, 2, 1, 16, {60000, 40000, 60000, 40000}}, 0);
    auto wordRun = SamplersOn<unsigned short>(words, 1.0F);
    QVERIFY(wordRun.InterpolateN(&value, -0.5F, 0.0F, ix, iy));
    QCOMPARE(value, 70000.0F - 65536.0F);
}

void tst_InterpolatorKim::lastColumnAndRowAreBlackInside()
{
    newLCP lcp = NoModels();
    lcp.distortionModel = Identity();
    const Pixels source = SamePixels(5, 4, 4, 16, 65535);
    for (int mode : {0, 1}) {
        const Pixels got = Rendered(lcp, source, SamePixels(5, 4, 4, 8, 200), {true, false, false, mode});
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 5; ++x) {
                const float want = mode == 1 && (x == 4 || y == 3) ? 0.0F : 255.0F; // nearest has no such border
                const int first = (y * 5 + x) * 4;
                QCOMPARE(got.values.mid(first, 4), (QVector<float>{want, want, want, 1})); // opaque is literally 1
            }
        }
    }
}

void tst_InterpolatorKim::rawPathsScaleNothing()
{
    newLCP lcp = NoModels();
    lcp.greenModel = lcp.redGreenModel = lcp.blueGreenModel = lcp.vignetteModel = Identity();
    const Pixels source{2, 2, 3, 32, {0.5F, 0.7F, 0.5F, 0.5F, 1.5F, 0.5F, 0, 0, 0, 0, 0, 0}};
    const Pixels shifted = Rendered(lcp, source, SamePixels(2, 2, 3, 8, 7), {false, true, false, 0});
    QCOMPARE(shifted.At(0, 0, 0), 127.0F);
    QCOMPARE(shifted.At(0, 0, 1), 0.0F);
    QCOMPARE(shifted.At(1, 0, 1), 1.0F);
    QCOMPARE(shifted.At(0, 0, 2), 127.0F);

    const Pixels gained = Rendered(lcp, source, SamePixels(2, 2, 3, 8, 7), {false, false, true, 1});
    QCOMPARE(gained.At(0, 0, 0), 0.0F);
    QCOMPARE(gained.At(1, 0, 1), 1.0F);
    // The other way round everything above 1 is cut.
    const Pixels bright =
        Rendered(lcp, SamePixels(2, 2, 4, 8, 90), SamePixels(2, 2, 4, 32, 7), {false, false, true, 1});
    QCOMPARE(FirstDifference(bright, SamePixels(2, 2, 4, 32, 1)), QString());
}

void tst_InterpolatorKim::pixelsEndAtTheFirstChannelOutside()
{
    const LensParam outside = [] {
        LensParam model = Identity();
        model.focalPixels = 0.0F; // every position is infinite or not a number
        return model;
    }();
    struct Case {
        LensParam red, green, blue;
        QVector<float> want;
    };
    const Case cases[] = {
        {outside, Identity(), Identity(), {0, 7, 7, 7}},
        {Identity(), outside, Identity(), {0, 7, 7, 7}}, // red starts from where green went
        {Identity(), Identity(), outside, {255, 255, 0, 7}},
        {Identity(), Identity(), Identity(), {255, 255, 255, 1}},
    };
    for (const Case &one : cases) {
        newLCP lcp = NoModels();
        lcp.redGreenModel = one.red;
        lcp.greenModel = one.green;
        lcp.blueGreenModel = one.blue;
        const Pixels got =
            Rendered(lcp, SamePixels(2, 2, 4, 8, 255), SamePixels(2, 2, 4, 8, 7), {true, true, false, 0});
        QCOMPARE(got.values.mid(0, 4), one.want);
    }
    // Without a warp of green only red and blue can fall outside.
    newLCP lcp = NoModels();
    lcp.greenModel = lcp.blueGreenModel = Identity();
    lcp.redGreenModel = outside;
    const Pixels source = SamePixels(2, 2, 4, 8, 255);
    QCOMPARE(Rendered(lcp, source, SamePixels(2, 2, 4, 8, 7), {false, true, false, 0}).values.mid(0, 4),
             (QVector<float>{0, 7, 7, 7}));
    std::swap(lcp.redGreenModel, lcp.blueGreenModel);
    QCOMPARE(Rendered(lcp, source, SamePixels(2, 2, 4, 8, 7), {false, true, false, 0}).values.mid(0, 4),
             (QVector<float>{255, 255, 0, 7}));
}

void tst_InterpolatorKim::blackPixelsBecomeTransparent()
{
    newLCP lcp = NoModels();
    lcp.greenModel = lcp.redGreenModel = lcp.blueGreenModel = Identity();
    const Pixels source{2, 1, 4, 16, {0, 0, 0, 65535, 0, 3, 0, 0}};
    for (bool distortion : {false, true}) {
        const Pixels got = Rendered(lcp, source, SamePixels(2, 1, 4, 16, 9), {distortion, true, false, 0});
        QCOMPARE(got.At(0, 0, 3), 0.0F);
        QCOMPARE(got.At(1, 0, 3), 1.0F);
    }
}

void tst_InterpolatorKim::negativeValuesWrapInIntegers()
{
    newLCP lcp = NoModels();
    lcp.distortionModel = Identity();
    const Pixels source = SamePixels(1, 1, 3, 32, -0.02F);
    QCOMPARE(Rendered(lcp, source, SamePixels(1, 1, 3, 8, 7), {true, false, false, 0}).At(0, 0, 0), 251.0F); // -5.1
    QCOMPARE(Rendered(lcp, source, SamePixels(1, 1, 3, 32, 7), {true, false, false, 0}).At(0, 0, 0), -0.02F);
    lcp.vignetteModel = Identity(); // only the path without a warp limits at the bottom
    QCOMPARE(Rendered(lcp, source, SamePixels(1, 1, 3, 8, 7), {false, false, true, 0}).At(0, 0, 0), 0.0F);
}

void tst_InterpolatorKim::fisheyeOfThreeCoefficientsIsUniform()
{
    newLCP lcp = NoModels();
    lcp.modelKind = 1;
    lcp.distortionModel = Identity();
    lcp.distortionModel.centerX = 2;
    lcp.distortionModel.centerY = 1;
    lcp.distortionModel.coefficients = {0.1F, 0.1F, 0.1F};
    Pixels source = SamePixels(6, 4, 3, 32, 0.25F);
    source.At(2, 1, 0) = 0.75F;
    const Pixels got = Rendered(lcp, source, SamePixels(6, 4, 3, 32, 9), {true, false, false, 1});
    for (int i = 0; i < 6 * 4; ++i)
        QCOMPARE(got.values.mid(i * 3, 3), (QVector<float>{0.75F, 0.25F, 0.25F}));
}

void tst_InterpolatorKim::nothingRunsWithoutItsModel_data()
{
    QTest::addColumn<int>("missing");  // 0 distortion, 1 green, 2 vignette
    QTest::addColumn<int>("switches"); // bits: distortion, chromatic, falloff
    QTest::newRow("no vignette to undo") << 2 << 4;
    QTest::newRow("vignette not wanted") << -1 << 0;
    QTest::newRow("distortion, vignette would do") << 0 << 5;
    QTest::newRow("chromatic, distortion and vignette would do") << 1 << 7;
    QTest::newRow("chromatic alone") << 1 << 2;
}

void tst_InterpolatorKim::nothingRunsWithoutItsModel()
{
    QFETCH(int, missing);
    QFETCH(int, switches);
    newLCP lcp = StrongModels(7, 5, 0, 4);
    LensParam *models[] = {&lcp.distortionModel, &lcp.greenModel, &lcp.vignetteModel};
    if (missing >= 0)
        models[missing]->found = false;
    const Pixels before = RandomPixels(7, 5, 4, 32, 6);
    const Pixels after = Rendered(lcp, RandomPixels(7, 5, 4, 32, 5), before,
                                  {bool(switches & 1), bool(switches & 2), bool(switches & 4), 1});
    QCOMPARE(FirstDifference(after, before), QString());
}

void tst_InterpolatorKim::depths_data()
{
    QTest::addColumn<int>("sourceBits");
    QTest::addColumn<int>("storedBits"); // of the source
    QTest::addColumn<float>("stored");   // value in the source
    QTest::addColumn<int>("destinationBits");
    QTest::addColumn<float>("want"); // -1: refused
    QTest::newRow("8 bits") << 8 << 8 << 51.0F << 32 << 51.0F * (1.0F / 255.0F);
    QTest::newRow("9 bits") << 9 << 16 << 511.0F << 32 << 511.0F * (1.0F / 511.0F);
    QTest::newRow("12 bits") << 12 << 16 << 819.0F << 32 << 819.0F * (1.0F / 4095.0F);
    QTest::newRow("15 bits") << 15 << 16 << 32767.0F << 16 << 65535.0F;
    QTest::newRow("16 bits") << 16 << 16 << 65535.0F << 8 << 255.0F;
    QTest::newRow("17 bits are floats") << 17 << 32 << 0.75F << 32 << 0.75F;
    QTest::newRow("31 bits are floats") << 31 << 32 << 0.75F << 32 << 0.75F;
    QTest::newRow("7 bits") << 7 << 8 << 1.0F << 32 << -1.0F;
    QTest::newRow("33 bits") << 33 << 32 << 1.0F << 32 << -1.0F;
    QTest::newRow("into 12 bits") << 16 << 16 << 1.0F << 12 << -1.0F;
    QTest::newRow("into 24 bits") << 16 << 16 << 1.0F << 24 << -1.0F;
}

void tst_InterpolatorKim::depths()
{
    QFETCH(int, sourceBits);
    QFETCH(int, storedBits);
    QFETCH(float, stored);
    QFETCH(int, destinationBits);
    QFETCH(float, want);
    newLCP lcp = NoModels();
    lcp.distortionModel = Identity();
    GuardedImage source(SamePixels(3, 2, 3, storedBits, stored), 0);
    source.image.m_bitmap->BitsPerComponent = quint16(sourceBits);
    const bool served = want >= 0.0F;
    GuardedImage destination(SamePixels(3, 2, 3, served ? destinationBits : 16, 7), 0);
    destination.image.m_bitmap->BitsPerComponent = quint16(destinationBits);
    QCOMPARE(Render(lcp, source, destination, {true, false, false, 0}), served);
    QCOMPARE(destination.Read().At(1, 1, 2), served ? want : 7.0F);
}

void tst_InterpolatorKim::shapes_data()
{
    QTest::addColumn<int>("sourceChannels");
    QTest::addColumn<QSize>("size");     // of the destination; the source has 4 x 3
    QTest::addColumn<int>("channels");   // of the destination
    QTest::addColumn<QString>("served"); // paths: A gain, B one warp, C shift, D three warps
    const auto add = [](const char *name, int sourceChannels, QSize size, int channels, const char *served) {
        QTest::newRow(name) << sourceChannels << size << channels << QString::fromLatin1(served);
    };
    const QSize same(4, 3);
    add("same", 4, same, 4, "ABCD");
    add("RGB into RGBA", 3, same, 4, "ABCD");
    add("RGBA into RGB", 4, same, 3, "");
    add("grey", 1, same, 1, "A");
    add("grey into RGB", 1, same, 3, "A");
    add("RGB into grey", 3, same, 1, "");
    add("smaller", 4, QSize(2, 2), 4, "ABCD");
    add("wider", 4, QSize(5, 3), 4, "BD");
    add("higher", 3, QSize(4, 4), 3, "BD");
    add("much larger", 3, QSize(40, 30), 3, "BD");
}

void tst_InterpolatorKim::shapes()
{
    QFETCH(int, sourceChannels);
    QFETCH(QSize, size);
    QFETCH(int, channels);
    QFETCH(QString, served);
    const char paths[] = {'A', 'B', 'C', 'D'};
    for (int depth : kDepths) {
        for (int path = 0; path < 4; ++path) {
            newLCP lcp = StrongModels(4, 3, 0, quint32(path + depth));
            const WarpSwitches switches{bool(path & 1), bool(path & 2), true, 1};
            const Pixels pixels = RandomPixels(4, 3, sourceChannels, depth, 5);
            Pixels want = RandomPixels(size.width(), size.height(), channels, depth, 6);
            GuardedImage source(pixels, 0), destination(want, 3);
            const bool serves = served.contains(QLatin1Char(paths[path]));
            QCOMPARE(Render(lcp, source, destination, switches), serves);
            if (serves)
                StateWarp(lcp, pixels, switches, want);
            QCOMPARE(FirstDifference(destination.Read(), want), QString());
            QVERIFY(destination.GuardsAreWhole());
        }
    }
}

void tst_InterpolatorKim::brokenImagesAreRefused()
{
    newLCP lcp = NoModels();
    lcp.distortionModel = Identity();
    const auto refuses = [&lcp](KImage &source, KImage &destination) {
        return !lcp.Render(source, destination, /*distortion=*/true, /*chromatic=*/false, /*falloff=*/false, 1);
    };
    KImage good(4, 3, GFL_RGB, 32, /*clear=*/true, nullptr, 0), sink(good), empty;
    QVERIFY(!refuses(good, sink));
    QVERIFY(refuses(empty, sink) && refuses(good, empty));
    // An image of 12 bits that KImage makes itself has one byte a channel, too few for 16-bit words.
    KImage twelve(4, 3, GFL_RGB, 12, /*clear=*/true, nullptr, 0);
    QVERIFY(refuses(twelve, sink));
    QVector<unsigned char> block(4 * 3 * 12);
    KImage shortRows(4, 3, GFL_RGB, 32, /*clear=*/false, block.data(), 4 * 12 - 1);
    QVERIFY(refuses(shortRows, sink) && refuses(good, shortRows));
}

QTEST_APPLESS_MAIN(tst_InterpolatorKim)
#include "InterpolatorKim_test.moc"
