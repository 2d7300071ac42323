// The formats of image files: one row for each, with its codec.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// What is known of the format at @p index, the number that callers know it by; null behind the last.
const GFL_FORMAT *FormatAt(std::int32_t index);
const Codec *CodecAt(std::int32_t index);

/// Whether @p suffix, in lower case with its dot, is one of the format's.
bool HasSuffix(const GFL_FORMAT &format, const std::string &suffix);

/// The format of a file by its first bytes, with its index; GFL_ERROR_UNKNOWN_FORMAT when there is none.
Status FindCodec(const Source &source, const Codec **codec, std::int32_t *index);

/// The metadata of a file, also of one that no codec reads but Exiv2 knows. Otherwise as Codec::ReadMetadata.
Status ReadMetadata(const Source &source, Metadata *metadata);

} // namespace imagefile
