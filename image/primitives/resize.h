// Changes the size of an image: area weighting for reductions, bilinear for everything else.
//
// Both are separable: source rows are combined into one row, then its samples into output pixels. The weights of source
// rows and columns are computed once, in a specification.
#pragma once

#include "types.h"

namespace primitives {

/// The values are part of the interface.
enum ResizeMethod { kResizeLinear = 2, kResizeSuper = 8 };
enum BorderMode { kBorderReplicate = 1 };

struct Point {
    int x;
    int y;
};

/// Opaque; stored in a block that the caller provides, of the size that ResizeGetSize returns.
struct ResizeSpec;

/// Returns the sizes in bytes of the weights, and of the block for preparing them. BadArgument if @p antialiasing is
/// requested, or area weighting (kResizeSuper) for a side that grows.
Status ResizeGetSize(Size src, Size dst, ResizeMethod method, int antialiasing, std::int64_t *specBytes,
                     std::int64_t *initBytes);

/// Prepares area weighting: a target pixel is the mean of the source area that it covers; source pixels cut by the
/// area's edge count in proportion. Supports any ratio of 1 or more, separately for each direction.
Status ResizeSuperInit(Size src, Size dst, ResizeSpec *spec);
/// Prepares bilinear interpolation between pixel centers; the outermost pixels are repeated beyond their centers. @p
/// initBuffer is not used.
Status ResizeLinearInit(Size src, Size dst, ResizeSpec *spec, void *initBuffer);

/// Returns the size in bytes of the work block for images of @p channels channels: one row of the source in floats.
Status ResizeGetBufferSize(const ResizeSpec *spec, Size dst, int channels, std::int64_t *bytes);

/// Computes the part of the target that starts at @p dstOffset and has @p dstSize pixels.
///
/// @param src  Pixel (0, 0) of the whole source.
/// @param dst  First pixel of the part. Must not overlap the source.
template <typename T, int C>
Status ResizeSuper(const T *src, Step srcStep, T *dst, Step dstStep, Point dstOffset, Size dstSize,
                   const ResizeSpec *spec, void *buffer);
/// Returns BadArgument for a border mode other than kBorderReplicate. @p borderValue is not used.
template <typename T, int C>
Status ResizeLinear(const T *src, Step srcStep, T *dst, Step dstStep, Point dstOffset, Size dstSize, BorderMode border,
                    const T *borderValue, const ResizeSpec *spec, void *buffer);

} // namespace primitives
