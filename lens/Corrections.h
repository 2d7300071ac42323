// The three corrections, as a set.
#pragma once

/// Corrections requested, supported by a profile, or to be applied to one picture. All internal code uses this set; the
/// record of the process and its XML form have older names for the same three (see KVitreluxOne2One::Params).
struct Corrections {
    bool distortion = false;
    bool chromatic = false;
    bool vignetting = false;

    constexpr bool Any() const { return distortion || chromatic || vignetting; }
};
