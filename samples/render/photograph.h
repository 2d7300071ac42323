/// Simulates a photograph of a scene through a lens with aberrations, and writes it as a camera would.
#pragma once

#include <string>

#include "scene.h"

namespace Samples {

/// Metadata written to a picture's file.
struct Caption {
    std::string title;
    std::string keyword;
    std::string dateTime; ///< "2021:06:12 10:41:00"
    double focalMm;
    int exposureDenominator; ///< the exposure time is 1 / this, in seconds
    double aperture;
    int iso;
};

/// Eight-bit RGB, rows from top to bottom without padding.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb;
};

/// Photographs @p scene so that a correction with @p profile restores it, up to noise and rounding.
///
/// Green is mapped by the green model, red and blue from there by their models, and each channel is divided by the
/// vignetting gain at the position of green. A portrait is rotated by 90 degrees into the profile's landscape frame.
/// The profile must have the chromatic models, and no tangential terms. Gives the same bytes on every run.
Picture Photograph(const Scene &scene, const LensProfile &profile, Hold hold);

/// Writes a JPEG with quality 90, EXIF, IPTC and an sRGB profile, without chroma subsampling.
/// Throws std::runtime_error if the file cannot be written.
void WriteJpeg(const std::string &path, const Picture &picture, const LensProfile &profile, const Caption &caption);

} // namespace Samples
