// Stores metadata as OpenEXR header attributes.
#pragma once

#include <ImfHeader.h>

namespace imagefile {

struct Metadata;

/// Adds the metadata that the header can store: exposure, date, position, owner and comment from the EXIF, the XMP
/// packet as a text named "xmp", and the primaries of the ICC profile or, without one, of Adobe RGB if the EXIF names
/// it. Warns about the rest.
void AddExrAttributes(const Metadata &metadata, Imf::Header *header);

} // namespace imagefile
