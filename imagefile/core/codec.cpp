#include "codec.h"

#include <algorithm>
#include <cctype>

namespace imagefile {

namespace {

using Factory = const Codec &(*)();

// In the order of the format indexes, which are only valid within one process. A format is added by its line here; raw
// files stand first because some begin as TIFF.
constexpr Factory kCodecs[] = {
    RawCodec, TiffCodec, JpegCodec, PngCodec, HdrCodec, PsdCodec, ExrCodec,
};

// "tiff, jpeg"
std::string KnownFormats()
{
    std::string names;
    for (const Factory codec : kCodecs)
        names += (names.empty() ? "" : ", ") + std::string(codec().Name());
    return names;
}

} // namespace

Status RowMaker::Make(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine) const
{
    const int error = callback(firstRow, rows, data, bytesPerLine, userData);
    return error == GFL_NO_ERROR
        ? Status::Ok()
        : Status::Fail(static_cast<GflError>(error), Text("rows from %d on could not be made", firstRow));
}

const Codec *CodecAt(std::int32_t index)
{
    const auto count = static_cast<std::int32_t>(std::size(kCodecs));
    return index >= 0 && index < count ? &kCodecs[index]() : nullptr;
}

Status FindCodec(const Source &source, const Codec **codec, std::int32_t *index)
{
    std::uint8_t head[16] = {};
    const std::size_t count = source.ReadAt(0, head, sizeof head);
    if (Status status = source.Check(); !status)
        return status;
    if (count == 0)
        return Status::Fail(GFL_ERROR_FILE_READ, source.Path() + " is empty");
    const std::string suffix = LowerCaseSuffix(source.Path());
    for (*index = 0; (*codec = CodecAt(*index)) != nullptr; ++*index)
        if ((*codec)->Probe(head, suffix) && (*codec)->Recognises(source))
            return Status::Ok();
    return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT,
                        source.Path() + " is of no known format; known are " + KnownFormats());
}

std::string LowerCaseSuffix(const std::string &path)
{
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/')
        return std::string();
    std::string suffix = path.substr(dot);
    std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return suffix;
}

} // namespace imagefile
