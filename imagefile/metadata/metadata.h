// Metadata of one picture inside the layer, and the functions that read it from a file.
#pragma once

#include "core/bytes.h"
#include "core/memory_reserve.h"
#include "core/source.h"

#include <exiv2/exiv2.hpp>
#include <mutex>
#include <shared_mutex>

namespace imagefile {

/// Metadata that GFL_BITMAP::MetaData points to. Absent parts are empty.
struct Metadata {
    Exiv2::ExifData exif; // as read, including image structure and thumbnails
    Bytes icc;            // profile as stored in the file
    Bytes iptc;           // IIM data sets as stored in the file
    Bytes xmp;            // packet, UTF-8
};

/// Reads all four parts with Exiv2; reads nothing from formats that Exiv2 doesn't support. Damaged metadata is never an
/// error: the readable part is kept, and gflLastWarningText reports the rest. Returns GFL_ERROR_FILE_READ if the source
/// can't be read. Throws only std::bad_alloc. Never decodes pixels.
Status ReadExiv2Metadata(const Source &source, Metadata *metadata);

/// Adds the readable EXIF of a TIFF of @p size bytes in memory; warns about the rest. Throws only std::bad_alloc.
void DecodeExifTiff(const std::uint8_t *data, std::size_t size, Exiv2::ExifData *exif);

/// Like DecodeExifTiff, but the block may begin with "Exif\0\0" as in a JPEG. Other formats define the block without
/// this prefix.
void DecodeExifBlock(const Bytes &block, Exiv2::ExifData *exif);

/// Like DecodeExifBlock, for the contents of an EXIF box (ISO/IEC 23008-12, A.2.1), which begin with a 32-bit offset of
/// the EXIF, relative to the end of that field.
void DecodeBoxedExif(const Bytes &box, Exiv2::ExifData *exif);

/// Returns @p size bytes of metadata starting at @p at; empty, with a warning, if the file ends early or the block
/// exceeds the size limit.
Bytes ReadMetadataBlock(const Source &source, std::uint64_t at, std::uint64_t size);

/// Starts Exiv2 once for all threads and keeps it from writing to standard error: damage that it reports while this
/// layer reads metadata becomes a warning.
void StartExiv2();

/// Returns the lock for Exiv2's table of XMP namespaces. Reading a packet adds new namespaces under Exiv2's own lock,
/// but writing a packet iterates over the table without that lock. So hold this lock shared while reading and
/// exclusively while writing.
std::shared_mutex &XmpNamespaces();

/// Guard that must exist while Exiv2 reads or writes XMP. If the texts that its XMP toolkit returns cannot be copied
/// because memory is short, the toolkit's lock is never released, and the next call to the toolkit hangs. The reserve
/// lets the copy succeed.
template <class Lock> struct XmpUse {
    const MemoryReserve reserve;
    const Lock lock{XmpNamespaces()};
};
using XmpReading = XmpUse<std::shared_lock<std::shared_mutex>>;
using XmpWriting = XmpUse<std::unique_lock<std::shared_mutex>>;

/// Returns the bytes of a value, with its numbers in the given byte order.
Bytes ValueBytes(const Exiv2::Exifdatum &datum, Exiv2::ByteOrder order = Exiv2::littleEndian);

/// Returns the metadata of a bitmap; null if it has none.
const Metadata *MetadataOf(const GFL_BITMAP *bitmap);
/// Returns the metadata of a bitmap, creating it if necessary.
Metadata *MakeMetadata(GFL_BITMAP *bitmap);

} // namespace imagefile
