// EXIF as the two lists that callers get: flat texts, and raw values that restore the same EXIF.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Returns the flat list of texts, in the forms documented at GFL_EXIF_ENTRY; null if there is no value. The caller
/// frees it with gflFreeEXIF. Throws std::bad_alloc.
GFL_EXIF_DATA *ExifTexts(const Exiv2::ExifData &exif);

/// Returns the raw list of all values that can be copied to another file; null if there is none. The caller frees it
/// with gflFreeEXIF2. Throws std::bad_alloc.
GFL_EXIF_DATAEX *ExifRawList(const Exiv2::ExifData &exif);

/// Returns the values of a raw list. Skips nodes of unknown blocks or formats.
Exiv2::ExifData ExifOfRawList(const GFL_EXIF_DATAEX &list);

/// Returns the text of one value.
std::string ExifText(const Exiv2::Exifdatum &datum);

/// Returns the lens ID from the maker notes, in the form that lens tables use; empty if there is none.
///  - Nikon: shortest and longest focal length in mm, lens number, smallest f-number at each: "8 8 121 3.6 3.6"
///  - Canon: shortest and longest focal length in mm, lens type: "10 22 235"
std::string LensId(const Exiv2::ExifData &exif);

} // namespace imagefile
