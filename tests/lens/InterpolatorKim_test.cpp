// The warp: every instantiation against a plain reference, sampling at the borders, and rejected inputs.
#include "InterpolatorKim.h"

#include "Case.h"
#include "ReferenceWarp.h"
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

/// Returns a model that maps each position exactly to itself: no coefficients, and a power of two as the focal length.
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

/// Returns an engine with only a source, for calling the samplers.
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
    void matchesTheReference();
    void samplerPositions();
    void depths();
    void shapes();
    void refusesBrokenImages();
};

void tst_InterpolatorKim::matchesTheReference()
{
    const QSize sizes[] = {{1, 1}, {2, 1}, {1, 3}, {7, 5}, {13, 17}};
    for (int i = 0; i < 45; ++i) {
        const Case named("i", i);
        const int sourceBits = kDepths[i % 3], destinationBits = kDepths[i / 3 % 3];
        const QSize size = sizes[i / 9];
        quint32 seed = quint32(i / 9) * 64 + 1;
        for (int round = 0; round < 64; ++round, ++seed) {
            constexpr int kBilinear[] = {1, 2, -1};
            const int mode = round & 8 ? 0 : kBilinear[round / 16 % 3];
            const WarpSwitches switches{bool(round & 1), bool(round & 2), bool(round & 4), mode};
            const int channels = round & 16 ? 3 : 4;
            constexpr int kFisheyes[] = {1, 2, -1};
            newLCP lcp = StrongModels(size.width(), size.height(), round & 32 ? kFisheyes[round % 3] : 0, seed);
            LensParam *const needed[] = {&lcp.distortionModel, &lcp.greenModel, &lcp.vignetteModel};
            if (seed % 5 == 4) // a missing model; if the switches need it, nothing is written
                needed[seed % 3]->found = false;
            const Pixels source = RandomPixels(size.width(), size.height(), channels, sourceBits, seed);
            Pixels want = RandomPixels(size.width(), size.height(), channels, destinationBits, seed + 1000);
            GuardedImage from(source, int(seed % 5)), to(want, int(seed % 7)); // rows at odd addresses too
            RenderReference(lcp, source, switches, want);
            QVERIFY(Render(lcp, from, to, switches));
            const QString difference = FirstDifference(to.Read(), want);
            QVERIFY2(difference.isEmpty(),
                     qPrintable(QStringLiteral("run %1, round %2: ").arg(i).arg(round) + difference));
            QVERIFY(to.GuardsAreIntact());
        }
    }
}

void tst_InterpolatorKim::samplerPositions()
{
    // The picture: 1 2 4
    //              3 6 8
    const struct {
        float x, y;
        float nearest;  // -1: outside
        float bilinear; // -1: outside, 9: inside, but nothing is written
    } rows[] = {{1, 0, 2, 2},
                {1.25F, 0.5F, 2, (2 * 0.75F + 4 * 0.25F) / 2 + (6 * 0.75F + 8 * 0.25F) / 2},
                {-0.5F, 0, -1, 1 * 1.5F - 2 * 0.5F}, // left of the first column, above the first row
                {0, -0.75F, -1, 1 * 1.75F - 3 * 0.75F},
                {-0.999F, 0, -1, 1 * 1.999F - 2 * 0.999F},
                {-1, 0, -1, -1},
                {2, 0, 4, 9}, // in and beyond the last column, beyond the last row
                {2.75F, 0, 4, 9},
                {0, 1.5F, 3, 9},
                {3, 0, -1, -1},
                {1, 2, -1, -1},
                {kNaN, 0, -1, -1},
                {0, kNaN, -1, -1},
                {kInfinity, 0, -1, -1},
                {2147483648.0F, 0, -1, -1},
                {4294967296.0F, 0, -1, -1}, // 2^32: the low 32 bits are 0
                {0, -1e30F, -1, -1}};
    const Pixels picture{3, 2, 1, 32, {1, 2, 4, 3, 6, 8}};
    GuardedImage source(picture, 0);
    auto run = SamplersOn<float>(source, 0.5F);
    const auto check = [&](auto sample, float want) {
        int ix = 77, iy = 77;
        float value = 4.5F;
        const bool inside = sample(value, ix, iy);
        QCOMPARE(inside, want != -1.0F);
        QVERIFY(std::abs(value - (inside ? want * 0.5F : 4.5F)) < 1e-6F);
        QCOMPARE(ix >= 0 && ix < 3 && iy >= 0 && iy < 2, inside);
    };
    for (const auto &row : rows) {
        const float x = row.x, y = row.y;
        check([&](float &value, int &ix, int &iy) { return run.Interpolate0(&value, x, y, ix, iy); }, row.nearest);
        check([&](float &value, int &ix, int &iy) { return run.Interpolate0c(value, 0, x, y, ix, iy); }, row.nearest);
        check([&](float &value, int &ix, int &iy) { return run.InterpolateN(&value, x, y, ix, iy); }, row.bilinear);
        check([&](float &value, int &ix, int &iy) { return run.InterpolateNc(value, 0, x, y, ix, iy); }, row.bilinear);
    }
}

void tst_InterpolatorKim::depths()
{
    const struct {
        int sourceBits, storedBits; // declared and actual
        float stored;
        int destinationBits;
        float want; // -1: refused
    } rows[] = {{8, 8, 51, 32, 51.0F * (1.0F / 255.0F)},
                {9, 16, 511, 32, 511.0F * (1.0F / 511.0F)},
                {12, 16, 819, 32, 819.0F * (1.0F / 4095.0F)},
                {15, 16, 32767, 16, 65535},
                {16, 16, 65535, 8, 255},
                {17, 32, 0.75F, 32, 0.75F}, // floats
                {31, 32, 0.75F, 32, 0.75F},
                {7, 8, 1, 32, -1},
                {33, 32, 1, 32, -1},
                {16, 16, 1, 12, -1},
                {16, 16, 1, 24, -1}};
    newLCP lcp = NoModels();
    lcp.distortionModel = Identity();
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        GuardedImage source(SamePixels(3, 2, 3, row.storedBits, row.stored), 0);
        source.image.m_bitmap->BitsPerComponent = quint16(row.sourceBits);
        const bool served = row.want >= 0.0F;
        GuardedImage destination(SamePixels(3, 2, 3, served ? row.destinationBits : 16, 7), 0);
        destination.image.m_bitmap->BitsPerComponent = quint16(row.destinationBits);
        QCOMPARE(Render(lcp, source, destination, {true, false, false, 0}), served);
        QCOMPARE(destination.Read().At(1, 1, 2), served ? row.want : 7.0F);
    }
}

void tst_InterpolatorKim::shapes()
{
    const struct {
        int sourceChannels;
        QSize size;        // of the destination; the source is 4 x 3
        int channels;      // of the destination
        QByteArray served; // supported paths: A gain, B one warp, C shift, D three warps
    } rows[] = {{4, {4, 3}, 4, "ABCD"}, {3, {4, 3}, 4, "ABCD"}, {4, {4, 3}, 3, ""},     {1, {4, 3}, 1, "A"},
                {1, {4, 3}, 3, "A"},    {3, {4, 3}, 1, ""},     {4, {2, 2}, 4, "ABCD"}, {4, {5, 3}, 4, "BD"},
                {3, {4, 4}, 3, "BD"},   {3, {40, 30}, 3, "BD"}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        for (int depth : kDepths) {
            for (int path = 0; path < 4; ++path) {
                newLCP lcp = StrongModels(4, 3, 0, quint32(path + depth));
                const WarpSwitches switches{bool(path & 1), bool(path & 2), true, 1};
                const Pixels pixels = RandomPixels(4, 3, row.sourceChannels, depth, 5);
                Pixels want = RandomPixels(row.size.width(), row.size.height(), row.channels, depth, 6);
                GuardedImage source(pixels, 0), destination(want, 3);
                const bool serves = row.served.contains("ABCD"[path]);
                QCOMPARE(Render(lcp, source, destination, switches), serves);
                if (serves)
                    RenderReference(lcp, pixels, switches, want);
                QCOMPARE(FirstDifference(destination.Read(), want), QString());
                QVERIFY(destination.GuardsAreIntact());
            }
        }
    }
}

void tst_InterpolatorKim::refusesBrokenImages()
{
    newLCP lcp = NoModels();
    lcp.distortionModel = Identity();
    const auto refuses = [&lcp](KImage &source, KImage &destination) {
        return !lcp.Render(source, destination, /*distortion=*/true, /*chromatic=*/false, /*falloff=*/false, 1);
    };
    KImage good(4, 3, GFL_RGB, 32, /*clear=*/true, nullptr, 0), sink(good), empty;
    QVERIFY(!refuses(good, sink));
    QVERIFY(refuses(empty, sink) && refuses(good, empty));
    // A 12-bit image made by KImage has one byte per channel, too few for 16-bit words.
    KImage twelve(4, 3, GFL_RGB, 12, /*clear=*/true, nullptr, 0);
    QVERIFY(refuses(twelve, sink));
    QVector<unsigned char> block(4 * 3 * 12);
    KImage shortRows(4, 3, GFL_RGB, 32, /*clear=*/false, block.data(), 4 * 12 - 1);
    QVERIFY(refuses(shortRows, sink) && refuses(good, shortRows));
}

QTEST_APPLESS_MAIN(tst_InterpolatorKim)
#include "InterpolatorKim_test.moc"
