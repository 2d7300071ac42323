// EXIF as the two lists that callers see: flat texts, and raw values that make the same EXIF again.
#pragma once

#include "metadata.h"

namespace imagefile {

/// The flat list of texts, in the forms that gfl.h tells; null when there is no value. The caller frees it by
/// gflFreeEXIF. Throws std::bad_alloc.
GFL_EXIF_DATA *ExifTexts(const Exiv2::ExifData &exif);

/// The raw list of all values that are carried; null when there is none. The caller frees it by gflFreeEXIF2. Throws
/// std::bad_alloc.
GFL_EXIF_DATAEX *ExifRawList(const Exiv2::ExifData &exif);

/// The values of a raw list. Nodes of blocks or formats that mean nothing are left out.
Exiv2::ExifData ExifOfRawList(const GFL_EXIF_DATAEX &list);

/// The text of one value.
std::string ExifText(const Exiv2::Exifdatum &datum);

/// The lens as lens tables name it, out of the maker notes; empty when they don't tell.
///  - Nikon: shortest and longest focal length in mm, lens number, f-numbers at both ends: "8 8 121 3.6 3.6"
///  - Canon: shortest and longest focal length in mm, lens type: "10 22 235"
std::string LensId(const Exiv2::ExifData &exif);

} // namespace imagefile
