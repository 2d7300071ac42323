// Metadata as attributes of an OpenEXR header.
#pragma once

#include <ImfHeader.h>

namespace imagefile {

struct Metadata;

/// Adds what the header can hold: exposure, date, place, owner and comment of the EXIF, the XMP packet as a text named
/// "xmp", and the primary colors of the ICC profile or, without one, of Adobe RGB if the EXIF names it. Warns about the
/// rest.
void AddExrAttributes(const Metadata &metadata, Imf::Header *header);

} // namespace imagefile
