// KImage at 24 megapixels on one thread: copies, conversions, right-angle rotation, reduction.
#include "CopyRatio.h"

#include "KImage.h"
#include "ippi.h"

#include <random>

namespace {

constexpr int kWidth = 6000;
constexpr int kHeight = 4000;
constexpr std::int64_t kPixels = std::int64_t(kWidth) * kHeight;

struct PixelForm {
    unsigned short type;
    int bits;
};

std::int64_t ImageBytes(const KImage &image)
{
    return std::int64_t(image.bytesPerLine()) * image.height();
}

/// Every sample differs, floats from 0 to 1: nothing that a branch could learn.
void FillWithNoise(KImage &image)
{
    std::mt19937 random(1);
    const std::int64_t bytes = ImageBytes(image);
    if (image.bitsPerComponent() == 32) {
        float *samples = reinterpret_cast<float *>(image.getData(0, 0));
        std::generate(samples, samples + bytes / 4, [&] { return static_cast<float>(random()) * 0x1p-32f; });
    } else {
        std::generate(image.getData(0, 0), image.getData(0, 0) + bytes,
                      [&] { return static_cast<unsigned char>(random()); });
    }
}

void BM_Convert(benchmark::State &state, PixelForm from, PixelForm to)
{
    KImage source(kWidth, kHeight, from.type, from.bits, /*clear=*/false, nullptr, 0);
    KImage target(kWidth, kHeight, to.type, to.bits, /*clear=*/true, nullptr, 0);
    FillWithNoise(source);
    MeasureAgainstCopy(state, kPixels, ImageBytes(source) + ImageBytes(target),
                       [&] { source.CropCopyTo(0, 0, kWidth, kHeight, target, 0, 0); });
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
    KImage source(kWidth, kHeight, GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    KImage target(kHeight, kWidth, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    FillWithNoise(source);
    const auto samples = [](const KImage &image) { return reinterpret_cast<float *>(image.getData(0, 0)); };
    MeasureAgainstCopy(state, kPixels, ImageBytes(source) + ImageBytes(target), [&] {
        ippiRotate_32f_C4R(samples(source), {kWidth, kHeight}, source.bytesPerLine(), {0, 0, kWidth, kHeight},
                           samples(target), target.bytesPerLine(), {0, 0, kHeight, kWidth}, 90.0, 0.0, kWidth - 1,
                           primitives::kCubic);
    });
}
BENCHMARK(BM_RotateRightAngle)->UseManualTime()->Unit(benchmark::kMillisecond);

/// To 1,024 pixels wide, as the preview reduces.
void BM_Resize(benchmark::State &state, PixelForm form)
{
    constexpr int kPreviewWidth = 1024, kPreviewHeight = kPreviewWidth * kHeight / kWidth;
    KImage source(kWidth, kHeight, form.type, form.bits, /*clear=*/false, nullptr, 0), target;
    FillWithNoise(source);
    source.Resize(target, kPreviewWidth, kPreviewHeight);
    MeasureAgainstCopy(state, kPixels, ImageBytes(source) + ImageBytes(target),
                       [&] { source.Resize(target, kPreviewWidth, kPreviewHeight); });
}
BENCHMARK_CAPTURE(BM_Resize, 8uRgb, kRgb8)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Resize, 32fRgba, kRgba32)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
