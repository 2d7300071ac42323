// Metadata of PNG: the chunks that carry it, which Exiv2 reads only in part and not byte for byte.
#pragma once

#include "metadata.h"

#include <string>

namespace imagefile {

/// Keywords of the texts that carry XMP and, in ImageMagick's way, IPTC.
constexpr char kPngXmpKey[] = "XML:com.adobe.xmp";
constexpr char kPngIptcKey[] = "Raw profile type iptc";

/// Whether a file begins as a PNG.
bool IsPng(const Source &source);

/// All four parts out of iCCP, eXIf, iTXt, zTXt and tEXt chunks, also behind the pixels, which are passed over.
/// Throws std::bad_alloc only.
Metadata ReadPngMetadata(const Source &source);

/// A block as ImageMagick puts it into a text: its kind, its length and hexadecimal digits.
std::string RawProfileText(const char *kind, const Bytes &block);

} // namespace imagefile
