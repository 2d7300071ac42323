// KImage at 24 megapixels on one thread: copies, conversions, right-angle rotation, reduction.
#include "CopyRatio.h"
#include "ImagePair.h"

#include "ippi.h"

namespace {

void BM_Convert(benchmark::State &state, PixelForm from, PixelForm to)
{
    ImagePair images(from, to, kWidth, kHeight);
    MeasureAgainstCopy(state, kPixels, images.block,
                       [&] { images.source.CropCopyTo(0, 0, kWidth, kHeight, images.target, 0, 0); });
}

constexpr PixelForm kGrey8 = {GFL_GREY, 8}, kRgb8 = {GFL_RGB, 8}, kRgba8 = {GFL_RGBA, 8}, kRgb16 = {GFL_RGB, 16},
                    kRgba16 = {GFL_RGBA, 16}, kRgb32 = {GFL_RGB, 32}, kRgba32 = {GFL_RGBA, 32};

#define CONVERT(name, from, to)                                                                                        \
    BENCHMARK_CAPTURE(BM_Convert, name, from, to)->UseManualTime()->Unit(benchmark::kMillisecond)
CONVERT(Same_8uRgb, kRgb8, kRgb8);
CONVERT(Same_32fRgba, kRgba32, kRgba32);
CONVERT(From8uRgb_To32fRgba, kRgb8, kRgba32);
CONVERT(From8uRgba_To32fRgba, kRgba8, kRgba32);
CONVERT(From16uRgb_To32fRgba, kRgb16, kRgba32);
CONVERT(From16uRgba_To32fRgba, kRgba16, kRgba32);
CONVERT(From32fRgba_To8uRgba, kRgba32, kRgba8);
CONVERT(From32fRgba_To16uRgba, kRgba32, kRgba16);
CONVERT(From32fRgba_To32fRgb, kRgba32, kRgb32);
CONVERT(From8uRgb_To8uRgba, kRgb8, kRgba8);
CONVERT(From8uRgba_To8uRgb, kRgba8, kRgb8);
CONVERT(From8uRgb_To8uGrey, kRgb8, kGrey8);
#undef CONVERT

void BM_RotateRightAngle(benchmark::State &state)
{
    ImagePair images(kRgba32, kRgba32, kHeight, kWidth);
    const auto samples = [](const KImage &image) { return reinterpret_cast<float *>(image.getData(0, 0)); };
    MeasureAgainstCopy(state, kPixels, images.block, [&] {
        ippiRotate_32f_C4R(samples(images.source), {kWidth, kHeight}, images.source.bytesPerLine(),
                           {0, 0, kWidth, kHeight}, samples(images.target), images.target.bytesPerLine(),
                           {0, 0, kHeight, kWidth}, 90.0, 0.0, kWidth - 1, primitives::kCubic);
    });
}
BENCHMARK(BM_RotateRightAngle)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Reduces to a width of 1,024 pixels, like the preview.
void BM_Resize(benchmark::State &state, PixelForm form)
{
    constexpr int kPreviewWidth = 1024, kPreviewHeight = kPreviewWidth * kHeight / kWidth;
    ImagePair images(form, form, kPreviewWidth, kPreviewHeight);
    MeasureAgainstCopy(state, kPixels, images.block,
                       [&] { images.source.Resize(images.target, kPreviewWidth, kPreviewHeight); });
}
BENCHMARK_CAPTURE(BM_Resize, 8uRgb, kRgb8)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Resize, 32fRgba, kRgba32)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
