// Keeps maker notes at their place. Most notes use offsets from the beginning of the EXIF block, and some are wrong, so
// that readers guess the intended ones from the note's place. Both still work in a file that keeps the note at its
// place.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Place of a maker note, from the beginning of the EXIF block. Exiv2 adds it for the notes that it understands.
constexpr char kNotePlaceKey[] = "Exif.MakerNote.Offset";

/// Adds the place of a maker note that Exiv2 doesn't understand, in a JPEG or a TIFF. Throws std::bad_alloc.
void AddNotePlace(const Source &source, Exiv2::ExifData *exif);

/// Returns whether a maker note reads the same anywhere in a file, according to its header.
bool IsMovableNote(const Bytes &note);

/// Returns whether the decoded values of a note at @p place, from the beginning of the EXIF block, don't rebuild the
/// same note:
///  - its offsets fit into it only when all are shifted by one distance, so its writer counted from elsewhere;
///  - its values include directories that are stored as bytes, with offsets of their own (Olympus E-1, E-300).
bool NeedsItsPlace(const Bytes &note, std::uint64_t place, bool isBigEndian);

/// Returns the placeholder for the note in a block without it, as EXIF's value of a maker note.
Bytes NotePlaceholder();

/// Inserts a note into an EXIF block made by Exiv2, a classic little-endian TIFF whose maker note is NotePlaceholder:
/// the note begins at @p place, at least 16, and everything else moves. Empty if the block isn't as described.
Bytes WithNoteAt(const Bytes &block, const Bytes &note, std::uint32_t place);

} // namespace imagefile
