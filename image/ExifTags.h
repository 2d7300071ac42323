// EXIF texts and tags on their own: the number in a text, the meaning of a tag.
#pragma once

#include <QString>

/// The number that a text begins with: a fraction of whole numbers or of decimals ("1/250"), a decimal ("5.6"), a whole
/// number. 0 where none can be read, and for a fraction with a zero. The decimal sign is the point in every locale.
float ExifParseString(const char *text);

/// What an EXIF tag stands for, in English; "NA" for tag 0 and tags that aren't known.
QString DecodeExifTag(int tag);
