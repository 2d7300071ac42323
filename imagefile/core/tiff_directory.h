// TIFF directories as lists of fields: what it takes to join Exiv2's EXIF to libtiff's picture in one file.
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
    // The values where they fit (4 bytes, BigTIFF 8), else their offset in the file; in the file's byte order.
    std::array<std::uint8_t, 8> value;
};
using TiffFields = std::vector<TiffField>;

/// The classic form has 32-bit offsets, BigTIFF 64-bit ones. Either comes in both byte orders.
struct TiffVariant {
    bool isBig;
    bool isBigEndian = false;

    std::size_t HeaderBytes() const { return isBig ? 16 : 8; }
    std::size_t OffsetBytes() const { return isBig ? 8 : 4; }
    std::size_t CountBytes() const { return isBig ? 8 : 2; }
    std::size_t FieldBytes() const { return isBig ? 20 : 12; }
    /// Where the header holds the offset of the first directory.
    std::uint64_t FirstDirectoryAt() const { return isBig ? 8 : 4; }

    /// The number that @p bytes bytes stand for, 1 to 8.
    std::uint64_t Number(const std::uint8_t *data, std::size_t bytes) const;
    /// The inverse.
    void Put(std::uint64_t number, std::size_t bytes, std::uint8_t *data) const;
    /// Where the values of a field stand that don't fit into it, or the directory that it leads to.
    std::uint64_t OffsetOf(const TiffField &field) const { return Number(field.value.data(), OffsetBytes()); }
};

/// Bytes of a field's values; 0 for a type that doesn't exist.
std::uint64_t TiffValueBytes(const TiffField &field);

/// Whether a field of this tag leads to the EXIF, GPS or interoperability directory.
bool IsDirectoryPointer(std::uint16_t tag);

/// The variant of a file that begins with the four bytes @p head. False when it is not a TIFF.
bool TiffVariantOf(const std::uint8_t *head, TiffVariant *variant);

/// Reads the directory at @p offset of a block of memory that holds a TIFF. False when it hangs over the end.
bool ReadDirectory(const std::vector<std::uint8_t> &file, std::uint64_t offset, TiffVariant variant,
                   TiffFields *fields);

/// The bytes of a directory that no other follows. @p fields are sorted by tag.
std::vector<std::uint8_t> EncodeDirectory(const TiffFields &fields, TiffVariant variant);

/// A classic field as a BigTIFF one, both little-endian. Values of 5 to 8 bytes move out of @p classic, the file, into
/// the field. False when they hang over its end.
bool WidenField(const std::vector<std::uint8_t> &classic, TiffField *field);

} // namespace imagefile
