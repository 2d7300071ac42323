#include "KImage.h"

#include "KImage_p.h"
#include "KOmp.h"
#include "PixelRuns_p.h"
#include "PixelSampler_p.h"
#include "ippi.h"

#include <algorithm>
#include <cmath>

namespace {

/// Multiplies a run of alpha in place by a run of mask samples.
void MultiplyRun(int bits, const void *mask, void *alpha, int pixels)
{
    if (bits == 8)
        ippiMul_8u_C1RSfs(static_cast<const Ipp8u *>(mask), 0, static_cast<Ipp8u *>(alpha), 0,
                          static_cast<Ipp8u *>(alpha), 0, {pixels, 1}, 8);
    else if (bits == 16)
        ippiMul_16u_C1RSfs(static_cast<const Ipp16u *>(mask), 0, static_cast<Ipp16u *>(alpha), 0,
                           static_cast<Ipp16u *>(alpha), 0, {pixels, 1}, 16);
    else
        ippiMul_32f_C1R(static_cast<const Ipp32f *>(mask), 0, static_cast<Ipp32f *>(alpha), 0,
                        static_cast<Ipp32f *>(alpha), 0, {pixels, 1});
}

template <typename T> void BinarizeRun(T *alpha, int pixels)
{
    constexpr auto kFull = static_cast<T>(kFullValue<T>);
    constexpr auto kHalf = static_cast<T>(std::is_floating_point_v<T> ? 0.5f : kFullValue<T> / 2 + 1);
    if constexpr (std::is_floating_point_v<T>) // NaN is neither below nor above a threshold
        std::replace_if(
            alpha, alpha + pixels, [](T value) { return std::isnan(value); }, T(0));
    primitives::ThresholdValue<T>(alpha, 0, alpha, 0, {pixels, 1}, kHalf, T(0), primitives::Comparison::Less);
    primitives::ThresholdValue<T>(alpha, 0, alpha, 0, {pixels, 1}, T(0), kFull, primitives::Comparison::Greater);
}

/// Leaves pixels whose alpha is 0 or NaN unchanged.
template <typename T> void ScaleRunByAlpha(void *run, int pixels)
{
    T *rgba = static_cast<T *>(run);
    for (T *end = rgba + 4 * pixels; rgba != end; rgba += 4) {
        const auto alpha = static_cast<float>(rgba[3]);
        if (!(alpha > 0 || alpha < 0))
            continue;
        const float factor = kFullValue<T> / alpha;
        for (int c = 0; c < 3; ++c)
            rgba[c] = primitives::Truncate<T>(static_cast<float>(rgba[c]) * factor);
        rgba[3] = static_cast<T>(kFullValue<T>);
    }
}

void CheckHasAlpha(const KImage &image)
{
    if (IsEmpty(image) || image.type() != GFL_RGBA || !IsWorkingDepth(image.bitsPerComponent()))
        KThrow(kInvalidBitmap);
}

} // namespace

void KImage::CombineAlpha(const KImage &mask)
{
    CheckHasAlpha(*this);
    if (IsEmpty(mask) || mask.type() != GFL_GREY || !IsWorkingDepth(mask.bitsPerComponent())
        || mask.bitsPerComponent() == bitsPerComponent())
        KThrow(kInvalidBitmap);
    if (mask.width() != width() || mask.height() != height())
        KThrow(kInvalidParameter);

    const int bits = bitsPerComponent();
    KImage alpha, converted;
    ExtractAlpha(alpha, bits);
    // The rows of a mask of lower depth are too short to be reinterpreted.
    if (mask.bitsPerComponent() < bits)
        mask.Convert(converted, GFL_GREY, bits);
    const KImage asThisDepth(width(), height(), GFL_GREY, bits, /*clear=*/false,
                             (IsEmpty(converted) ? mask : converted).getData(0, 0),
                             static_cast<int>((IsEmpty(converted) ? mask : converted).bytesPerLine()));
    ForRuns(asThisDepth, 0, 0, width(), height(), alpha, 0, 0,
            [=](const void *src, void *dst, int pixels) { MultiplyRun(bits, src, dst, pixels); });
    SetAlpha(alpha);
}

void KImage::BinarizeAlpha()
{
    CheckHasAlpha(*this);
    const int bits = bitsPerComponent();
    KImage alpha;
    ExtractAlpha(alpha, bits);
    ForRuns(alpha, 0, 0, width(), height(), alpha, 0, 0, [=](const void *, void *run, int pixels) {
        if (bits == 8)
            BinarizeRun(static_cast<Ipp8u *>(run), pixels);
        else if (bits == 16)
            BinarizeRun(static_cast<Ipp16u *>(run), pixels);
        else
            BinarizeRun(static_cast<Ipp32f *>(run), pixels);
    });
    SetAlpha(alpha);
}

void KImage::ScaleByAlpha()
{
    CheckHasAlpha(*this);
    const auto scale = bitsPerComponent() == 8 ? ScaleRunByAlpha<Ipp8u>
        : bitsPerComponent() == 16             ? ScaleRunByAlpha<Ipp16u>
                                               : ScaleRunByAlpha<Ipp32f>;
#pragma omp parallel for schedule(static) num_threads(komp_num_threads)
    for (int y = 0; y < height(); ++y)
        ForRuns(*this, 0, y, width(), 1, *this, 0, y, [=](const void *, void *run, int pixels) { scale(run, pixels); });
}
