// Metadata in PNG chunks, which Exiv2 reads incompletely and doesn't preserve byte for byte.
#pragma once

#include "metadata.h"

#include <string>

namespace imagefile {

/// Keywords of the texts that contain XMP and, in ImageMagick's format, IPTC.
constexpr char kPngXmpKey[] = "XML:com.adobe.xmp";
constexpr char kPngIptcKey[] = "Raw profile type iptc";

/// Reads all four parts from iCCP, eXIf, iTXt, zTXt and tEXt chunks, including those after the pixels; the pixels are
/// skipped. Otherwise like ReadExiv2Metadata.
Status ReadPngMetadata(const Source &source, Metadata *metadata);

/// Returns a block in ImageMagick's text format: type, length and hexadecimal digits.
std::string RawProfileText(const char *type, const Bytes &block);

} // namespace imagefile
