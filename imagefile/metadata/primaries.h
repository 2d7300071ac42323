// The primary colors of an ICC profile.
#pragma once

#include "core/bytes.h"
#include "core/color_transform.h"

#include <optional>

namespace imagefile {

struct Primaries {
    Chromaticity red, green, blue, white;
};

/// Returns the colors of an RGB profile that has a matrix, under its own white: the adaptation to D50 that ICC profiles
/// contain is undone. None for other profiles. Throws only std::bad_alloc.
std::optional<Primaries> PrimariesOf(const Bytes &icc);

} // namespace imagefile
