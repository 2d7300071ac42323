// Neighborhood filters on single planes: Gaussian blur, median, Sobel.
#pragma once

#include "resize.h" // BorderMode
#include "types.h"

namespace primitives {

/// Weights of a blur, stored in a block that the caller provides.
struct GaussianSpec;

/// Returns the sizes in bytes of the weights and of the work block of a blur. @p kernelSize is odd.
Status FilterGaussianGetBufferSize(Size size, int kernelSize, std::int64_t *specBytes, std::int64_t *bufferBytes);

/// Computes the weights exp(-d^2 / (2 sigma^2)) at the distances d from 0 to kernelSize / 2, normalized so that the
/// kernel's weights add up to 1. @p sigma is above 0.
Status FilterGaussianInit(int kernelSize, float sigma, BorderMode border, GaussianSpec *spec);

/// Blurs a plane; pixels beyond its edge repeat the edge. The target must not overlap the source.
Status FilterGaussianBorder(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size,
                            const GaussianSpec *spec, void *buffer);

/// Like the functions above, but @p buffer also holds the weights.
Status FilterGaussGetBufferSize(Size size, int kernelSize, std::int64_t *bytes);
Status FilterGaussBorder(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, int kernelSize,
                         float sigma, BorderMode border, void *buffer);

enum MaskSize { kMask3x3 = 3, kMask5x5 = 5 };

/// Computes the median of the pixels in the middle row and column of the mask. Reads half a mask beyond the region on
/// all sides, where there must be readable pixels. The target must not overlap the source.
Status FilterMedianCross(const Ipp16s *src, Step srcStep, Ipp16s *dst, Step dstStep, Size size, MaskSize mask);

/// Computes the response to horizontal edges, (1 2 1) of the row above minus that of the row below, saturated. Reads
/// one pixel beyond the region on all sides, where there must be readable pixels. The target must not overlap the
/// source.
Status FilterSobelHoriz(const Ipp16s *src, Step srcStep, Ipp16s *dst, Step dstStep, Size size);

} // namespace primitives
