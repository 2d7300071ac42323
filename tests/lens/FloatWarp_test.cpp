// The fast warp against its plain twin: every instruction set, both frames, bands of rows, unwritten channels.
#include "Case.h"
#include "FloatWarp.h"

#include "FloatRows.h"
#include "InterpolatorKim.h"
#include "ReferenceWarp.h"

#include <QtTest>

#include <cstring>
#include <limits>

namespace {

using Instructions = FloatWarp::Instructions;
using Frame = FloatWarp::Frame;
using Unwritten = FloatWarp::Unwritten;

/// Widths around the block size of 64 pixels; at the last size, some blocks touch no border.
const QSize kSizes[] = {{1, 1}, {2, 1}, {1, 3}, {7, 5}, {65, 9}, {150, 30}};

/// Runs the plain engine on a landscape picture.
void RunPlainly(newLCP &lcp, KImage &source, KImage &target, Corrections corrections)
{
    using Engine = InterpolatorKim<float, float>;
    Engine run;
    run.sample = &Engine::InterpolateN;
    run.sampleChannel = &Engine::InterpolateNc;
    run.source = &source;
    run.destination = &target;
    run.lcp = &lcp;
    run.distortion = corrections.distortion;
    run.chromatic = corrections.chromatic;
    run.falloff = corrections.vignetting;
    run.inScale = run.outScale = 1.0F;
    run.width = source.width();
    run.height = source.height();
    run.channels = 4;
    QVERIFY(run.DoPlainly());
}

/// Rotates counterclockwise by a right angle: the right-hand column becomes the top row. Three turns undo one.
Pixels Turned(const Pixels &from)
{
    Pixels to{from.height, from.width, from.channels, from.bits, QVector<float>(from.values.size())};
    for (int y = 0; y < to.height; ++y)
        for (int x = 0; x < to.width; ++x)
            for (int c = 0; c < to.channels; ++c)
                to.At(x, y, c) = from.At(from.width - 1 - y, x, c);
    return to;
}

/// Returns the plain engine's result for @p source in @p frame, written over @p before.
Pixels Wanted(newLCP &lcp, const Pixels &source, const Pixels &before, Corrections corrections, Frame frame)
{
    const bool turned = frame == Frame::Turned;
    GuardedImage from(turned ? Turned(source) : source, 0), to(turned ? Turned(before) : before, 0);
    RunPlainly(lcp, from.image, to.image, corrections);
    return turned ? Turned(Turned(Turned(to.Read()))) : to.Read();
}

/// Weakens the models so that most blocks map inside the source; the rounds cover 0 to 4 coefficients.
void MakeGentle(newLCP &lcp, int round, quint32 seed)
{
    for (LensParam *model : {&lcp.distortionModel, &lcp.greenModel, &lcp.redGreenModel, &lcp.blueGreenModel}) {
        model->coefficients = QVector<float>{-0.02F, 0.01F, 0.004F, 0.1F}.mid(0, round / 8 % 5);
        model->tangential1 *= 0.01;
        model->tangential2 *= 0.01;
        model->scaleFactor = 1.0F;
    }
    lcp.scale = 1.0F;
    lcp.modelKind = int(seed / 8 % 2); // in the same round, alternates from size to size
}

void Break(newLCP &lcp, int round, quint32)
{
    if (round < 8) // positions are infinite or NaN
        lcp.redGreenModel.focalPixels = 0.0F;
    else if (round < 16) // the gain is NaN
        lcp.vignetteModel.coefficients[1] = std::numeric_limits<float>::quiet_NaN();
    else
        lcp.greenModel.found = lcp.distortionModel.found = false;
}

} // namespace

class tst_FloatWarp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void strongModels_data() { AddMachines(); }
    void strongModels()
    {
        CompareSizes(48, [](newLCP &, int, quint32) {});
    }
    void gentleModels_data() { AddMachines(); }
    void gentleModels() { CompareSizes(40, MakeGentle); }
    void brokenModels_data() { AddMachines(); }
    void brokenModels() { CompareSizes(24, Break); }
    void exactEdges_data() { AddMachines(); }
    void exactEdges();
    void serves();
    void bandsAreTheWhole();
    void someRowsOfTheSource();

private:
    /// Adds one row per instruction set and frame.
    static void AddMachines();
    /// Compares pictures of all sizes, @p rounds of each, with strong models modified by @p change.
    static void CompareSizes(int rounds, void (*change)(newLCP &lcp, int round, quint32 seed));
    /// Renders random pixels with the fast warp and its plain twin, which must agree to the last bit with every
    /// instruction set. @p round selects corrections and unwritten channels.
    static void Compare(newLCP lcp, QSize size, int round, quint32 seed);
};

void tst_FloatWarp::AddMachines()
{
    QTest::addColumn<int>("instructions");
    QTest::addColumn<int>("frame");
    const char *const names[] = {"baseline", "AVX2", "AVX-512"}, *const frames[] = {"landscape", "turned"};
    for (int i = 0; i < 6; ++i)
        QTest::addRow("%s, %s", names[i / 2], frames[i % 2]) << i / 2 << i % 2;
}

void tst_FloatWarp::Compare(newLCP lcp, QSize size, int round, quint32 seed)
{
    QFETCH(int, instructions);
    QFETCH(int, frame);
    const Corrections corrections{bool(round & 1), bool(round & 2), bool(round & 4)};
    const auto unwritten = Unwritten(round / 8 % 3);
    Pixels source = RandomPixels(size.width(), size.height(), 4, 32, seed);
    source.values[int(seed) % source.values.size()] = std::numeric_limits<float>::quiet_NaN();
    Pixels before = RandomPixels(size.width(), size.height(), 4, 32, seed + 1000);
    GuardedImage from(source, int(seed % 5)), to(before, int(seed % 7)); // rows at odd addresses too
    if (unwritten != Unwritten::Stays)
        before = unwritten == Unwritten::FromSource
            ? source
            : Pixels{before.width, before.height, 4, 32, QVector<float>(before.values.size())};
    FloatWarp(lcp, corrections, Frame(frame), from.image).Render(to.image, 0, unwritten, Instructions(instructions));
    const QString difference = FirstDifference(to.Read(), Wanted(lcp, source, before, corrections, Frame(frame)));
    QVERIFY2(difference.isEmpty(),
             qPrintable(QStringLiteral("%1 x %2, kind %3, round %4, seed %5: ")
                            .arg(size.width())
                            .arg(size.height())
                            .arg(lcp.modelKind)
                            .arg(round)
                            .arg(seed)
                        + difference));
    QVERIFY(to.GuardsAreIntact());
}

#define SKIP_IF_UNSUPPORTED()                                                                                          \
    QFETCH(int, instructions);                                                                                         \
    if (Instructions(instructions) > FloatWarp::BestInstructions())                                                    \
    QSKIP("not supported by this CPU")

void tst_FloatWarp::CompareSizes(int rounds, void (*change)(newLCP &lcp, int round, quint32 seed))
{
    SKIP_IF_UNSUPPORTED();
    quint32 seed = 1;
    for (const QSize size : kSizes) {
        for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round, ++seed) {
            newLCP lcp = StrongModels(size.width(), size.height(), round / 24, seed);
            change(lcp, round, seed);
            Compare(lcp, size, round, seed);
        }
    }
}

/// Compares positions that lie exactly on a border of the picture or of the rows in memory.
void tst_FloatWarp::exactEdges()
{
    SKIP_IF_UNSUPPORTED();
    QFETCH(int, frame);
    constexpr int kSide = 33, kBandRows = 8; // the center is at 16, which is also the focal length below
    newLCP same = StrongModels(kSide, kSide, 0, 1);
    for (LensParam *model : {&same.distortionModel, &same.greenModel, &same.redGreenModel, &same.blueGreenModel}) {
        *model = LensParam();
        model->centerX = model->centerY = model->focalPixels = 16.0F;
        model->Found();
    }
    same.scale = 1.0F;
    newLCP wider = same; // the midpoint of each side moves by 1, to -1 or to the width
    wider.distortionModel.coefficients = wider.greenModel.coefficients = {1.0F / 16.0F};
    newLCP redWider = same, blueWider = same;
    redWider.redGreenModel.coefficients = blueWider.blueGreenModel.coefficients = {1.0F / 16.0F};
    const Pixels source = RandomPixels(kSide, kSide, 4, 32, 5);
    for (newLCP *lcp : {&same, &wider, &redWider, &blueWider}) {
        for (int round = 0; round < 24; ++round)
            Compare(*lcp, {kSide, kSide}, round, 7);
        // Only the rows with a nonzero weight are in memory.
        const int around = lcp == &same ? 0 : 1;
        for (int round = 0; round < 4; ++round) {
            GuardedImage from(source, 0), whole(source, 0);
            const FloatWarp warp(*lcp, {bool(round & 1), bool(round & 2), false}, Frame(frame), from.image);
            warp.Render(whole.image, 0, Unwritten::FromSource);
            for (int y = 0; y < kSide; y += kBandRows) {
                KImage band(kSide, qMin(kBandRows, kSide - y), GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
                FloatRows held(from.image);
                held.Hold(qMax(0, y - around), qMin(kSide, y + kBandRows + 1 + around));
                const bool isEnough = warp.RenderFrom(held.Image(), held.FirstRow(), band, y, Unwritten::FromSource,
                                                      Instructions(instructions));
                const auto bytes = size_t(band.height() * kSide * 16);
                QVERIFY2(isEnough && std::memcmp(band.getData(0, 0), whole.image.getData(0, y), bytes) == 0,
                         qPrintable(QStringLiteral("round %1, rows from %2").arg(round).arg(y)));
            }
        }
    }
}

void tst_FloatWarp::serves()
{
    const Pixels pixels = RandomPixels(5, 3, 4, 32, 1);
    const std::pair<const char *, void (*)(GFL_BITMAP &)> changes[] = {
        {"three channels", [](GFL_BITMAP &bitmap) { bitmap.ComponentsPerPixel = 3; }},
        {"16 bits", [](GFL_BITMAP &bitmap) { bitmap.BitsPerComponent = 16; }},
        {"padded pixels", [](GFL_BITMAP &bitmap) { bitmap.BytesPerPixel = 20; }},
        {"short rows", [](GFL_BITMAP &bitmap) { bitmap.BytesPerLine = 5 * 16 - 1; }},
        {"too wide", [](GFL_BITMAP &bitmap) { bitmap.Width = 1 << 24, bitmap.BytesPerLine = 1 << 28; }},
        {"too high", [](GFL_BITMAP &bitmap) { bitmap.Height = 1 << 24; }}};
    for (const auto &[name, change] : changes) {
        GuardedImage picture(pixels, 0);
        GFL_BITMAP &bitmap = *picture.image.m_bitmap, before = bitmap;
        QVERIFY(FloatWarp::Serves(picture.image));
        change(bitmap);
        QVERIFY2(!FloatWarp::Serves(picture.image), name);
        bitmap = before;
    }
    QVERIFY(!FloatWarp::Serves(KImage()));
}

void tst_FloatWarp::bandsAreTheWhole()
{
    newLCP lcp = StrongModels(90, 30, 0, 5);
    GuardedImage any(RandomPixels(90, 30, 4, 32, 5), 0);
    QVERIFY(FloatWarp(lcp, {}, Frame::Landscape, any.image).RenderFrom(any.image, 0, any.image, 0, Unwritten::Stays));
    const Pixels source = RandomPixels(90, 30, 4, 32, 5), before = RandomPixels(90, 30, 4, 32, 6);
    for (Frame frame : {Frame::Landscape, Frame::Turned}) {
        for (Corrections corrections :
             {Corrections{true, true, true}, {false, true, true}, {false, false, true}, {false, true, false}}) {
            const Case named(int(frame), corrections.distortion, corrections.chromatic, corrections.vignetting);
            GuardedImage from(source, 0), whole(before, 0), banded(before, 0);
            const FloatWarp warp(lcp, corrections, frame, from.image);
            warp.Render(whole.image, 0, Unwritten::FromSource);
            for (int y = 0; y < 30; y += 7) {
                KImage band(90, qMin(7, 30 - y), GFL_RGBA, 32, /*clear=*/false, banded.image.getData(0, y),
                            int(banded.image.bytesPerLine()));
                warp.Render(band, y, Unwritten::FromSource);
            }
            QCOMPARE(FirstDifference(banded.Read(), whole.Read()), QString());
        }
    }
}

/// Checks that rendering from some of the source rows gives the same result as from all, or reports that they are
/// insufficient.
void tst_FloatWarp::someRowsOfTheSource()
{
    constexpr int kWidth = 150, kHeight = 120, kBandRows = 8;
    const Pixels source = RandomPixels(kWidth, kHeight, 4, 32, 5);
    int missing[3] = {}, estimated = 0;
    for (int round = 0; round < 32; ++round) {
        const Case named("round", round);
        newLCP lcp = StrongModels(kWidth, kHeight, round / 16, quint32(round));
        GuardedImage from(source, 0), whole(source, 0);
        const FloatWarp warp(lcp, {bool(round & 1), bool(round & 2), bool(round & 4)}, Frame(round / 8 % 2),
                             from.image);
        warp.Render(whole.image, 0, Unwritten::FromSource);
        KImage band(kWidth, kBandRows, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
        for (int y = 0; y < kHeight; y += kBandRows) {
            const FloatWarp::RowRange tries[] = {{y, y + kBandRows}, warp.RowsFor(y, kBandRows), {0, kHeight}};
            estimated += tries[1].end - tries[1].first;
            for (const FloatWarp::RowRange &rows : tries) {
                FloatRows held(from.image);
                held.Hold(rows.first, rows.end);
                if (warp.RenderFrom(held.Image(), held.FirstRow(), band, y, Unwritten::FromSource))
                    QCOMPARE(std::memcmp(band.getData(0, 0), whole.image.getData(0, y), kBandRows * kWidth * 16), 0);
                else
                    ++missing[&rows - tries];
            }
        }
    }
    // The rows at the same height are rarely enough; the estimated rows always are.
    QVERIFY2(missing[0] > 100 && missing[1] == 0 && missing[2] == 0, qPrintable(QString::number(missing[1])));
    QVERIFY2(estimated < 32 * kHeight * 4, qPrintable(QString::number(estimated)));
    // After a miss, callers try as many more rows on either side, within the picture.
    for (const auto &[height, first, end] : {std::tuple(100, 2, 11), {10, 2, 10}}) {
        const FloatWarp::RowRange range = FloatWarp::RowRange{5, 8}.Widened(height);
        QVERIFY(range.first == first && range.end == end && FloatWarp::RowRange({1, 4}).Widened(height).first == 0);
    }
}

QTEST_APPLESS_MAIN(tst_FloatWarp)
#include "FloatWarp_test.moc"
