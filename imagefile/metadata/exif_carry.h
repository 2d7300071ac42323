// Which EXIF goes along to another file, and in what shape.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Whether an EXIF value goes along to another file: it tells of the shot, and not of how this file stores pixels. It
/// has a type that is known and at least one value.
/// Thumbnails don't go along either, because they would show the picture as it was.
bool IsCarried(const Exiv2::Exifdatum &datum);

/// Whether a value is a maker note or stands in one. Only for EXIF that is carried.
bool IsOfMakerNote(const Exiv2::Exifdatum &datum);

/// The EXIF of a picture for another file; entries of unknown type and those without a value are left out. The maker
/// note is kept in the first of these forms that works:
///  - the bytes of the camera, anywhere, if the note says by its mark that it may be moved;
///  - the same bytes at the place that they had, from the begin of the block, with "Exif.MakerNote.Offset" as a request
///  to
///    EncodeExif: if Exiv2 reads the same values there, or can't make the same note of its values (NeedsItsPlace);
///  - the same bytes anywhere, if Exiv2 reads the same values;
///  - the decoded values, of which Exiv2 makes a note again.
/// Throws std::bad_alloc only.
Exiv2::ExifData ExifToWrite(const Exiv2::ExifData &exif);

/// A little-endian TIFF that holds the EXIF that ExifToWrite gave and nothing else; empty when there is none. Throws
/// Exiv2::AnyError.
Bytes EncodeExif(const Exiv2::ExifData &exif);

} // namespace imagefile
