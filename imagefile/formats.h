// The formats of image files: one row per format, with its codec.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// Return the description or the codec of the format at @p index; null after the last one.
const GFL_FORMAT *FormatAt(std::int32_t index);
const Codec *CodecAt(std::int32_t index);

/// Returns whether @p suffix, in lowercase with its dot, is one of the format's.
bool HasSuffix(const GFL_FORMAT &format, const std::string &suffix);

/// Finds the codec and the format index of a file from its contents and suffix; GFL_ERROR_UNKNOWN_FORMAT if no codec
/// recognizes it.
Status FindCodec(const Source &source, const Codec **codec, std::int32_t *index);

/// Reads the metadata of a file like Codec::ReadMetadata; if no codec recognizes the file, tries Exiv2.
Status ReadMetadata(const Source &source, Metadata *metadata);

} // namespace imagefile
