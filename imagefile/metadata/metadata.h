// The metadata of one picture inside the layer, and its way out of a file.
#pragma once

#include "core/bytes.h"
#include "core/source.h"

#include <exiv2/exiv2.hpp>

namespace imagefile {

/// What a bitmap record's MetaData points to. Empty parts are absent.
struct Metadata {
    Exiv2::ExifData exif; // as read, image structure and thumbnails included
    Bytes icc;            // profile as it stands in the file
    Bytes iptc;           // IIM data sets as they stand in the file
    Bytes xmp;            // packet, UTF-8
};

/// Reads all four parts by Exiv2, for the formats that it knows; of others there is none. Damaged metadata never fails
/// a picture: what can be understood of it comes, and gflLastWarningText tells of the rest. A source that can't be read
/// is GFL_ERROR_FILE_READ. Throws std::bad_alloc only. Never decodes pixels.
Status ReadExiv2Metadata(const Source &source, Metadata *metadata);

/// Adds the EXIF of a TIFF of @p size bytes in memory, as far as it can be understood; of the rest there is a warning.
/// Throws std::bad_alloc only.
void DecodeExifTiff(const std::uint8_t *data, std::size_t size, Exiv2::ExifData *exif);

/// Starts Exiv2 once for all threads and keeps it from writing to standard error: what it finds damaged while this
/// layer reads becomes a warning.
void StartExiv2();

/// The metadata of a bitmap; null when it carries none.
const Metadata *MetadataOf(const GFL_BITMAP *bitmap);
/// The metadata of a bitmap, made when it has none.
Metadata *MakeMetadata(GFL_BITMAP *bitmap);

} // namespace imagefile
