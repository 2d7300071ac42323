// The three corrections, as a set.
#pragma once

/// Asked for, held by a profile, or to be applied to one picture. The only set of switches inside; the record of the
/// process and its XML form have older names for the same three (see KVitreluxOne2One::Params).
struct Corrections {
    bool distortion = false;
    bool chromatic = false;
    bool vignetting = false;

    constexpr bool Any() const { return distortion || chromatic || vignetting; }
};
