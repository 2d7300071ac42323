// The metadata of one picture inside the layer, and its way out of a file.
#pragma once

#include "core/source.h"

#include <cstdint>
#include <exiv2/exiv2.hpp>
#include <vector>

namespace imagefile {

using Bytes = std::vector<std::uint8_t>;

/// What a bitmap record's MetaData points to. Empty parts are absent.
struct Metadata {
    Exiv2::ExifData exif; // as read, image structure and thumbnails included
    Bytes icc;            // profile as it stands in the file
    Bytes iptc;           // IIM data sets as they stand in the file
    Bytes xmp;            // packet, UTF-8
};

/// Reads all four parts. Metadata that is damaged never fails a picture: what can be understood of it comes.
/// Throws std::bad_alloc only. Never decodes pixels.
Metadata ReadMetadata(const Source &source);

/// Adds the EXIF of a TIFF of @p size bytes in memory, as far as it can be understood. Throws std::bad_alloc only.
void DecodeExifTiff(const std::uint8_t *data, std::size_t size, Exiv2::ExifData *exif);

/// Starts Exiv2 once for all threads and keeps it from writing to standard error.
void StartExiv2();

/// The metadata of a bitmap; null when it carries none.
const Metadata *MetadataOf(const GFL_BITMAP *bitmap);
/// The metadata of a bitmap, made when it has none.
Metadata *MakeMetadata(GFL_BITMAP *bitmap);

} // namespace imagefile
