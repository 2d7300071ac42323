// The formats of image files: one row per format, with its codec.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// Returns the description of the format at @p index, the number that callers use; null after the last.
const GFL_FORMAT *FormatAt(std::int32_t index);
const Codec *CodecAt(std::int32_t index);

/// Returns whether @p suffix, in lower case with its dot, is one of the format's.
bool HasSuffix(const GFL_FORMAT &format, const std::string &suffix);

/// Finds the format of a file by its first bytes, with its index; GFL_ERROR_UNKNOWN_FORMAT if there is none.
Status FindCodec(const Source &source, const Codec **codec, std::int32_t *index);

/// Reads the metadata of a file, even of a format that no codec reads but Exiv2 does. Otherwise like
/// Codec::ReadMetadata.
Status ReadMetadata(const Source &source, Metadata *metadata);

} // namespace imagefile
