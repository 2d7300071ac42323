// Keeps maker notes at their offset. Most notes contain offsets from the beginning of the EXIF block. Some of these are
// wrong, and readers guess the intended ones from the note's own offset. Right and wrong offsets both work as long as
// the note isn't moved.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Offset of a maker note from the beginning of the EXIF block. Exiv2 adds it for the notes that it supports.
constexpr char kNoteOffsetKey[] = "Exif.MakerNote.Offset";

/// Adds the offset of a maker note that Exiv2 doesn't support, in a JPEG or a TIFF. Throws std::bad_alloc.
void AddNoteOffset(const Source &source, Exiv2::ExifData *exif);

/// Returns whether a maker note reads the same anywhere in a file, according to its header.
bool IsMovableNote(const Bytes &note);

/// Returns whether a note at offset @p offset in the EXIF block can't be rebuilt from its decoded values, because
///  - its offsets point into the note only if all are shifted by the same distance, so they have another origin; or
///  - its values include directories stored as bytes, which contain offsets (Olympus E-1, E-300).
bool NeedsItsOffset(const Bytes &note, std::uint64_t offset, bool isBigEndian);

/// Returns the value that EXIF's maker note field must have in a block passed to WithNoteAt.
Bytes NotePlaceholder();

/// Inserts a note into an EXIF block made by Exiv2, a classic little-endian TIFF whose maker note is NotePlaceholder.
/// The note begins at @p offset, at least 16, and the rest of the block moves to make room. Empty if the block isn't as
/// described.
Bytes WithNoteAt(const Bytes &block, const Bytes &note, std::uint32_t offset);

} // namespace imagefile
