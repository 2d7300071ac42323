// The predictors of TIFF, which make rows easier to compress: differences of neighbors.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imagefile {

/// Applies predictor 2: each sample of 8 or 16 bits minus that of the previous pixel, wrapping around. @p dst must not
/// overlap @p src.
template <class T> void DifferenceRow(const T *src, T *dst, std::size_t width, std::size_t channels);

/// Applies predictor 3, for floats: the row's bytes sorted by significance, highest first, then each byte minus the one
/// @p channels before it. Adobe Photoshop TIFF Technical Note 3.
void DifferenceFloatRow(const float *src, std::uint8_t *dst, std::size_t width, std::size_t channels);

} // namespace imagefile
