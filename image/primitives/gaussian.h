// Gaussian blur of a single plane at a cost that doesn't grow with its width.
#pragma once

#include "types.h"

namespace primitives {

/// The sigma up to which GaussianBlur is the plain FilterGaussianBorder.
constexpr float kLargestPlainSigma = 3.4f;
/// Beyond this the result no longer changes for any image; larger sigmas count as this.
constexpr float kLargestSigma = 1e6f;

/// Blurs a plane by a Gaussian of @p sigma pixels, above 0; pixels beyond the edge repeat the edge's. The target must
/// not overlap the source.
///
/// Up to kLargestPlainSigma by direct convolution, cut off at 3.5 sigma. Above by a cubic B-spline grid k pixels wide
/// (Unser, Aldroubi and Eden 1993): the plane is projected on it, blurred there, and read off, where each B-spline adds
/// the variance k^2 / 3, so that the grid's own blur has what is left, sigma^2 / k^2 - 2 / 3. Against the convolution
/// the result is within 0.3 % of the plane's range up to sigma 5, 0.1 % above.
///
/// What isn't finite spreads over about 5 sigma. After NoMemory the target is undefined.
Status GaussianBlur(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma);

} // namespace primitives
