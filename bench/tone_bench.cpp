// Tone and analysis at 24 megapixels on one thread: blur, histogram stretch, circle fit.
#include "CopyRatio.h"
#include "FisheyeFrame.h"
#include "ImagePair.h"

#include <cmath>
#include <cstdio>

namespace {

constexpr PixelForm kPlane32 = {GFL_GREY, 32}, kRgb8 = {GFL_RGB, 8}, kRgba8 = {GFL_RGBA, 8};

/// The argument is sigma in tenths of a pixel.
void BM_Gaussian(benchmark::State &state)
{
    ImagePair images(kPlane32, kPlane32, kWidth, kHeight);
    const float sigma = static_cast<float>(state.range(0)) / 10;
    MeasureAgainstCopy(state, kPixels, images.block, [&] { images.source.ConvolveGaussian(sigma, images.target); });
}
BENCHMARK(BM_Gaussian)
    ->Arg(5)
    ->Arg(15)
    ->Arg(34)
    ->Arg(35)
    ->Arg(48)
    ->Arg(50)
    ->Arg(200)
    ->Arg(5000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void BM_HistogramAuto(benchmark::State &state, PixelForm form)
{
    ImagePair images(form, form, kWidth, kHeight);
    for (unsigned char &byte : images.block) // so that there is a range to stretch
        byte = static_cast<unsigned char>(20 + byte / 2);
    MeasureAgainstCopy(state, kPixels, images.block, [&] { images.source.HistogramAuto(images.target); });
}
BENCHMARK_CAPTURE(BM_HistogramAuto, 8uRgb, kRgb8)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_HistogramAuto, 8uRgba, kRgba8)->UseManualTime()->Unit(benchmark::kMillisecond);

/// "off" is the largest error of center or radius as a percentage of the shorter side.
void BM_CircleFit(benchmark::State &state)
{
    const FisheyeFrame frame(kWidth, kHeight, static_cast<unsigned>(state.range(0)));
    double radius = 0, x = 0, y = 0;
    for (auto _ : state)
        frame.image.GetFisheyeRadiusOffset(radius, x, y);
    const double off =
        std::max({std::abs(radius - frame.radius), std::abs(x - frame.offsetX), std::abs(y - frame.offsetY)});
    state.counters["off"] = 100 * off / kHeight;
}
BENCHMARK(BM_CircleFit)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
