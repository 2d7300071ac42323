// Gaussian blur of a single plane at a cost independent of sigma.
#pragma once

#include "types.h"

namespace primitives {

/// Up to this sigma, GaussianBlur runs the plain FilterGaussianBorder.
constexpr float kLargestPlainSigma = 3.4f;
/// Above this, the result no longer changes for any image; larger sigmas are clamped.
constexpr float kLargestSigma = 1e6f;

/// Blurs a plane by a Gaussian of @p sigma pixels, above 0; pixels beyond the edge repeat the edge. The target must not
/// overlap the source.
///
/// Up to kLargestPlainSigma, uses direct convolution, cut off at 3.5 sigma. Above it, uses a cubic B-spline grid with
/// spacing k (Unser, Aldroubi and Eden 1993): the plane is projected onto the grid, blurred there, and evaluated. Each
/// B-spline adds the variance k^2 / 3, so the blur on the grid has the remaining variance sigma^2 / k^2 - 2 / 3, in
/// units of k^2. The result differs from the convolution's by at most 0.3 % of the plane's range up to sigma 5, and by
/// at most 0.1 % above.
///
/// Non-finite values spread over about 5 sigma. After NoMemory the target is undefined.
Status GaussianBlur(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma);

} // namespace primitives
