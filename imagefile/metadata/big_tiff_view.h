// The metadata of a BigTIFF in the form of a classic TIFF, because Exiv2 reads no other.
#pragma once

#include "core/bytes.h"
#include "core/source.h"

namespace imagefile {

/// Whether a file is a BigTIFF, of either byte order.
bool IsBigTiff(const Source &source);

/// A small classic TIFF of the same byte order with the fields of the first directory, and of the EXIF, GPS and
/// interoperability directories below it; empty for a file that is damaged. Values near the begin of the file keep
/// their offsets, so that maker notes that count from the begin of the file are still right in the files that this
/// layer writes.
Bytes ClassicViewOfBigTiff(const Source &source);

} // namespace imagefile
