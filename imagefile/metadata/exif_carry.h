// Selects and converts the EXIF that is copied to another file.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Returns whether an EXIF value is copied to another file: it describes the shot rather than how the source file
/// stores pixels, has a known type, and is not empty. Thumbnails are not copied, because they would show the old
/// picture.
bool IsCarried(const Exiv2::Exifdatum &datum);

/// Returns whether a value is a maker note or part of one. Valid only for values that IsCarried accepts.
bool IsOfMakerNote(const Exiv2::Exifdatum &datum);

/// Returns the EXIF of a picture for another file, without entries that are empty or of unknown type. Keeps the maker
/// note in the first of these forms that works:
///  - the camera's bytes at any offset, if the note's header marks it as movable;
///  - the same bytes at their original offset from the start of the block, if Exiv2 reads the same values there or
///    can't rebuild the note from them (NeedsItsOffset); the value "Exif.MakerNote.Offset" gives EncodeExif the offset;
///  - the same bytes at any offset, if Exiv2 reads the same values there;
///  - the decoded values, from which Exiv2 rebuilds a note.
/// Throws only std::bad_alloc.
Exiv2::ExifData ExifToWrite(const Exiv2::ExifData &exif);

/// Encodes the result of ExifToWrite as a little-endian TIFF that contains nothing else; empty if there is no EXIF.
/// Throws Exiv2::AnyError.
Bytes EncodeExif(const Exiv2::ExifData &exif);

} // namespace imagefile
