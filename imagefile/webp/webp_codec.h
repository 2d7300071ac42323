// Declarations shared by the WebP codec's source files, such as the layout of a file.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// Byte range in a file, such as a chunk's contents.
struct WebpRange {
    std::uint64_t at = 0;
    std::uint64_t size = 0; // 0 if there is none
};

/// Layout of a WebP file, from its chunk headers: a picture, or the first frame of an animation.
struct WebpLayout {
    int width = 0, height = 0; // of the canvas, which is delivered
    int left = 0, top = 0;     // of the frame on the canvas
    int frameWidth = 0, frameHeight = 0;
    bool isAnimated = false;
    bool hasAlpha = false; // the frame has alpha or doesn't cover the canvas
    WebpRange frame;       // its chunks with their headers: ALPH if present, then VP8 or VP8L
    WebpRange icc, exif, xmp;

    bool CoversCanvas() const { return frameWidth == width && frameHeight == height; }
};

/// Reads the chunk headers and checks sizes. Returns GFL_ERROR_FILE_READ for a file that ends within the frame; one
/// that ends later only lacks metadata.
Status ReadWebpLayout(const Source &source, WebpLayout *layout);

Status ReadWebpInfo(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadWebpPixels(const Source &source, RowSink *rows);
Status ReadWebpMetadata(const Source &source, Metadata *metadata);

const Codec &WebpCodec();

} // namespace imagefile
