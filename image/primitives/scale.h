// Changes the depth of components, by mapping ranges or by plain conversion.
#pragma once

#include "types.h"
#include "vector_rows.h"

namespace primitives {

/// Rounding mode of Scale16To8: "fast" may be off by one.
enum ScaleHint { kScaleFast = 1 };

/// Maps the whole range of one integer type to that of the other: 257 steps at 16 bits are one step at 8 bits.
template <int C> Status Scale8To16(const Ipp8u *src, Step srcStep, Ipp16u *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [n = RowSamples<C>(size)](const Ipp8u *srcRow, Ipp16u *dstRow) {
        for (std::int64_t i = 0; i < n; ++i)
            dstRow[i] = static_cast<Ipp16u>(srcRow[i] * 257);
    });
}

template <int C> Status Scale16To8(const Ipp16u *src, Step srcStep, Ipp8u *dst, Step dstStep, Size size, ScaleHint)
{
    return ForRows(src, srcStep, dst, dstStep, size, [n = RowSamples<C>(size)](const Ipp16u *srcRow, Ipp8u *dstRow) {
        // Gives v / 257 to within 1, exactly for multiples of 257, and stays within 16 bits.
        for (std::int64_t i = 0; i < n; ++i) {
            const Ipp16u v = srcRow[i];
            dstRow[i] = static_cast<Ipp8u>(static_cast<Ipp16u>(v - (v >> 8) + 128) >> 8);
        }
    });
}

/// Maps the range 0 to 255 to the range @p low to @p high.
template <int C>
Status Scale8ToFloat(const Ipp8u *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float low, float high)
{
    const float factor = (high - low) / 255.0f; // 255 * (1 / 255) is exactly 1 in single precision
    return ForRows(src, srcStep, dst, dstStep, size, [=, n = RowSamples<C>(size)](const Ipp8u *srcRow, Ipp32f *dstRow) {
        for (std::int64_t i = 0; i < n; ++i)
            dstRow[i] = static_cast<float>(srcRow[i]) * factor + low;
    });
}

/// Maps the range @p low to @p high to the range 0 to 255; values outside saturate.
template <int C>
Status ScaleFloatTo8(const Ipp32f *src, Step srcStep, Ipp8u *dst, Step dstStep, Size size, float low, float high)
{
    if (!(low < high))
        return Status::BadArgument;
    const float factor = 255.0f / (high - low);
    return ForRows(src, srcStep, dst, dstStep, size, [=, n = RowSamples<C>(size)](const Ipp32f *srcRow, Ipp8u *dstRow) {
        FloatToInteger(srcRow, dstRow, n, low, factor);
    });
}

/// Maps the range 0 to 65,535 to the range 0 to 1.
template <int C> Status Scale16ToFloat(const Ipp16u *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [n = RowSamples<C>(size)](const Ipp16u *srcRow, Ipp32f *dstRow) {
        for (std::int64_t i = 0; i < n; ++i)
            dstRow[i] = static_cast<float>(srcRow[i]) * (1.0f / 65535.0f); // 65,535 gives exactly 1
    });
}

/// Maps the range 0 to 1 to the range 0 to 65,535; values outside saturate.
template <int C> Status ScaleFloatTo16(const Ipp32f *src, Step srcStep, Ipp16u *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [n = RowSamples<C>(size)](const Ipp32f *srcRow, Ipp16u *dstRow) {
        FloatToInteger(srcRow, dstRow, n, 0.0f, 65535.0f);
    });
}

/// Rounding mode of ConvertFloatTo16: only "to nearest" is supported.
enum RoundMode { kRoundNear = 1 };

/// Converts 0 to 65,535 to floats of the same value.
template <int C> Status Convert16ToFloat(const Ipp16u *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [n = RowSamples<C>(size)](const Ipp16u *srcRow, Ipp32f *dstRow) {
        for (std::int64_t i = 0; i < n; ++i)
            dstRow[i] = static_cast<float>(srcRow[i]);
    });
}

/// Converts floats to the nearest integer, saturated at 0 and 65,535.
template <int C>
Status ConvertFloatTo16(const Ipp32f *src, Step srcStep, Ipp16u *dst, Step dstStep, Size size, RoundMode)
{
    return ForRows(src, srcStep, dst, dstStep, size, [n = RowSamples<C>(size)](const Ipp32f *srcRow, Ipp16u *dstRow) {
        FloatToInteger(srcRow, dstRow, n, 0.0f, 1.0f);
    });
}

} // namespace primitives
