// Metadata of PNG: the chunks that carry it, which Exiv2 reads only in part and not byte for byte.
#pragma once

#include "metadata.h"

#include <string>

namespace imagefile {

/// Keywords of the texts that carry XMP and, in ImageMagick's way, IPTC.
constexpr char kPngXmpKey[] = "XML:com.adobe.xmp";
constexpr char kPngIptcKey[] = "Raw profile type iptc";

/// All four parts out of iCCP, eXIf, iTXt, zTXt and tEXt chunks, also behind the pixels, which are passed over.
/// Otherwise as ReadExiv2Metadata.
Status ReadPngMetadata(const Source &source, Metadata *metadata);

/// A block as ImageMagick puts it into a text: its kind, its length and hexadecimal digits.
std::string RawProfileText(const char *kind, const Bytes &block);

} // namespace imagefile
