// JPEG 2000 codec, using OpenJPEG. See jp2_layout.cpp for the headers, jp2_read.cpp for the pixels.
#include "jp2_codec.h"

#include "core/iso_boxes.h"
#include "metadata/metadata.h"

#include <cstring>

namespace imagefile {

namespace {

/// Returns the IPTC data sets in the box that Exiv2 and ExifTool use for them; empty if there is none.
Bytes ReadIptc(const Source &source)
{
    constexpr std::uint8_t kName[] = {0x33, 0xC7, 0xA4, 0xD2, 0xB8, 0x1D, 0x47, 0x23,
                                      0xA0, 0xBA, 0xF1, 0xA3, 0xE0, 0x97, 0xAD, 0x38};
    for (const IsoBox &box : IsoBoxesIn(source, 0, source.Size())) {
        std::uint8_t name[sizeof kName] = {};
        if (box.Is("uuid") && box.isComplete && box.end - box.begin >= sizeof name
            && source.ReadAt(box.begin, name, sizeof name) == sizeof name && std::memcmp(name, kName, sizeof name) == 0)
            return ReadMetadataBlock(source, box.begin + sizeof name, box.end - box.begin - sizeof name);
    }
    return Bytes();
}

class Jp2 : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return std::memcmp(head, "\0\0\0\x0CjP  \r\n\x87\n", 12) == 0 || std::memcmp(head, "\xFF\x4F\xFF\x51", 4) == 0;
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        return ReadJp2Info(source, info);
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        return ReadJp2Pixels(source, rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        Status status = ReadExiv2Metadata(source, metadata);
        if (status)
            metadata->iptc = ReadIptc(source);
        return status ? source.Check() : status;
    }

    Status Write(const GFL_BITMAP &, const SaveOptions &, Sink *) const override
    {
        return Status::Fail(GFL_ERROR_BAD_FORMAT_INDEX, "JPEG 2000 files can't be written");
    }
};

} // namespace

const Codec &Jp2Codec()
{
    static const Jp2 codec;
    return codec;
}

} // namespace imagefile
