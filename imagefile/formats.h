// The formats of image files: one row per format, with its codec.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// Returns the description of the format at @p index, or its codec; null after the last one.
const GFL_FORMAT *FormatAt(std::int32_t index);
const Codec *CodecAt(std::int32_t index);

/// Returns whether @p suffix, in lowercase with its dot, is one of the format's.
bool HasSuffix(const GFL_FORMAT &format, const std::string &suffix);

/// Finds the codec and the format index of a file from its first bytes; GFL_ERROR_UNKNOWN_FORMAT if there are none.
Status FindCodec(const Source &source, const Codec **codec, std::int32_t *index);

/// Reads the metadata of a file, even of a format that no codec reads but Exiv2 does. Otherwise like
/// Codec::ReadMetadata.
Status ReadMetadata(const Source &source, Metadata *metadata);

} // namespace imagefile
