// Based on G. Ward, "The RADIANCE Picture File Format", and "Real Pixels", Graphics Gems II.
#include "core/byte_reader.h"
#include "core/image_limits.h"
#include "hdr_codec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace imagefile {

namespace {

Status Damaged(const std::string &why)
{
    return Status::Fail(GFL_ERROR_FILE_READ, "Radiance HDR: " + why);
}

/// Contents of the header. Scanlines are rows from the top, unless the axes specify otherwise.
struct HdrLayout {
    int width = 0;
    int height = 0;
    bool byColumns = false;  // a scanline is a column
    bool fromRight = false;  // x is reversed
    bool fromBottom = false; // y is reversed
    double exposure = 1.0;   // factor already applied to the stored values

    int Scanlines() const { return byColumns ? width : height; }
    int Length() const { return byColumns ? height : width; }
};

// Reads a line without its line feed; false at the end of the file or past the header's maximum size.
bool ReadLine(ByteReader *reader, std::string *line)
{
    line->clear();
    for (char c; reader->Position() < kMaxHdrHeaderBytes; line->push_back(c)) {
        c = static_cast<char>(reader->Byte());
        if (reader->Failed())
            return false;
        if (c == '\n')
            return true;
    }
    return false;
}

// Parses "EXPOSURE= 2.5". The factors of several lines are multiplied; values that can't be a factor are skipped.
void TakeExposure(const std::string &value, HdrLayout *layout)
{
    const std::size_t begin = value.find_first_not_of(" \t+");
    float factor = 0.0f;
    if (begin != std::string::npos)
        std::from_chars(value.data() + begin, value.data() + value.size(), factor);
    if (factor > 0.0f && std::isfinite(factor) && std::isnormal(layout->exposure * static_cast<double>(factor)))
        layout->exposure *= static_cast<double>(factor);
}

Status TakeHeaderLine(const std::string &line, HdrLayout *layout)
{
    constexpr char kFormat[] = "FORMAT=", kExposure[] = "EXPOSURE=";
    if (line.rfind(kFormat, 0) == 0 && line.find("32-bit_rle_rgbe") == std::string::npos)
        return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT,
                            "Radiance HDR: pixels of " + line + "; only FORMAT=32-bit_rle_rgbe is supported");
    if (line.rfind(kExposure, 0) == 0)
        TakeExposure(line.substr(sizeof kExposure - 1), layout);
    return Status::Ok();
}

// Parses "-Y 480 +X 640": the axis that varies more slowly comes first. The y axis points up, so -Y means top down.
Status TakeAxes(const std::string &line, HdrLayout *layout)
{
    char sign[2] = {}, axis[2] = {};
    int size[2] = {};
    if (std::sscanf(line.c_str(), "%c%c %9d %c%c %9d", &sign[0], &axis[0], &size[0], &sign[1], &axis[1], &size[1]) != 6)
        return Damaged("no line with the size of the picture");
    const bool isFixed = (sign[0] == '+' || sign[0] == '-') && (sign[1] == '+' || sign[1] == '-');
    const bool areAxes = (axis[0] == 'X' && axis[1] == 'Y') || (axis[0] == 'Y' && axis[1] == 'X');
    if (!isFixed || !areAxes)
        return Damaged("invalid axes: " + line.substr(0, 40));
    const int x = axis[0] == 'X' ? 0 : 1, y = 1 - x;
    layout->byColumns = x == 0;
    layout->width = size[x];
    layout->height = size[y];
    layout->fromRight = sign[x] == '-';
    layout->fromBottom = sign[y] == '+';
    return Status::Ok();
}

Status CheckSize(const Source &source, const HdrLayout &layout)
{
    if (Status status = CheckImageSize(layout.width, layout.height, 3, 32); !status)
        return status;
    const std::int64_t pixels = std::int64_t(layout.width) * layout.height;
    return CheckClaim(pixels * static_cast<int>(kRgbeBytes), pixels * 12, source.Size(), kUnboundedRatio);
}

Status ReadHeader(const Source &source, ByteReader *reader, HdrLayout *layout)
{
    std::string line;
    do {
        if (!ReadLine(reader, &line))
            return Damaged("the header doesn't end");
        if (Status status = TakeHeaderLine(line, layout); !status)
            return status;
    } while (!line.empty());
    if (!ReadLine(reader, &line))
        return Damaged("the header doesn't end");
    if (Status status = TakeAxes(line, layout); !status)
        return status;
    return CheckSize(source, *layout);
}

/// Reads pixels one by one. A pixel with mantissas 1, 1, 1 repeats the previous one; its exponent is the count. In a
/// sequence of such pixels, the counts are multiplied by 1, 256 and 65,536. @p first: number of bytes of the first
/// pixel that are already in @p rgbe.
Status ReadPlain(ByteReader *reader, std::uint8_t *rgbe, std::size_t length, std::size_t first)
{
    std::size_t x = 0;
    for (int shift = 0; x < length;) {
        std::uint8_t *pixel = rgbe + x * kRgbeBytes;
        if (!reader->Read(pixel + first, kRgbeBytes - first))
            return Damaged("the file ends early");
        first = 0;
        if (pixel[0] != 1 || pixel[1] != 1 || pixel[2] != 1) {
            shift = 0;
            ++x;
            continue;
        }
        const std::size_t count = std::size_t(pixel[3]) << shift; // shift <= 24
        if (x == 0 || shift > 16 || count > length - x)
            return Damaged("a run is longer than its row");
        for (const std::size_t end = x + count; x < end; ++x)
            std::memcpy(rgbe + x * kRgbeBytes, rgbe + (x - 1) * kRgbeBytes, kRgbeBytes);
        shift += 8;
    }
    return Status::Ok();
}

/// Reads one of the four channels of a packed row. A code n above 128 stands for n - 128 copies of the next byte; any
/// other code n is followed by n literal bytes.
Status ReadPackedChannel(ByteReader *reader, std::uint8_t *channel, std::size_t length)
{
    for (std::size_t x = 0; x < length;) {
        const std::size_t code = reader->Byte();
        const bool isRun = code > 128;
        const std::size_t count = isRun ? code - 128 : code;
        if (count == 0 || count > length - x)
            return Damaged(reader->Failed() ? "the file ends early" : "a run is longer than its row");
        const std::uint8_t value = isRun ? reader->Byte() : std::uint8_t(0);
        for (const std::size_t end = x + count; x < end; ++x)
            channel[x * kRgbeBytes] = isRun ? value : reader->Byte();
    }
    return reader->Failed() ? Damaged("the file ends early") : Status::Ok();
}

Status ReadScanline(ByteReader *reader, std::uint8_t *rgbe, int length)
{
    const auto count = static_cast<std::size_t>(length);
    if (length < kMinPackedWidth || length > kMaxPackedWidth)
        return ReadPlain(reader, rgbe, count, 0);
    std::uint8_t mark[kRgbeBytes];
    if (!reader->Read(mark, sizeof mark))
        return Damaged("the file ends early");
    if (mark[0] != 2 || mark[1] != 2 || mark[2] > 127) {
        std::memcpy(rgbe, mark, sizeof mark);
        return ReadPlain(reader, rgbe, count, sizeof mark);
    }
    if ((mark[2] << 8 | mark[3]) != length)
        return Damaged("a row has the wrong length");
    for (std::size_t c = 0; c < kRgbeBytes; ++c)
        if (Status status = ReadPackedChannel(reader, rgbe + c, count); !status)
            return status;
    return Status::Ok();
}

/// Converter of pixels to floats.
class Scale {
public:
    explicit Scale(double exposure)
    {
        constexpr double kGreatest = 1e36; // times 255 is still finite
        for (int e = 1; e < 256; ++e)
            m_units[static_cast<std::size_t>(e)] =
                static_cast<float>(std::min(std::ldexp(1.0, e - 136) / exposure, kGreatest));
    }

    void Row(const std::uint8_t *rgbe, int width, std::ptrdiff_t step, float *row) const
    {
        for (int x = 0; x < width; ++x, row += 3) {
            const std::uint8_t *pixel = rgbe + x * step * static_cast<std::ptrdiff_t>(kRgbeBytes);
            for (int c = 0; c < 3; ++c)
                row[c] = static_cast<float>(pixel[c]) * m_units[pixel[3]];
        }
    }

private:
    std::array<float, 256> m_units = {}; // by exponent
};

/// Reads rows in file order, from left to right or reversed.
Status ReadInOrder(ByteReader *reader, const HdrLayout &layout, const Scale &scale, RowSink *rows)
{
    const auto width = static_cast<std::size_t>(layout.width);
    std::vector<std::uint8_t> rgbe(width * kRgbeBytes);
    const std::uint8_t *first = rgbe.data() + (layout.fromRight ? (width - 1) * kRgbeBytes : 0);
    for (int y = 0; y < layout.height; ++y) {
        if (Status status = ReadScanline(reader, rgbe.data(), layout.width); !status)
            return status;
        scale.Row(first, layout.width, layout.fromRight ? -1 : 1, reinterpret_cast<float *>(rows->Row(y)));
        rows->Done(y);
    }
    return Status::Ok();
}

/// Reads scanlines in any other order: keeps the picture in memory at four bytes per pixel, a third of the delivered
/// size.
Status ReadTurned(ByteReader *reader, const HdrLayout &layout, const Scale &scale, RowSink *rows)
{
    const auto length = static_cast<std::size_t>(layout.Length());
    const auto scanlines = static_cast<std::size_t>(layout.Scanlines());
    std::vector<std::uint8_t> rgbe(scanlines * length * kRgbeBytes);
    for (std::size_t i = 0; i < scanlines; ++i)
        if (Status status = ReadScanline(reader, rgbe.data() + i * length * kRgbeBytes, layout.Length()); !status)
            return status;
    const int xStep = (layout.byColumns ? layout.Length() : 1) * (layout.fromRight ? -1 : 1);
    for (int y = 0; y < layout.height; ++y) {
        const auto line = static_cast<std::size_t>(layout.fromBottom ? layout.height - 1 - y : y);
        const std::size_t x = layout.fromRight ? static_cast<std::size_t>(layout.width) - 1 : 0;
        const std::size_t at = layout.byColumns ? x * length + line : line * length + x;
        scale.Row(rgbe.data() + at * kRgbeBytes, layout.width, xStep, reinterpret_cast<float *>(rows->Row(y)));
        rows->Done(y);
    }
    return Status::Ok();
}

} // namespace

Status ReadHdrInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    ByteReader reader(source);
    HdrLayout layout;
    if (Status status = ReadHeader(source, &reader, &layout); !status)
        return status;
    std::snprintf(info->Description, sizeof info->Description, "Radiance HDR");
    info->Width = layout.width;
    info->Height = layout.height;
    info->BitsPerComponent = 32;
    info->ComponentsPerPixel = 3;
    info->ColorModel = GFL_CM_RGB;
    return Status::Ok();
}

Status ReadHdrPixels(const Source &source, RowSink *rows)
{
    ByteReader reader(source);
    HdrLayout layout;
    if (Status status = ReadHeader(source, &reader, &layout); !status)
        return status;
    if (Status status = rows->Start(layout.width, layout.height, {32, 3}); !status)
        return status;
    const Scale scale(layout.exposure);
    return layout.byColumns || layout.fromBottom ? ReadTurned(&reader, layout, scale, rows)
                                                 : ReadInOrder(&reader, layout, scale, rows);
}

} // namespace imagefile
