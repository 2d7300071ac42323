// The properties of a HEIF file's main picture that libheif doesn't report: its rotation and crop, and whether it is
// gray.
#pragma once

#include "core/source.h"

namespace imagefile {

/// A rotation by right angles, with or without a reflection. Maps stored coordinates (X, Y), relative to the center, to
/// those of the displayed picture: x = xx X + xy Y, y = yx X + yy Y.
struct HeifTurn {
    int xx = 1, xy = 0, yx = 0, yy = 1;

    bool operator==(const HeifTurn &other) const
    {
        return xx == other.xx && xy == other.xy && yx == other.yx && yy == other.yy;
    }
    /// Returns this rotation followed by @p next.
    HeifTurn Then(const HeifTurn &next) const;
    /// Returns the EXIF orientation.
    std::uint16_t Orientation() const;
};

struct HeifProperties {
    HeifTurn turn;          // to apply for display
    bool isCropped = false; // often true: encoders round sizes up and crop the excess
    bool isGray = false;
};

/// Reads the properties of the primary item (ISO/IEC 23008-12) in a file that libheif accepts. Unreadable boxes count
/// as absent.
HeifProperties ReadHeifProperties(const Source &source);

/// Returns whether the file lists a brand, such as "avif", as its major brand or as a compatible one.
bool HasHeifBrand(const Source &source, const char *brand);

} // namespace imagefile
