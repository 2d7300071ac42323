// Set of the three corrections.
#pragma once

/// Corrections requested, supported by a profile, or to be applied to one picture. All internal code uses this set. The
/// process's parameter record and its XML have older names for the same corrections (see KVitreluxOne2One::Params).
struct Corrections {
    bool distortion = false;
    bool chromatic = false;
    bool vignetting = false;

    constexpr bool Any() const { return distortion || chromatic || vignetting; }
};
