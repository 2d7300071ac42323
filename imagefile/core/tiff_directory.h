// TIFF directories as lists of fields, for joining Exiv2's EXIF and libtiff's picture in one file.
#pragma once

#include "sink.h"

#include <array>
#include <cstdint>
#include <vector>

namespace imagefile {

/// One field of a directory.
struct TiffField {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint64_t count;
    // The values if they fit (4 bytes, BigTIFF 8), otherwise their offset in the file; in the file's byte order.
    std::array<std::uint8_t, 8> value;
};
using TiffFields = std::vector<TiffField>;

/// Variant of TIFF. Classic TIFF has 32-bit offsets, BigTIFF 64-bit ones; both exist in either byte order.
struct TiffVariant {
    bool isBig;
    bool isBigEndian = false;

    std::size_t HeaderBytes() const { return isBig ? 16 : 8; }
    std::size_t OffsetBytes() const { return isBig ? 8 : 4; }
    std::size_t CountBytes() const { return isBig ? 8 : 2; }
    std::size_t FieldBytes() const { return isBig ? 20 : 12; }
    /// Returns where the header stores the offset of the first directory.
    std::uint64_t FirstDirectoryAt() const { return isBig ? 8 : 4; }

    /// Decodes a number of 1 to 8 bytes.
    std::uint64_t Number(const std::uint8_t *data, std::size_t bytes) const;
    /// Encodes a number of 1 to 8 bytes.
    void Put(std::uint64_t number, std::size_t bytes, std::uint8_t *data) const;
    /// Returns the offset of a field's values if they don't fit in the field, or of the directory that the field points
    /// to.
    std::uint64_t OffsetOf(const TiffField &field) const { return Number(field.value.data(), OffsetBytes()); }
};

/// Returns the size in bytes of a field's values; 0 for a type that doesn't exist.
std::uint64_t TiffValueBytes(const TiffField &field);

/// Returns whether a field with this tag points to the EXIF, GPS or interoperability directory.
bool IsDirectoryPointer(std::uint16_t tag);

/// Determines the variant of a file from its first four bytes, @p head. Returns false if it is not a TIFF.
bool TiffVariantOf(const std::uint8_t *head, TiffVariant *variant);

/// Reads the directory at @p offset of a TIFF in memory. Returns false if it extends past the end or has more than
/// kMaxTiffFields fields.
bool ReadDirectory(const std::vector<std::uint8_t> &file, std::uint64_t offset, TiffVariant variant,
                   TiffFields *fields);

/// Encodes a directory with no successor. @p fields must be sorted by tag.
std::vector<std::uint8_t> EncodeDirectory(const TiffFields &fields, TiffVariant variant);

/// Converts a field of the classic TIFF @p classic to BigTIFF, both little-endian. Copies values of 5 to 8 bytes from
/// the file into the field. Returns false if they extend past the end of the file.
bool WidenField(const std::vector<std::uint8_t> &classic, TiffField *field);

} // namespace imagefile
