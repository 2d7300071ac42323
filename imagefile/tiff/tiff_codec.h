// Declarations shared by the TIFF codec's source files.
#pragma once

#include "core/codec.h"

namespace imagefile {

Status ReadTiffInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadTiffPixels(const Source &source, RowSink *rows);
/// Reads a suitable reduced version if the file has one, otherwise the picture.
Status ReadTiffThumbnail(const Source &source, const Box &box, RowSink *rows);
Status WriteTiff(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

const Codec &TiffCodec();

} // namespace imagefile
