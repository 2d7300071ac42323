// Metadata of a BigTIFF as a classic TIFF, the only form that Exiv2 reads.
#pragma once

#include "core/bytes.h"
#include "core/source.h"

namespace imagefile {

/// Returns whether a file is a BigTIFF, of either byte order.
bool IsBigTiff(const Source &source);

/// Returns a small classic TIFF of the same byte order with the fields of the first directory, and of the EXIF, GPS and
/// interoperability directories below it; empty if the file is damaged. Values near the beginning of the file keep
/// their offsets, so that maker notes with offsets from the beginning of the file stay valid in files that this layer
/// writes.
Bytes ClassicViewOfBigTiff(const Source &source);

} // namespace imagefile
