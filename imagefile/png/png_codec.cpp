// PNG codec, using libpng. See png_read.cpp for reading, png_write.cpp for writing.
#include "png_codec.h"

#include "metadata/png_metadata.h"

namespace imagefile {

namespace {

class Png : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override { return png_sig_cmp(head, 0, 8) == 0; }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadPngInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadPngPixels(source, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        return ReadPngMetadata(source, metadata);
    }

    bool WritesGeneratedRows() const override { return true; }

    Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const override
    {
        return WritePng(bitmap, options, sink);
    }
};

} // namespace

const Codec &PngCodec()
{
    static const Png codec;
    return codec;
}

void FailPng(png_structp png, png_const_charp text)
{
    auto *error = static_cast<PngError *>(png_get_error_ptr(png));
    if (error->text[0] == '\0')
        std::snprintf(error->text, sizeof error->text, "%s", text);
    std::longjmp(error->out, 1);
}

void IgnorePngWarning(png_structp, png_const_charp) { }

} // namespace imagefile
