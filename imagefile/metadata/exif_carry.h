// Which EXIF goes along to another file, and in what shape.
#pragma once

#include <exiv2/exiv2.hpp>

namespace imagefile {

/// Whether an EXIF value goes along to another file: it tells of the shot, and not of how this file stores pixels.
/// Thumbnails don't go along either, because they would show the picture as it was.
bool IsCarried(const Exiv2::Exifdatum &datum);

/// Whether a value is a maker note or stands in one. Only for EXIF that is carried.
bool IsOfMakerNote(const Exiv2::Exifdatum &datum);

/// What to write of the EXIF of a picture. A maker note comes as the very bytes of the camera where it can still be
/// decoded at another place in a file, and otherwise, because it counts from the begin of the file, as the decoded
/// values that Exiv2 makes a note of again. Throws std::bad_alloc only.
Exiv2::ExifData ExifToWrite(const Exiv2::ExifData &exif);

/// A little-endian TIFF that holds this EXIF and nothing else; empty when there is none. Throws Exiv2::AnyError.
std::vector<std::uint8_t> EncodeExif(const Exiv2::ExifData &exif);

} // namespace imagefile
