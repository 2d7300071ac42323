// Photoshop's image resources, in which JPEG, TIFF, PNG and PSD files carry IPTC and other blocks.
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

/// The data of the first resource of a kind; empty when there is none, and from where the resources are damaged.
Bytes FindResource(const Bytes &resources, PhotoshopResource kind);

/// Adds a resource without a name; nothing for no data.
void AppendResource(PhotoshopResource kind, const Bytes &data, Bytes *resources);

/// A block of resources with nothing but IPTC.
Bytes IptcResource(const Bytes &iptc);

} // namespace imagefile
