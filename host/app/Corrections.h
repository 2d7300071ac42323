// The three corrections, as a set.
#pragma once

/// Asked for on the command line, held by a profile, or switched on for one picture.
struct Corrections {
    bool distortion = false;
    bool chromatic = false;
    bool vignetting = false;

    bool Any() const { return distortion || chromatic || vignetting; }
};
