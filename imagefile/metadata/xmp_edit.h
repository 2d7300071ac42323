// Updates an edited picture's metadata to match its new pixels.
#pragma once

#include "metadata.h"

namespace imagefile {

struct PictureSize {
    int width, height;
};

/// Sets the picture dimensions in the EXIF, and removes an orientation outside 1 to 8, which would make libtiff
/// reject the whole TIFF. Empty EXIF stays empty.
void UpdateExif(PictureSize size, Exiv2::ExifData *exif);

/// Returns the packet @p xmp with the properties of @p record added, and without properties that are no longer true
/// (see gflBitmapMarkEdited). @p exif is the edited picture's EXIF. Of a damaged packet, only the properties that Exiv2
/// reads are kept; if the result can't be written, only @p record is kept. Each case gives a warning.
/// Throws only std::bad_alloc.
Bytes EditedXmp(const Bytes &xmp, const Exiv2::XmpData &record, PictureSize size, const Exiv2::ExifData &exif);

} // namespace imagefile
