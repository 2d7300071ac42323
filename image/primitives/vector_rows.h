// Row loops that compilers don't vectorize well, each as plain code that defines it and as bit-identical vector code.
#pragma once

#include "types.h"

#include <limits>

namespace primitives {

/// Definitions. The functions below use them for the end of a row and for processors without the vector
/// instructions.
namespace plain {

/// Computes (v - low) * factor, rounded and saturated.
template <typename D> void FloatToInteger(const Ipp32f *src, D *dst, std::int64_t count, float low, float factor)
{
    for (std::int64_t i = 0; i < count; ++i)
        dst[i] = Saturate<D>((src[i] - low) * factor);
}

/// Weights of R, G and B (0.299, 0.587, 0.114; ITU-R BT.601) in units of 2^-shift; their sum is 2^shift.
template <typename T> struct GrayWeights;
template <> struct GrayWeights<Ipp8u> { // fits in signed 16 bits
    static constexpr int kShift = 15, kRed = 9798, kGreen = 19235, kBlue = 3735;
};
template <> struct GrayWeights<Ipp16u> { // the rounded sum still fits in unsigned 32 bits
    static constexpr int kShift = 16, kRed = 19595, kGreen = 38470, kBlue = 7471;
};

/// Computes the weighted sum of the first three of @p C channels, rounded.
template <typename T, int C> void RgbToGray(const T *src, T *dst, std::int64_t pixels)
{
    for (std::int64_t x = 0; x < pixels; ++x) {
        const T r = src[x * C], g = src[x * C + 1], b = src[x * C + 2];
        if constexpr (std::is_floating_point_v<T>) {
            dst[x] = 0.299f * r + 0.587f * g + 0.114f * b;
        } else {
            using W = GrayWeights<T>;
            constexpr unsigned kHalf = 1u << (W::kShift - 1);
            dst[x] = static_cast<T>((unsigned(W::kRed) * r + unsigned(W::kGreen) * g + unsigned(W::kBlue) * b + kHalf)
                                    >> W::kShift);
        }
    }
}

/// Copies RGB (@p S = 3), or gray (S = 1) to all three colors, and sets @p alpha.
template <typename T, int S> void CopyOpaque(const T *src, T *dst, std::int64_t pixels, T alpha)
{
    for (std::int64_t x = 0; x < pixels; ++x) {
        dst[x * 4] = src[x * S];
        dst[x * 4 + 1] = src[x * S + (S > 1 ? 1 : 0)];
        dst[x * 4 + 2] = src[x * S + (S > 1 ? 2 : 0)];
        dst[x * 4 + 3] = alpha;
    }
}

/// Converts RGB to RGBA with alpha 1, scaling the full range to [0, 1].
template <typename T> void OpaqueFloats(const T *src, Ipp32f *dst, std::int64_t pixels)
{
    constexpr float kFactor = 1.0f / static_cast<float>(std::numeric_limits<T>::max());
    for (std::int64_t x = 0; x < pixels; ++x) {
        for (int c = 0; c < 3; ++c)
            dst[x * 4 + c] = static_cast<float>(src[x * 3 + c]) * kFactor;
        dst[x * 4 + 3] = 1.0f;
    }
}

} // namespace plain

void FloatToInteger(const Ipp32f *src, Ipp8u *dst, std::int64_t count, float low, float factor);
void FloatToInteger(const Ipp32f *src, Ipp16u *dst, std::int64_t count, float low, float factor);

void Rgb8ToGray(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels);

void OpaqueFloats(const Ipp8u *src, Ipp32f *dst, std::int64_t pixels);
void OpaqueFloats(const Ipp16u *src, Ipp32f *dst, std::int64_t pixels);

void CopyOpaqueFloat3(const Ipp32f *src, Ipp32f *dst, std::int64_t pixels, Ipp32f alpha);

} // namespace primitives
