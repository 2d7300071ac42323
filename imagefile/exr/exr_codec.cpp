// OpenEXR codec, using the OpenEXR library. See exr_read.cpp for reading, exr_write.cpp for writing.
#include "exr_codec.h"

#include "metadata/metadata.h"

#include <cstring>

namespace imagefile {

namespace {

class Exr : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return std::memcmp(head, "\x76\x2f\x31\x01", 4) == 0;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadExrInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadExrPixels(source, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        StartExiv2();
        metadata->xmp = ReadExrXmp(source);
        return source.Check();
    }

    bool WritesGeneratedRows() const override { return true; }

    Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const override
    {
        return WriteExr(bitmap, options, sink);
    }
};

} // namespace

const Codec &ExrCodec()
{
    static const Exr codec;
    return codec;
}

} // namespace imagefile
