// Parses EXIF values given as text and describes EXIF tags.
#pragma once

#include <QString>

/// Returns the number at the start of a text: a fraction of integers or decimals ("1/250"), a decimal ("5.6"), or an
/// integer; 0 if there is none. A fraction with denominator 0 reads as its numerator. The decimal separator is a period
/// in every locale.
float ExifParseString(const char *text);

/// Returns the English description of an EXIF tag; "NA" for tag 0 and unknown tags.
QString DecodeExifTag(int tag);
