// The warp of 24 megapixels of float RGBA on one thread: all paths, frames and instruction sets. The profile has
// the distortion and vignetting of a wide-angle zoom.
#include "CopyRatio.h"
#include "ImagePair.h"

#include "FittedWarp.h"
#include "FloatWarp.h"
#include "InterpolatorKim.h"
#include "KImage.h"
#include "newLCP.h"

#include <QDomElement>

namespace {

LensParam Model(double centerX, double centerY, float focalPixels, const QVector<float> &coefficients)
{
    LensParam model;
    model.centerX = centerX;
    model.centerY = centerY;
    model.focalPixels = focalPixels;
    model.focalLengthX = model.focalLengthY = double(focalPixels) / kWidth;
    model.coefficients = coefficients;
    model.Found();
    return model;
}

newLCP Profile(int modelKind)
{
    bool ok = false;
    newLCP lcp((QDomElement()), ok);
    lcp.scale = 1.0F;
    lcp.modelKind = modelKind;
    const bool fisheye = modelKind != 0;
    const QVector<float> bend = fisheye ? QVector<float>{-0.02F, 0.004F} : QVector<float>{-0.11F, 0.08F, -0.02F};
    lcp.distortionModel = lcp.greenModel = Model(3011, 1988, 4100, bend);
    lcp.redGreenModel = lcp.blueGreenModel = Model(3011, 1988, 4100, {0.0006F, -0.0004F, 0.0001F});
    lcp.redGreenModel.scaleFactor = 1.0003F;
    lcp.blueGreenModel.scaleFactor = 0.9996F;
    lcp.vignetteModel = Model(3011, 1988, 4100, {-0.6F, 0.25F, -0.1F});
    return lcp;
}

/// Returns a source and a target of the same size, as float RGBA.
ImagePair FloatImages(FloatWarp::Frame frame)
{
    constexpr PixelForm kFloats = {GFL_RGBA, 32};
    const bool turned = frame == FloatWarp::Frame::Turned;
    return ImagePair(kFloats, kFloats, turned ? kHeight : kWidth, turned ? kWidth : kHeight, turned);
}

constexpr Corrections kVignette = {false, false, true}, kDistortion = {true, false, true},
                      kColors = {false, true, true}, kAll = {true, true, true};
constexpr int kPerspective = 0, kFisheye = 1;

void BM_Warp(benchmark::State &state, int modelKind, Corrections corrections, FloatWarp::Frame frame,
             FloatWarp::Instructions instructions)
{
    if (instructions > FloatWarp::BestInstructions())
        return state.SkipWithError("not on this processor");
    const newLCP lcp = Profile(modelKind);
    ImagePair images = FloatImages(frame);
    const FloatWarp warp(lcp, corrections, frame, images.source);
    MeasureAgainstCopy(state, kPixels, images.block,
                       [&] { warp.Render(images.target, 0, FloatWarp::Unwritten::Stays, instructions); });
}

#define WARP(name, ...) BENCHMARK_CAPTURE(BM_Warp, name, __VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)
#define WARP_BEST(name, kind, corrections, frame)                                                                      \
    WARP(name, kind, corrections, FloatWarp::Frame::frame, FloatWarp::BestInstructions())
WARP_BEST(Vignette, kPerspective, kVignette, Landscape);
WARP_BEST(DistortionVignette, kPerspective, kDistortion, Landscape);
WARP_BEST(RedBlueVignette, kPerspective, kColors, Landscape);
WARP_BEST(All, kPerspective, kAll, Landscape);
WARP_BEST(FisheyeVignette, kFisheye, kDistortion, Landscape);
WARP_BEST(FisheyeAll, kFisheye, kAll, Landscape);
WARP_BEST(PortraitDistortionVignette, kPerspective, kDistortion, Turned);
WARP_BEST(PortraitAll, kPerspective, kAll, Turned);
WARP(All_Sse2, kPerspective, kAll, FloatWarp::Frame::Landscape, FloatWarp::Instructions::Baseline);
WARP(All_Avx2, kPerspective, kAll, FloatWarp::Frame::Landscape, FloatWarp::Instructions::Avx2);
WARP(All_Avx512, kPerspective, kAll, FloatWarp::Frame::Landscape, FloatWarp::Instructions::Avx512);
#undef WARP_BEST
#undef WARP

// --- Fitted ---

RadialMap Map(double centerX, double centerY, double scale, double k1, double k2, double k3)
{
    constexpr double kFocalPixels = 4100.0;
    constexpr int kNodes = 513;
    RadialMap map;
    map.centerX = centerX;
    map.centerY = centerY;
    const double step = 3700.0 * 3700.0 / (kNodes - 1);
    std::vector<double> nodes;
    for (int i = 0; i < kNodes; ++i) {
        const double u = step * i / (kFocalPixels * kFocalPixels);
        nodes.push_back(scale * (1.0 + u * (k1 + u * (k2 + u * k3))));
    }
    map.factor = RadialCurve(step, nodes);
    return map;
}

/// Returns the fitted correction for the lens of Profile().
Correction FittedLens(Corrections switches)
{
    Correction correction;
    correction.width = kWidth;
    correction.height = kHeight;
    if (switches.distortion)
        correction.geometry = Map(3011, 1988, 1.0, -0.11, 0.08, -0.02);
    if (switches.chromatic) {
        correction.red = Map(3011, 1988, 1.0003, 0.0006, -0.0004, 0.0001);
        correction.blue = Map(3011, 1988, 0.9996, 0.0006, -0.0004, 0.0001);
    }
    if (switches.vignetting)
        correction.light = GainMap{3011, 1988, Map(0, 0, 1.0, 0.6, 0.11, 0.0).factor};
    return correction;
}

void BM_Fitted(benchmark::State &state, FittedWarp::Sampling sampling, Corrections switches, const TransferCurve &light,
               FloatWarp::Instructions instructions)
{
    if (instructions > FloatWarp::BestInstructions())
        return state.SkipWithError("not on this processor");
    ImagePair images = FloatImages(FloatWarp::Frame::Landscape);
    const FittedWarp warp(FittedLens(switches), sampling, light, {});
    bool complete = true;
    MeasureAgainstCopy(state, kPixels, images.block, [&] {
        constexpr int kStrip = 64;
        for (int y = 0; y < kHeight; y += kStrip) {
            KImage strip(kWidth, std::min(kStrip, kHeight - y), GFL_RGBA, 32, /*clear=*/false,
                         images.target.getData(0, y), static_cast<int>(images.target.bytesPerLine()));
            complete &= warp.Render(images.source, 0, strip, y, instructions);
        }
    });
    if (!complete)
        state.SkipWithError("rows missing");
}

#define FITTED_WITH(name, set, sampling, switches, light)                                                              \
    BENCHMARK_CAPTURE(BM_Fitted, name##_##set, FittedWarp::Sampling::sampling, switches, light,                        \
                      FloatWarp::Instructions::set)                                                                    \
        ->UseManualTime()                                                                                              \
        ->Unit(benchmark::kMillisecond)
#define FITTED(name, ...)                                                                                              \
    FITTED_WITH(name, Baseline, __VA_ARGS__);                                                                          \
    FITTED_WITH(name, Avx2, __VA_ARGS__);                                                                              \
    FITTED_WITH(name, Avx512, __VA_ARGS__)
FITTED(Bilinear, Bilinear, kDistortion, TransferCurve::Linear());
FITTED(BilinearAll, Bilinear, kAll, TransferCurve::Linear());
FITTED(Sharp, Sharp, kDistortion, TransferCurve::Linear());
FITTED(SharpAll, Sharp, kAll, TransferCurve::Linear());
FITTED(BilinearAllSrgb, Bilinear, kAll, TransferCurve::Srgb());
FITTED(SharpSrgb, Sharp, kDistortion, TransferCurve::Srgb());
FITTED(SharpAllSrgb, Sharp, kAll, TransferCurve::Srgb());
#undef FITTED
#undef FITTED_WITH

/// Times the plain twin, for comparison.
void BM_WarpPlainly(benchmark::State &state)
{
    newLCP lcp = Profile(kPerspective);
    ImagePair images = FloatImages(FloatWarp::Frame::Landscape);
    InterpolatorKim<float, float> run;
    run.sample = &InterpolatorKim<float, float>::InterpolateN;
    run.sampleChannel = &InterpolatorKim<float, float>::InterpolateNc;
    run.source = &images.source;
    run.destination = &images.target;
    run.lcp = &lcp;
    run.distortion = run.chromatic = run.falloff = true;
    run.inScale = run.outScale = 1.0F;
    run.width = images.source.width();
    run.height = images.source.height();
    run.channels = 4;
    MeasureAgainstCopy(state, kPixels, images.block, [&] { run.DoPlainly(); });
}
BENCHMARK(BM_WarpPlainly)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace

BENCHMARK_MAIN();
