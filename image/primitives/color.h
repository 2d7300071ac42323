// Colour models: grey, HSV and PhotoYCC.
#pragma once

#include "types.h"

namespace primitives {

/// Y = 0.299 R + 0.587 G + 0.114 B (ITU-R BT.601) of the first three of @p C channels.
template <typename T, int C> Status RgbToGray(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [width = size.width](const T *srcRow, T *dstRow) {
        for (std::int64_t x = 0; x < width; ++x) {
            const T r = srcRow[x * C], g = srcRow[x * C + 1], b = srcRow[x * C + 2];
            if constexpr (std::is_floating_point_v<T>) {
                dstRow[x] = 0.299f * r + 0.587f * g + 0.114f * b;
            } else {
                // The weights in 65,536ths; their sum is 65,536, so the rounded result of 16 bits fits 32.
                dstRow[x] = static_cast<T>((19595u * r + 38470u * g + 7471u * b + 32768u) >> 16);
            }
        }
    });
}

} // namespace primitives
