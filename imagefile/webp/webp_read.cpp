#include "metadata/metadata.h"
#include "webp_codec.h"

#include <algorithm>
#include <webp/decode.h>

namespace imagefile {

namespace {

Status Failure(VP8StatusCode code)
{
    if (code == VP8_STATUS_OUT_OF_MEMORY)
        return Status::Fail(GFL_ERROR_NO_MEMORY, "WebP: not enough memory");
    return Status::Fail(GFL_ERROR_FILE_READ, Text("WebP: damaged pixels (libwebp's status %d)", code));
}

/// Decodes the frame into @p pixels, as rows without padding.
Status Decode(const Source &source, const WebpLayout &layout, Bytes *pixels)
{
    if (layout.frame.size > static_cast<std::uint64_t>(kMaxCodecAllocation))
        return Status::Fail(GFL_ERROR_FILE_READ,
                            Text("WebP: a picture of %llu packed bytes; up to %lld are supported",
                                 static_cast<unsigned long long>(layout.frame.size),
                                 static_cast<long long>(kMaxCodecAllocation)));
    Bytes packed(layout.frame.size);
    packed.resize(source.ReadAt(layout.frame.at, packed.data(), packed.size()));
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config))
        return Status::Fail(GFL_ERROR_FILE_READ, "WebP: libwebp's version differs from the one used for the build");
    const int rowBytes = layout.frameWidth * (layout.hasAlpha ? 4 : 3); // <= 2^16
    pixels->resize(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(layout.frameHeight));
    config.output.colorspace = layout.hasAlpha ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA = {pixels->data(), rowBytes, pixels->size()};
    const VP8StatusCode code = WebPDecode(packed.data(), packed.size(), &config);
    return code == VP8_STATUS_OK ? Status::Ok() : Failure(code);
}

} // namespace

Status ReadWebpInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    WebpLayout layout;
    if (Status status = ReadWebpLayout(source, &layout); !status)
        return status;
    std::snprintf(info->Description, sizeof info->Description, "%s", layout.isAnimated ? "WebP animation" : "WebP");
    info->Width = layout.width;
    info->Height = layout.height;
    info->BitsPerComponent = 8;
    info->ComponentsPerPixel = layout.hasAlpha ? 4 : 3;
    info->ColorModel = GFL_CM_RGB;
    return Status::Ok();
}

Status ReadWebpPixels(const Source &source, RowSink *rows)
{
    WebpLayout layout;
    if (Status status = ReadWebpLayout(source, &layout); !status)
        return status;
    Bytes pixels;
    if (Status status = Decode(source, layout, &pixels); !status)
        return status;
    const PixelForm form = {8, layout.hasAlpha ? 4 : 3};
    if (Status status = rows->Start(layout.width, layout.height, form); !status)
        return status;
    const auto pixelBytes = static_cast<std::size_t>(form.BytesPerPixel());
    const std::size_t frameBytes = pixelBytes * static_cast<std::size_t>(layout.frameWidth);
    for (int y = 0; y < layout.height; ++y) { // the canvas around the frame is transparent
        std::uint8_t *row = rows->Row(y);
        const int frameY = y - layout.top;
        if (!layout.CoversCanvas())
            std::fill_n(row, pixelBytes * static_cast<std::size_t>(layout.width), std::uint8_t(0));
        if (frameY >= 0 && frameY < layout.frameHeight)
            std::copy_n(pixels.data() + static_cast<std::size_t>(frameY) * frameBytes, frameBytes,
                        row + static_cast<std::size_t>(layout.left) * pixelBytes);
        rows->Done(y);
    }
    return Status::Ok();
}

Status ReadWebpMetadata(const Source &source, Metadata *metadata)
{
    WebpLayout layout;
    if (!ReadWebpLayout(source, &layout)) // the failure is reported when the pixels are read
        return source.Check();
    metadata->icc = ReadMetadataBlock(source, layout.icc.at, layout.icc.size);
    metadata->xmp = ReadMetadataBlock(source, layout.xmp.at, layout.xmp.size);
    DecodeExifBlock(ReadMetadataBlock(source, layout.exif.at, layout.exif.size), &metadata->exif);
    return source.Check();
}

} // namespace imagefile
