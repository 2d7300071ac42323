// Tone curves of ICC profiles.
#pragma once

#include <cstddef>
#include <vector>

namespace imagefile {

/// Returns the linear light of pixel values according to an ICC profile: one curve for gray, or three for red, green
/// and blue, each sampled at @p points values evenly spaced from 0 to 1. Empty if the bytes are not a gray or RGB
/// profile, or if the profile has only lookup tables.
std::vector<std::vector<double>> ToneCurves(const void *profile, std::size_t bytes, std::size_t points);

} // namespace imagefile
