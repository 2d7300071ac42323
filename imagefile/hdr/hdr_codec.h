// Radiance HDR: its pixel layout, shared by reading and writing.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// Bytes of a pixel: the mantissas of red, green and blue, and their common exponent. A value is mantissa * 2^(exponent
/// - 136); exponent 0 is black.
constexpr std::size_t kRgbeBytes = 4;

/// Rows of 8 to 32,767 pixels may be packed channel by channel, after a marker: two bytes with the value 2, then the
/// length.
constexpr int kMinPackedWidth = 8;
constexpr int kMaxPackedWidth = 32767;

Status ReadHdrInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadHdrPixels(const Source &source, RowSink *rows);
/// Writes the pixels, without metadata.
Status WriteHdr(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

const Codec &HdrCodec();

} // namespace imagefile
