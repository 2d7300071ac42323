// What the files of the OpenEXR codec share.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// The picture of an OpenEXR file is its display window; where the data window doesn't reach it is black, and
/// transparent if the file has alpha. What of the data window hangs over is left out.
///
///   | channels                      | delivered, as 32-bit float          |
///   |-------------------------------|-------------------------------------|
///   | Y                             | grey                                |
///   | R, G, B, or some of them      | RGB, absent ones 0                  |
///   | Y, RY, BY                     | RGB                                 |
///   | any of these with A           | RGBA, colours divided by their alpha |
///
/// Without any of them the first layer counts that has some. Values are taken as they stand: light is not encoded.
Status ReadExrInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadExrPixels(const Source &source, RowSink *rows);

/// Writes scan lines, without metadata, and none is read. SaveOptions::compression counts as OpenEXR does, default PIZ:
///
///   | number | method          | stored                                                 |
///   |--------|-----------------|--------------------------------------------------------|
///   | 0 to 4 | none, RLE, ZIPS, ZIP, PIZ | half for 8-bit pictures, else float; exactly |
///   | 5      | PXR24           | as above; of floats 24 bits: errors below 2^-16 of a value |
///   | 6, 7   | B44, B44A       | half: below 2^-11 of a value, and blocks of 4 x 4 pixels by 6-bit steps |
///   | 8, 9   | DWAA, DWAB      | half, by its frequencies                               |
///
/// Colours are multiplied by their alpha, as the format has it; where that is 0 they are gone.
Status WriteExr(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

const Codec &ExrCodec();

} // namespace imagefile
