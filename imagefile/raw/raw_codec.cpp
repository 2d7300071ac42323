// Camera raw codec, using LibRaw. See raw_file.cpp for decoding.
#include "raw_codec.h"

#include "raw_facts.h"

#include "metadata/metadata.h"

#include "core/limits.h"
#include "tiff/tiff_handle.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

// Signatures of raw formats that don't begin with a standard TIFF header: offset and text.
struct Mark {
    std::size_t at;
    const char *text;
};
constexpr Mark kMarks[] = {
    {0, "FUJIFILMCCD-RAW"}, {6, "HEAPCCDR"}, {4, "ftypcrx "}, {0, "IIRO"}, {0, "IIRS"}, {0, "MMOR"}, {0, "FOVb"}};

bool Begins(const std::uint8_t *head, const Mark &mark)
{
    return std::memcmp(head + mark.at, mark.text, std::strlen(mark.text)) == 0;
}

bool IsTiffHead(const std::uint8_t *head)
{
    return (std::memcmp(head, "II*\0", 4) == 0) || (std::memcmp(head, "MM\0*", 4) == 0);
}

// Returns whether a file is a Canon CR2, which is a TIFF with a marker after the header.
bool IsCanonHead(const std::uint8_t *head)
{
    return std::memcmp(head + 8, "CR\x02", 3) == 0;
}

bool IsSensorDirectory(const TiffHandle &handle)
{
    constexpr std::uint16_t kCfa = 32803, kLinearRaw = 34892;
    const auto photometric = handle.Field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    return photometric == kCfa || photometric == kLinearRaw;
}

class Raw : public Codec {
public:
    bool Probe(const std::uint8_t *head, const NameHint &name) const override
    {
        if (std::any_of(std::begin(kMarks), std::end(kMarks), [&](const Mark &mark) { return Begins(head, mark); })
            || IsTiffHead(head) || std::memcmp(head, "\0MRM", 4) == 0 || std::memcmp(head, "IIU\0", 4) == 0)
            return true;
        const bool hasByteOrder = std::memcmp(head, "II", 2) == 0 || std::memcmp(head, "MM", 2) == 0;
        return hasByteOrder && name.isOwnSuffix;
    }

    // Files with a plain TIFF header are raw if they have a raw suffix other than ".dng" or contain sensor values.
    bool Recognizes(const Source &source, const NameHint &name) const override
    {
        std::uint8_t head[16] = {};
        source.ReadAt(0, head, sizeof head);
        if (!IsTiffHead(head) || IsCanonHead(head))
            return true;
        return (name.isOwnSuffix && name.suffix != ".dng") || HoldsSensorValues(source);
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        RawFile file;
        Status status = file.Open(source);
        return status ? file.Describe(info) : status;
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &params, RowSink *rows) const override
    {
        RawFile file;
        Status status = file.Open(source);
        return status ? file.Develop(params, RawFile::Size::Full, rows) : status;
    }

    Status ReadThumbnail(const Source &source, const GFL_LOAD_PARAMS &params, const Box &box,
                         RowSink *rows) const override
    {
        RawFile file;
        if (Status status = file.Open(source); !status)
            return status;
        Status status = file.ReadPreview(box, rows);
        return status ? status : file.Develop(params, file.SizeFor(box), rows);
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        const Status status = ReadExiv2Metadata(source, metadata);
        if (status && metadata->exif.empty())
            metadata->exif = ReadRawFacts(source).exif;
        return status;
    }

    Status Write(const GFL_BITMAP &, const SaveOptions &, Sink *) const override
    {
        return Status::Fail(GFL_ERROR_BAD_FORMAT_INDEX, "camera raw files can't be written");
    }
};

} // namespace

const Codec &RawCodec()
{
    static const Raw codec;
    return codec;
}

bool HoldsSensorValues(const Source &source)
{
    TiffHandle handle;
    if (!handle.OpenForReading(source))
        return false;
    std::uint16_t count = 0;
    const std::uint64_t *offsets = nullptr;
    std::vector<std::uint64_t> below;
    if (TIFFGetField(handle.Get(), TIFFTAG_SUBIFD, &count, &offsets))
        below.assign(offsets, offsets + std::min<std::size_t>(count, kMaxRawDirectories));
    return IsSensorDirectory(handle) || std::any_of(below.begin(), below.end(), [&handle](std::uint64_t offset) {
               return handle.OpenAt(offset) && IsSensorDirectory(handle);
           });
}

} // namespace imagefile
