// PSD and PSB codec, without a library. See psd_read.cpp for reading, psd_write.cpp for writing.
#include "psd_codec.h"

#include "metadata/psd_metadata.h"

#include <cstring>

namespace imagefile {

namespace {

class Psd : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override { return std::memcmp(head, "8BPS", 4) == 0; }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadPsdInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadPsdPixels(source, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        return ReadPsdMetadata(source, metadata);
    }

    Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const override
    {
        return WritePsd(bitmap, options, sink);
    }
};

} // namespace

const Codec &PsdCodec()
{
    static const Psd codec;
    return codec;
}

} // namespace imagefile
