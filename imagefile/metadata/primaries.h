// Primaries of an ICC profile.
#pragma once

#include "core/bytes.h"
#include "core/color_transform.h"

#include <optional>

namespace imagefile {

struct Primaries {
    Chromaticity red, green, blue, white;
};

/// Returns the primaries of an RGB matrix profile relative to the profile's white point, with the adaptation of ICC
/// profiles to D50 undone; nullopt for other profiles. Throws only std::bad_alloc.
std::optional<Primaries> PrimariesOf(const Bytes &icc);

} // namespace imagefile
