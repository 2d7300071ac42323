// TIFF predictors, which make rows easier to compress by storing differences between neighbors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imagefile {

/// Applies predictor 2: each 8- or 16-bit sample minus the same channel of the previous pixel, wrapping around. @p
/// dst must not overlap @p src.
template <class T> void DifferenceRow(const T *src, T *dst, std::size_t width, std::size_t channels);

/// Applies predictor 3, for floats (Adobe Photoshop TIFF Technical Note 3): groups the row's bytes by significance,
/// highest first, then subtracts from each byte the one @p channels before it.
void DifferenceFloatRow(const float *src, std::uint8_t *dst, std::size_t width, std::size_t channels);

} // namespace imagefile
