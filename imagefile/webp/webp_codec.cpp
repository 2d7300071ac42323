// WebP codec, using libwebp. See webp_layout.cpp for the chunks, webp_read.cpp for pixels and metadata.
#include "webp_codec.h"

#include <cstring>

namespace imagefile {

namespace {

class Webp : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return std::memcmp(head, "RIFF", 4) == 0 && std::memcmp(head + 8, "WEBP", 4) == 0;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadWebpInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadWebpPixels(source, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        return ReadWebpMetadata(source, metadata);
    }

    Status Write(const GFL_BITMAP &, const SaveOptions &, Sink *) const override
    {
        return Status::Fail(GFL_ERROR_BAD_FORMAT_INDEX, "WebP files can't be written");
    }
};

} // namespace

const Codec &WebpCodec()
{
    static const Webp codec;
    return codec;
}

} // namespace imagefile
