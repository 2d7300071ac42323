// JPEG XL codec, using libjxl. See jxl_file.cpp for header and pixels, jxl_metadata.cpp for metadata.
#include "jxl_codec.h"

#include <cstring>

namespace imagefile {

namespace {

class Jxl : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return std::memcmp(head, "\xff\x0a", 2) == 0 || std::memcmp(head, "\0\0\0\x0cJXL \r\n\x87\n", 12) == 0;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        JxlFile file;
        if (Status status = file.Open(source); !status)
            return status;
        file.Describe(info);
        return Status::Ok();
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        JxlFile file;
        Status status = file.Open(source);
        return status ? file.ReadPixels(rows) : status;
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        JxlFile file;
        if (file.Open(source)) // a failure is reported when the pixels are read
            file.ReadMetadata(metadata);
        return source.Check();
    }

    Status Write(const GFL_BITMAP &, const SaveOptions &, Sink *) const override
    {
        return Status::Fail(GFL_ERROR_BAD_FORMAT_INDEX, "JPEG XL files can't be written");
    }
};

} // namespace

const Codec &JxlCodec()
{
    static const Jxl codec;
    return codec;
}

} // namespace imagefile
