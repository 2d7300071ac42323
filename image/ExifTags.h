// Parsing of EXIF texts, and descriptions of tags.
#pragma once

#include <QString>

/// Returns the number at the start of a text: a fraction of integers or decimals ("1/250"), a decimal ("5.6"), or an
/// integer. 0 if there is none, or for a fraction with a zero. The decimal separator is a point in every locale.
float ExifParseString(const char *text);

/// Returns the English description of an EXIF tag; "NA" for tag 0 and unknown tags.
QString DecodeExifTag(int tag);
