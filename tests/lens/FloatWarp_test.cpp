// The fast warp against its plain twin: every set of instructions, both frames, bands of rows, what stays unwritten.
#include "FloatWarp.h"

#include "FloatRows.h"
#include "InterpolatorKim.h"
#include "WarpStatement.h"

#include <QtTest>

#include <cstring>
#include <limits>

namespace {

using Instructions = FloatWarp::Instructions;
using Frame = FloatWarp::Frame;
using Unwritten = FloatWarp::Unwritten;

/// The plain engine on a landscape picture.
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

/// Counter-clockwise by a right angle: the right-hand column becomes the top row. Three times is the way back.
Pixels Turned(const Pixels &from)
{
    Pixels to{from.height, from.width, from.channels, from.bits, QVector<float>(from.values.size())};
    for (int y = 0; y < to.height; ++y)
        for (int x = 0; x < to.width; ++x)
            for (int c = 0; c < to.channels; ++c)
                to.At(x, y, c) = from.At(from.width - 1 - y, x, c);
    return to;
}

/// What the plain engine makes of @p source, lying as @p frame says, upon @p before.
Pixels Wanted(newLCP &lcp, const Pixels &source, const Pixels &before, Corrections corrections, Frame frame)
{
    const bool turned = frame == Frame::Turned;
    GuardedImage from(turned ? Turned(source) : source, 0), to(turned ? Turned(before) : before, 0);
    RunPlainly(lcp, from.image, to.image, corrections);
    return turned ? Turned(Turned(Turned(to.Read()))) : to.Read();
}

} // namespace

class tst_FloatWarp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isThePlainWarp();
    void bandsAreTheWhole();
    void someRowsOfTheSource();
};

/// Not within a tolerance but to the last bit; so all instructions give the same bits too.
void tst_FloatWarp::isThePlainWarp()
{
    for (int i = 0; i < 6; ++i) {
        const auto instructions = Instructions(i / 2); // baseline, AVX2, AVX-512
        const Frame frame = i % 2 ? Frame::Turned : Frame::Landscape;
        if (instructions > FloatWarp::BestInstructions())
            QSKIP("the rest not on this processor");
        // Around the block's 64 pixels; the last is wide enough for blocks with no border in them.
        const QSize sizes[] = {{1, 1}, {2, 1}, {1, 3}, {7, 5}, {65, 9}, {150, 30}};
        quint32 seed = 1;
        for (QSize size : sizes) {
            for (int round = 0; round < 96; ++round, ++seed) {
                const Corrections corrections{bool(round & 1), bool(round & 2), bool(round & 4)};
                const auto unwritten = Unwritten(round / 8 % 3);
                newLCP lcp = StrongModels(size.width(), size.height(), round / 24 % 2, seed);
                if (round / 48) { // gentle, so that most blocks are inside; and all numbers of coefficients
                    for (LensParam *model :
                         {&lcp.distortionModel, &lcp.greenModel, &lcp.redGreenModel, &lcp.blueGreenModel}) {
                        model->coefficients = QVector<float>{-0.02F, 0.01F, 0.004F, 0.1F}.mid(0, int(seed % 5));
                        model->tangential1 *= 0.01;
                        model->tangential2 *= 0.01;
                        model->scaleFactor = 1.0F;
                    }
                    lcp.scale = 1.0F;
                }
                if (round % 13 == 12) // each position infinite or not a number
                    lcp.redGreenModel.focalPixels = 0.0F;
                if (round % 17 == 16) // the gain not a number
                    lcp.vignetteModel.coefficients[1] = std::numeric_limits<float>::quiet_NaN();
                if (round % 23 == 22)
                    lcp.greenModel.found = lcp.distortionModel.found = false;
                Pixels source = RandomPixels(size.width(), size.height(), 4, 32, seed);
                source.values[int(seed) % source.values.size()] = std::numeric_limits<float>::quiet_NaN();
                Pixels before = RandomPixels(size.width(), size.height(), 4, 32, seed + 1000);
                GuardedImage from(source, int(seed % 5)), to(before, int(seed % 7)); // rows at odd addresses too
                if (unwritten != Unwritten::Stays)
                    before = unwritten == Unwritten::FromSource
                        ? source
                        : Pixels{before.width, before.height, 4, 32, QVector<float>(before.values.size())};
                FloatWarp(lcp, corrections, frame, from.image).Render(to.image, 0, unwritten, instructions);
                const QString difference = FirstDifference(to.Read(), Wanted(lcp, source, before, corrections, frame));
                QVERIFY2(difference.isEmpty(),
                         qPrintable(QStringLiteral("instructions %1, round %2 of width %3: ")
                                        .arg(i / 2)
                                        .arg(round)
                                        .arg(size.width())
                                    + difference));
                QVERIFY(to.GuardsAreWhole());
            }
        }
    }
}

void tst_FloatWarp::bandsAreTheWhole()
{
    newLCP lcp = StrongModels(90, 30, 0, 5);
    const Pixels source = RandomPixels(90, 30, 4, 32, 5), before = RandomPixels(90, 30, 4, 32, 6);
    for (Frame frame : {Frame::Landscape, Frame::Turned}) {
        for (Corrections corrections :
             {Corrections{true, true, true}, {false, true, true}, {false, false, true}, {false, true, false}}) {
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

/// From some rows of the source comes what comes from all, or the answer that they don't suffice.
void tst_FloatWarp::someRowsOfTheSource()
{
    constexpr int kWidth = 150, kHeight = 120, kBandRows = 8;
    const Pixels source = RandomPixels(kWidth, kHeight, 4, 32, 5);
    int missing = 0;
    for (int round = 0; round < 32; ++round) {
        newLCP lcp = StrongModels(kWidth, kHeight, round / 16, quint32(round));
        GuardedImage from(source, 0), whole(source, 0);
        const FloatWarp warp(lcp, {bool(round & 1), bool(round & 2), bool(round & 4)}, Frame(round / 8 % 2),
                             from.image);
        warp.Render(whole.image, 0, Unwritten::FromSource);
        KImage band(kWidth, kBandRows, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
        for (int y = 0; y < kHeight; y += kBandRows) {
            const FloatWarp::RowRange tries[] = {{y, y + kBandRows}, warp.RowsFor(y, kBandRows), {0, kHeight}};
            for (const FloatWarp::RowRange &rows : tries) {
                FloatRows held(from.image);
                held.Hold(rows.first, rows.end);
                if (warp.RenderFrom(held.Image(), held.FirstRow(), band, y, Unwritten::FromSource))
                    QCOMPARE(std::memcmp(band.getData(0, 0), whole.image.getData(0, y), kBandRows * kWidth * 16), 0);
                else
                    QVERIFY(++missing && &rows != &tries[2]);
            }
        }
    }
    QVERIFY(missing > 100);
}

QTEST_APPLESS_MAIN(tst_FloatWarp)
#include "FloatWarp_test.moc"
