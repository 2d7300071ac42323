// JPEG codec, using libjpeg-turbo. See jpeg_read.cpp for reading, jpeg_write.cpp for writing.
#include "jpeg_codec.h"

#include "metadata/metadata.h"

namespace imagefile {

namespace {

class Jpeg : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadJpegInfo(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadJpegPixels(source, nullptr, rows);
    }

    bool StreamsRows() const override { return true; }

    Status ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &, const Box &box, RowSink *rows) const override
    {
        if (ReadExifThumbnail(source, box, rows))
            return Status::Ok();
        return ReadJpegPixels(source, &box, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        return ReadExiv2Metadata(source, metadata);
    }

    bool WritesGeneratedRows() const override { return true; }

    Status Write(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink) const override
    {
        return WriteJpeg(bitmap, options, sink);
    }
};

} // namespace

const Codec &JpegCodec()
{
    static const Jpeg codec;
    return codec;
}

void FailJpeg(j_common_ptr cinfo)
{
    auto *error = reinterpret_cast<JpegError *>(cinfo->err);
    cinfo->err->format_message(cinfo, error->text);
    error->code = cinfo->err->msg_code;
    std::longjmp(error->out, 1);
}

jpeg_error_mgr *StartJpegError(JpegError *error)
{
    jpeg_std_error(&error->base);
    error->base.error_exit = FailJpeg;
    error->base.emit_message = [](j_common_ptr, int) {};
    error->base.output_message = [](j_common_ptr) {};
    return &error->base;
}

} // namespace imagefile
