// Maker notes at their place. Most notes count their offsets from the begin of the EXIF block, and some count wrongly,
// so that readers guess what was meant from the note's place. Both still work in a file where the note stands where it
// stood.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Where a maker note stood, from the begin of the EXIF block. Exiv2 adds it for the notes that it understands.
constexpr char kNotePlaceKey[] = "Exif.MakerNote.Offset";

/// Adds the place of a maker note that Exiv2 doesn't understand, in a JPEG or a TIFF. Throws std::bad_alloc.
void AddNotePlace(const Source &source, Exiv2::ExifData *exif);

/// Whether a maker note reads the same anywhere in a file, by the mark that it begins with.
bool IsMovableNote(const Bytes &note);

/// Whether the decoded values of a note at @p place, from the begin of the EXIF block, don't make the same note again:
///  - its offsets fit into it only when they are shifted all by one distance, so whoever wrote it counted from
///  elsewhere;
///  - among its values are directories that are stored as bytes, with offsets of their own (Olympus E-1, E-300).
bool NeedsItsPlace(const Bytes &note, std::uint64_t place, bool isBigEndian);

/// The bytes that stand at the place of the note in a block without it, as EXIF's value of a maker note.
Bytes NotePlaceholder();

/// Puts a note into a block of EXIF as Exiv2 makes it, a classic little-endian TIFF whose maker note is
/// NotePlaceholder: the note begins at @p place, at least 16, and all else makes room. Empty if the block isn't as
/// described.
Bytes WithNoteAt(const Bytes &block, const Bytes &note, std::uint32_t place);

} // namespace imagefile
