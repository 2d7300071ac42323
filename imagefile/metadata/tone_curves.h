// Tone curves of ICC profiles.
#pragma once

#include <cstddef>
#include <vector>

namespace imagefile {

/// The light that stored values mean by an ICC profile: one curve for grey, three for red, green and blue, each at
/// @p points values evenly spaced from 0 to 1. Empty if the bytes are no profile of either, or one by look-up tables
/// alone.
std::vector<std::vector<double>> ToneCurves(const void *profile, std::size_t bytes, std::size_t points);

} // namespace imagefile
