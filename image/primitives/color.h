// Color models: gray, HSV and PhotoYCC.
#pragma once

#include "types.h"
#include "vector_rows.h"

namespace primitives {

/// Computes Y = 0.299 R + 0.587 G + 0.114 B of the first three of @p C channels.
template <typename T, int C> Status RgbToGray(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [width = size.width](const T *srcRow, T *dstRow) {
        if constexpr (std::is_same_v<T, Ipp8u> && C == 3)
            Rgb8ToGray(srcRow, dstRow, width);
        else
            plain::RgbToGray<T, C>(srcRow, dstRow, width);
    });
}

/// Writes each pixel's first three channels as changed by convert(r, g, b), which takes references; a fourth channel is
/// not written. The target may be the source.
template <typename T, int C, typename Convert>
Status ConvertColors(const T *src, Step srcStep, T *dst, Step dstStep, Size size, Convert convert)
{
    return ForRows(src, srcStep, dst, dstStep, size, [=](const T *srcRow, T *dstRow) {
        for (std::int64_t x = 0; x < size.width; ++x) {
            T first = srcRow[x * C], second = srcRow[x * C + 1], third = srcRow[x * C + 2];
            convert(first, second, third);
            dstRow[x * C] = first;
            dstRow[x * C + 1] = second;
            dstRow[x * C + 2] = third;
        }
    });
}

/// Converts 8-bit colors to the hexcone model (Smith 1978): hue as 0 to 255 for the full circle from red through green
/// and blue, saturation (max - min) / max and value max as 0 to 255. Grays have hue 0. Alpha stays.
Status RgbToHsv8(const Ipp8u *src, Step srcStep, Ipp8u *dst, Step dstStep, Size size);
Status HsvToRgb8(const Ipp8u *src, Step srcStep, Ipp8u *dst, Step dstStep, Size size);

/// Converts gamma-coded colors to Kodak PhotoYCC, for R, G, B from 0 to 1:
///
///     Y  =  0.299 R + 0.587 G + 0.114 B      coded as  255 / 1.402 * Y
///     C1 = -0.299 R - 0.587 G + 0.886 B      coded as  111.40 * C1 + 156
///     C2 =  0.701 R - 0.587 G - 0.114 B      coded as  135.64 * C2 + 137
///
/// The codes range from 0 to 255; in 16 bits they scale to 65,535, in floats to 1.0. @p C is 3 or 4; alpha stays.
template <typename T, int C> Status RgbToYcc(const T *src, Step srcStep, T *dst, Step dstStep, Size size);
template <typename T, int C> Status YccToRgb(const T *src, Step srcStep, T *dst, Step dstStep, Size size);

} // namespace primitives
