// Photoshop's image resources, in which JPEG, TIFF, PNG and PSD files store IPTC and other blocks.
#pragma once

#include "metadata.h"

namespace imagefile {

enum class PhotoshopResource : std::uint16_t {
    Resolution = 0x03ED,
    Iptc = 0x0404,
    Icc = 0x040F,
    Exif = 0x0422, // a TIFF
    Xmp = 0x0424,
};

/// Returns the data of the first resource with the given ID; empty if there is none, or if damaged data precedes it.
Bytes FindResource(const Bytes &resources, PhotoshopResource id);

/// Appends a resource without a name; does nothing if there is no data.
void AppendResource(PhotoshopResource id, const Bytes &data, Bytes *resources);

/// Returns a resource block that contains only IPTC.
Bytes IptcResource(const Bytes &iptc);

} // namespace imagefile
