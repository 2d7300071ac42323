// Declarations shared by the Photoshop codec's source files.
#pragma once

#include "core/codec.h"

namespace imagefile {

Status ReadPsdInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadPsdPixels(const Source &source, RowSink *rows);
Status WritePsd(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

const Codec &PsdCodec();

} // namespace imagefile
