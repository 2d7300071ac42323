// Tone curves of ICC profiles.
#pragma once

#include <cstddef>
#include <vector>

namespace imagefile {

/// Returns the light for stored values according to an ICC profile: one curve for gray, three for red, green and blue,
/// each at @p points values evenly spaced from 0 to 1. Empty if the bytes are not a profile of either kind, or one that
/// only has lookup tables.
std::vector<std::vector<double>> ToneCurves(const void *profile, std::size_t bytes, std::size_t points);

} // namespace imagefile
