// Set of the three corrections.
#pragma once

/// Corrections requested, supported by a profile, or to be applied to one picture. All internal code uses this set.
/// KVitreluxOne2One::Params and its XML have older names for the same corrections.
struct Corrections {
    bool distortion = false;
    bool chromatic = false;
    bool vignetting = false;

    constexpr bool Any() const { return distortion || chromatic || vignetting; }
};
