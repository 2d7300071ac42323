// The metadata of one picture inside the layer, and how to read it from a file.
#pragma once

#include "core/bytes.h"
#include "core/memory_reserve.h"
#include "core/source.h"

#include <exiv2/exiv2.hpp>
#include <mutex>
#include <shared_mutex>

namespace imagefile {

/// The type behind a bitmap record's MetaData. Empty parts are absent.
struct Metadata {
    Exiv2::ExifData exif; // as read, image structure and thumbnails included
    Bytes icc;            // profile as stored in the file
    Bytes iptc;           // IIM data sets as stored in the file
    Bytes xmp;            // packet, UTF-8
};

/// Reads all four parts with Exiv2, for the formats that it supports; none for others. Damaged metadata is never an
/// error: the readable part is kept, and gflLastWarningText reports the rest. A source that can't be read gives
/// GFL_ERROR_FILE_READ. Throws only std::bad_alloc. Never decodes pixels.
Status ReadExiv2Metadata(const Source &source, Metadata *metadata);

/// Adds the readable EXIF of a TIFF of @p size bytes in memory; warns about the rest. Throws only std::bad_alloc.
void DecodeExifTiff(const std::uint8_t *data, std::size_t size, Exiv2::ExifData *exif);

/// Same for a block that may begin with "Exif\0\0", like a JPEG's. Other formats define the block without this prefix.
void DecodeExifBlock(const Bytes &block, Exiv2::ExifData *exif);

/// Same for EXIF in boxes (ISO/IEC 23008-12, A.2.1), which begins with the offset of its TIFF, counted from the end
/// of that field.
void DecodeBoxedExif(const Bytes &box, Exiv2::ExifData *exif);

/// Returns @p size bytes of metadata from @p at on; empty, with a warning, if the file ends early or the block exceeds
/// the size limit.
Bytes ReadMetadataBlock(const Source &source, std::uint64_t at, std::uint64_t size);

/// Starts Exiv2 once for all threads and keeps it from writing to standard error: damage that it reports while this
/// layer reads becomes a warning.
void StartExiv2();

/// Guards Exiv2's table of XMP namespaces. Reading a packet adds new namespaces under Exiv2's own lock, but writing a
/// packet iterates over the table without it. So hold this lock shared while reading and exclusively while writing.
std::shared_mutex &XmpNamespaces();

/// Required while Exiv2 reads or writes XMP. If the texts that its XMP toolkit returns cannot be copied because memory
/// is short, the toolkit's lock is never released, and its next call hangs. The reserve lets the copy succeed.
template <class Lock> struct XmpUse {
    const MemoryReserve reserve;
    const Lock lock{XmpNamespaces()};
};
using XmpReading = XmpUse<std::shared_lock<std::shared_mutex>>;
using XmpWriting = XmpUse<std::unique_lock<std::shared_mutex>>;

/// Returns the metadata of a bitmap; null if it has none.
const Metadata *MetadataOf(const GFL_BITMAP *bitmap);
/// Returns the metadata of a bitmap, creating it if necessary.
Metadata *MakeMetadata(GFL_BITMAP *bitmap);

} // namespace imagefile
