// Selects and converts the EXIF that is copied to another file.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Returns whether an EXIF value is copied to another file: it describes the shot rather than how this file stores
/// pixels, has a known type and at least one value. Thumbnails are not copied, because they would show the old picture.
bool IsCarried(const Exiv2::Exifdatum &datum);

/// Returns whether a value is a maker note or is inside one. Only for EXIF that is copied.
bool IsOfMakerNote(const Exiv2::Exifdatum &datum);

/// Returns the EXIF of a picture for another file; leaves out entries of unknown type and those without a value. Keeps
/// the maker note in the first of these forms that works:
///  - the camera's bytes, anywhere, if the note's header marks it as movable;
///  - the same bytes at their original offset from the start of the block, which "Exif.MakerNote.Offset" requests from
///    EncodeExif, if Exiv2 reads the same values there or can't rebuild the note from its values (NeedsItsPlace);
///  - the same bytes anywhere, if Exiv2 reads the same values;
///  - the decoded values, from which Exiv2 rebuilds a note.
/// Throws only std::bad_alloc.
Exiv2::ExifData ExifToWrite(const Exiv2::ExifData &exif);

/// Encodes the result of ExifToWrite as a little-endian TIFF with nothing else; empty if there is none. Throws
/// Exiv2::AnyError.
Bytes EncodeExif(const Exiv2::ExifData &exif);

} // namespace imagefile
