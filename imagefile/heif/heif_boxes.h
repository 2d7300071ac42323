// The properties of a HEIF file's main picture that libheif doesn't report: how it lies in the coded one, and whether
// it is gray.
#pragma once

#include "core/source.h"

namespace imagefile {

/// A turn by right angles, perhaps mirrored: how x and y of a shown picture depend on those of the stored one, from the
/// middle: x = xx X + xy Y.
struct HeifTurn {
    int xx = 1, xy = 0, yx = 0, yy = 1;

    bool operator==(const HeifTurn &other) const
    {
        return xx == other.xx && xy == other.xy && yx == other.yx && yy == other.yy;
    }
    /// Returns the turn by this one and then @p next.
    HeifTurn Then(const HeifTurn &next) const;
    /// Returns EXIF's number of the orientation.
    std::uint16_t Orientation() const;
};

struct HeifProperties {
    HeifTurn turn;          // which shows the picture as it should be
    bool isCropped = false; // coders round sizes up
    bool isGray = false;
};

/// Reads the properties of the primary item (ISO/IEC 23008-12) in a file that libheif accepts. Unreadable boxes count
/// as absent.
HeifProperties ReadHeifProperties(const Source &source);

/// Returns whether the file lists a brand, such as "avif", as its own or compatible.
bool HasHeifBrand(const Source &source, const char *brand);

} // namespace imagefile
