// Metadata of a BigTIFF as a classic TIFF, the only form that Exiv2 reads.
#pragma once

#include "core/bytes.h"
#include "core/source.h"

namespace imagefile {

/// Returns whether a file is a BigTIFF, of either byte order.
bool IsBigTiff(const Source &source);

/// Returns a small classic TIFF of the same byte order with the fields of the first directory, and of the EXIF, GPS and
/// interoperability directories below it; empty if the header or the first directory can't be read. Leaves out fields
/// that are damaged, too large or of 64-bit types. Values in the first MiB, where this layer's writer puts the
/// metadata, keep their offsets, so that maker notes with offsets from the beginning of the file stay valid.
Bytes ClassicViewOfBigTiff(const Source &source);

} // namespace imagefile
