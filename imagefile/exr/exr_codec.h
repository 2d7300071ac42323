// Declarations shared by the OpenEXR codec's source files.
#pragma once

#include "core/bytes.h"
#include "core/codec.h"

namespace imagefile {

/// The picture of an OpenEXR file is its display window. Outside the data window it is black, and transparent if the
/// file has alpha. Parts of the data window outside the display window are left out.
///
///   | channels                      | delivered, as 32-bit float          |
///   |-------------------------------|-------------------------------------|
///   | Y                             | gray                                |
///   | R, G, B, or some of them      | RGB; missing channels are 0         |
///   | Y, RY, BY                     | RGB                                 |
///   | any of these with A           | RGBA, colors divided by their alpha |
///
/// If the file has none of these, the first layer that has any is used. Values are linear and otherwise delivered as
/// stored.
Status ReadExrInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadExrPixels(const Source &source, RowSink *rows);
/// Reads the XMP packet that WriteExr stores; empty if there is none or the header is damaged.
Bytes ReadExrXmp(const Source &source);

/// Writes scan lines, with the metadata that the header has attributes for (exr_metadata.h). SaveOptions::compression
/// is OpenEXR's number, default PIZ:
///
///   | number | method          | stored                                                 |
///   |--------|-----------------|--------------------------------------------------------|
///   | 0 to 4 | none, RLE, ZIPS, ZIP, PIZ | half for 8-bit pictures or SaveOptions::halfFloats, else float |
///   | 5      | PXR24           | as above, floats truncated to 24 bits: relative errors below 2^-16 |
///   | 6, 7   | B44, B44A       | half: relative errors below 2^-11; differences within 4 x 4 pixels in 6 bits |
///   | 8, 9   | DWAA, DWAB      | half, lossy (DCT)                                      |
///
/// Colors are multiplied by their alpha, as the format requires; where alpha is 0 they are lost.
Status WriteExr(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink);

const Codec &ExrCodec();

} // namespace imagefile
