// TIFF codec, using libtiff and libdeflate. See tiff_read.cpp for reading, tiff_write.cpp for writing.
#include "tiff_codec.h"

#include "metadata/metadata.h"

namespace imagefile {

namespace {

class Tiff : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        const bool little = head[0] == 'I' && head[1] == 'I' && (head[2] == 42 || head[2] == 43) && head[3] == 0;
        const bool big = head[0] == 'M' && head[1] == 'M' && head[2] == 0 && (head[3] == 42 || head[3] == 43);
        return little || big;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadTiffInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadTiffPixels(source, rows);
    }

    Status ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &, const Box &box, RowSink *rows) const override
    {
        return ReadTiffThumbnail(source, box, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        return ReadExiv2Metadata(source, metadata);
    }

    bool WritesGeneratedRows() const override { return true; }

    Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const override
    {
        return WriteTiff(bitmap, options, sink);
    }
};

} // namespace

const Codec &TiffCodec()
{
    static const Tiff codec;
    return codec;
}

} // namespace imagefile
