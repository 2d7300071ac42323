// Iterates over two images in runs: parts of one row that fit in the first-level cache.
#pragma once

#include "KImage_p.h"

#include <cstring>

constexpr int kRunPixels = 512;
constexpr int kMaxBytesPerPixel = 16;

/// Buffer for one run: the result of the first of two steps, or an aligned copy of an image's pixels.
struct alignas(64) RunBlock {
    unsigned char bytes[kRunPixels * kMaxBytesPerPixel];
};

/// Returns whether a pixel's components may be accessed directly: a wrapped block may have any stride.
inline bool IsAligned(const KImage &image, const void *pixel)
{
    const int bytesPerComponent = qMax(1, image.bitsPerComponent() >> 3);
    return reinterpret_cast<quintptr>(pixel) % static_cast<quintptr>(bytesPerComponent) == 0;
}

/// Returns whether IsAligned holds for all rows.
inline bool HasAlignedRows(const KImage &image)
{
    return IsAligned(image, image.getData(0, 0)) && IsAligned(image, image.getData(0, 1));
}

/// Calls run(src, dst, pixels) for each run of the rectangle at (x, y) in @p source and at (targetX, targetY) in @p
/// target. Both rectangles must lie within their images. If rows are not aligned to components, the run gets aligned
/// copies, and the target's copy is written back.
template <typename Run>
void ForRuns(const KImage &source, int x, int y, int width, int height, KImage &target, int targetX, int targetY,
             Run run)
{
    const auto runOnCopies = [&](const unsigned char *from, unsigned char *to, int pixels) {
        RunBlock src, dst;
        const size_t srcBytes = size_t(pixels) * source.m_bitmap->BytesPerPixel;
        const size_t dstBytes = size_t(pixels) * target.m_bitmap->BytesPerPixel;
        std::memcpy(src.bytes, from, srcBytes);
        std::memcpy(dst.bytes, to, dstBytes);
        run(src.bytes, dst.bytes, pixels);
        std::memcpy(to, dst.bytes, dstBytes);
    };
    for (int row = 0; row < height; ++row) {
        for (int column = 0, pixels; column < width; column += pixels) {
            pixels = qMin(kRunPixels, width - column);
            const unsigned char *from = source.getData(x + column, y + row);
            unsigned char *to = target.getData(targetX + column, targetY + row);
            if (IsAligned(source, from) && IsAligned(target, to))
                run(from, to, pixels);
            else
                runOnCopies(from, to, pixels);
        }
    }
}
