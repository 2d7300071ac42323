// Colour models: grey, HSV and PhotoYCC.
#pragma once

#include "types.h"
#include "vector_rows.h"

namespace primitives {

/// Y = 0.299 R + 0.587 G + 0.114 B of the first three of @p C channels.
template <typename T, int C> Status RgbToGray(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    return ForRows(src, srcStep, dst, dstStep, size, [width = size.width](const T *srcRow, T *dstRow) {
        if constexpr (std::is_same_v<T, Ipp8u> && C == 3)
            Rgb8ToGray(srcRow, dstRow, width);
        else
            plain::RgbToGray<T, C>(srcRow, dstRow, width);
    });
}

} // namespace primitives
