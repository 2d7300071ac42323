// Radiance HDR, our own codec. See hdr_read.cpp for reading, hdr_write.cpp for writing.
#include "hdr_codec.h"

#include "metadata/metadata.h"

#include <cstring>

namespace imagefile {

namespace {

class Hdr : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return std::memcmp(head, "#?RADIANCE", 10) == 0 || std::memcmp(head, "#?RGBE", 6) == 0;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadHdrInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadHdrPixels(source, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        return ReadExiv2Metadata(source, metadata);
    }

    Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const override
    {
        return WriteHdr(bitmap, options, sink);
    }
};

} // namespace

const Codec &HdrCodec()
{
    static const Hdr codec;
    return codec;
}

} // namespace imagefile
