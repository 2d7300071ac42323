#include "core/byte_reader.h"
#include "core/iso_boxes.h"
#include "core/limits.h"
#include "jp2_codec.h"

#include <algorithm>
#include <vector>

namespace imagefile {

namespace {

// Markers of ITU-T T.800, table A.2.
constexpr std::uint64_t kSize = 0xFF51, kCoding = 0xFF52, kComponentCoding = 0xFF53, kTilePart = 0xFF90, kData = 0xFF93,
                        kEnd = 0xFFD9;

/// Minimum size of a tile part's headers: SOT and SOD.
constexpr std::uint64_t kTileBytes = 14;

Status Damaged(const char *what)
{
    return Status::Fail(GFL_ERROR_FILE_READ, Text("JPEG 2000: %s", what));
}

Status Unsupported(const char *what)
{
    return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, Text("JPEG 2000: %s not supported", what));
}

std::uint64_t DivideRoundingUp(std::uint64_t value, std::uint64_t by)
{
    return (value + by - 1) / by;
}

/// Reader of a codestream's headers. Counts precincts: each takes at least a byte of the file, and OpenJPEG allocates
/// about 200 bytes for it.
class StreamHeaders {
public:
    StreamHeaders(const Source &source, Jp2Layout *layout) : m_source(source), m_layout(layout) { }

    Status Read()
    {
        ByteReader reader(m_source, m_layout->streamAt);
        if (reader.Number(2) != 0xFF4F || reader.Number(2) != kSize)
            return Damaged("the codestream doesn't begin with its size");
        if (Status status = ReadSize(&reader); !status)
            return status;
        std::uint64_t end = 0;
        if (Status status = ReadSegments(reader.Position(), /*tiles=*/m_tiles, &end); !status)
            return status;
        while (end < m_source.Size()) { // of the main header or a tile part; the next tile part begins there
            ByteReader part(m_source, end);
            const std::uint64_t marker = part.Number(2);
            if (marker != kTilePart)
                return Status::Ok(); // the end, or damage that OpenJPEG finds
            part.Skip(4);
            const std::uint64_t length = part.Number(4);
            std::uint64_t data = 0;
            if (Status status = ReadSegments(end + 12, 1, &data); !status)
                return status;
            if (length < kTileBytes - 2) // 0: extends to the end of the file
                return Status::Ok();
            end += length;
        }
        return Status::Ok();
    }

private:
    Status ReadSize(ByteReader *reader)
    {
        reader->Skip(4); // length, capabilities
        const std::uint64_t x1 = reader->Number(4), y1 = reader->Number(4);
        const std::uint64_t x0 = reader->Number(4), y0 = reader->Number(4);
        m_tileWidth = reader->Number(4);
        m_tileHeight = reader->Number(4);
        const std::uint64_t tileX0 = reader->Number(4), tileY0 = reader->Number(4);
        const std::uint64_t components = reader->Number(2);
        if (reader->Failed())
            return Damaged("the size is incomplete");
        if (components < 1 || components > 4)
            return Unsupported("pictures without 1 to 4 components are");
        int bits = 1;
        for (std::uint64_t i = 0; i < components; ++i) {
            bits = std::max(bits, (reader->Byte() & 0x7F) + 1);
            const int stepX = reader->Byte(), stepY = reader->Byte();
            if (reader->Failed())
                return Damaged("the size is incomplete");
            if (stepX != 1 || stepY != 1)
                return Unsupported("subsampled components are");
        }
        if (x1 <= x0 || y1 <= y0 || m_tileWidth == 0 || m_tileHeight == 0 || tileX0 > x0 || tileY0 > y0)
            return Damaged("the size is damaged");
        if (bits > 16)
            return Unsupported("components of more than 16 bits are");
        m_tiles = DivideRoundingUp(x1 - tileX0, m_tileWidth) * DivideRoundingUp(y1 - tileY0, m_tileHeight); // < 2^64
        if (DivideRoundingUp(x1 - tileX0, m_tileWidth) > m_source.Size() || m_tiles > m_source.Size() / kTileBytes)
            return Damaged("the file is too short for its tiles");
        m_tileWidth = std::min(m_tileWidth, x1 - x0);
        m_tileHeight = std::min(m_tileHeight, y1 - y0);
        m_layout->components = static_cast<int>(components);
        m_layout->bits = bits;
        const auto width = static_cast<std::int64_t>(x1 - x0), height = static_cast<std::int64_t>(y1 - y0);
        if (Status status = CheckImageSize(width, height, 4, 16); !status)
            return status;
        m_layout->width = static_cast<int>(width);
        m_layout->height = static_cast<int>(height);
        constexpr std::int64_t kDecodedBytes = 4; // OpenJPEG's samples
        const std::int64_t stored = width * height * m_layout->components * kDecodedBytes;
        return CheckClaim(stored, stored, m_source.Size(), kUnboundedRatio);
    }

    /// Reads marker segments from @p at up to the next tile part or the data, and sets @p end to that position.
    /// The segments apply to @p tiles tiles.
    Status ReadSegments(std::uint64_t at, std::uint64_t tiles, std::uint64_t *end)
    {
        for (;;) {
            ByteReader reader(m_source, at);
            const std::uint64_t marker = reader.Number(2);
            *end = at;
            if (marker == kTilePart || marker == kData || marker == kEnd)
                return Status::Ok();
            const std::uint64_t length = reader.Number(2);
            if (reader.Failed() || length < 2 || marker < 0xFF00)
                return Damaged("the headers end early");
            if (marker == kCoding || marker == kComponentCoding) {
                if (Status status = CountPrecincts(&reader, marker == kComponentCoding, tiles); !status)
                    return status;
            }
            at += 2 + length;
        }
    }

    /// Counts precincts as specified in T.800, tables A.12 to A.23. @p reader is positioned after the segment's length.
    Status CountPrecincts(ByteReader *reader, bool ofComponent, std::uint64_t tiles)
    {
        if (ofComponent)
            reader->Skip(1); // the component's number: one byte, because there are at most 4 components
        const bool hasSizes = (reader->Byte() & 1) != 0;
        if (!ofComponent)
            reader->Skip(4); // progression, layers, transform of components
        const int levels = reader->Byte();
        reader->Skip(4); // code blocks, wavelet
        if (reader->Failed() || levels > 32)
            return Damaged("the coding style is damaged");
        std::uint64_t count = 0;
        for (int resolution = 0; resolution <= levels; ++resolution) {
            const unsigned sizes = hasSizes ? reader->Byte() : 0xFF;
            const int reduced = std::min(levels - resolution, 30);
            // Plus one, because a tile may begin inside a precinct.
            const auto countAlong = [&](std::uint64_t side, unsigned exponent) {
                return DivideRoundingUp(DivideRoundingUp(side, std::uint64_t(1) << reduced),
                                        std::uint64_t(1) << exponent)
                    + 1;
            };
            count += countAlong(m_tileWidth, sizes & 0xF) * countAlong(m_tileHeight, sizes >> 4); // <= 2^41 each
        }
        const auto components = static_cast<std::uint64_t>(ofComponent ? 1 : m_layout->components);
        // The count may be 4 times too high, and tile headers may repeat the precincts of the main header.
        const std::uint64_t limit = std::max<std::uint64_t>(kHarmlessPrecincts, 8 * m_source.Size());
        if (count * components > (limit - m_precincts) / tiles)
            return Damaged("the file is too short for its precincts");
        m_precincts += count * components * tiles;
        return Status::Ok();
    }

    const Source &m_source;
    Jp2Layout *m_layout;
    std::uint64_t m_tileWidth = 0, m_tileHeight = 0, m_tiles = 1;
    std::uint64_t m_precincts = 0;
};

/// Reads the color information in the boxes of a JP2 file (T.800, I.5.3).
Status ReadColors(const Source &source, const IsoBox &header, Jp2Layout *layout)
{
    constexpr std::uint64_t kSrgb = 16, kGray = 17, kEnumerated = 1, kOpacity = 1;
    const std::vector<IsoBox> boxes = IsoBoxesIn(source, header.begin, header.end);
    if (!FindIsoBox(boxes, "pclr").Is(""))
        return Unsupported("palettes are");
    if (const IsoBox box = FindIsoBox(boxes, "colr"); !box.Is("")) {
        ByteReader reader(source, box.begin);
        const bool isEnumerated = reader.Byte() == kEnumerated;
        reader.Skip(2); // precedence, approximation
        const std::uint64_t space = isEnumerated ? reader.Number(4) : 0;
        if (isEnumerated && space != kSrgb && space != kGray)
            return Unsupported("colors other than gray and RGB are");
    }
    const IsoBox channels = FindIsoBox(boxes, "cdef");
    ByteReader reader(source, channels.begin);
    const std::uint64_t count = channels.Is("") ? 0 : reader.Number(2);
    for (std::uint64_t i = 0; i < count && !reader.Failed(); ++i) {
        const std::uint64_t number = reader.Number(2), type = reader.Number(2);
        reader.Skip(2); // the associated color
        if (type == kOpacity && number + 1 == static_cast<std::uint64_t>(layout->components))
            layout->hasAlpha = true;
        else if (type != 0)
            return Unsupported("components other than colors and opacity are");
    }
    return Status::Ok();
}

} // namespace

Status ReadJp2Layout(const Source &source, Jp2Layout *layout)
{
    std::uint8_t first = 0;
    layout->isBoxed = source.ReadAt(0, &first, 1) == 1 && first == 0;
    IsoBox header;
    if (layout->isBoxed) {
        const std::vector<IsoBox> boxes = IsoBoxesIn(source, 0, source.Size());
        header = FindIsoBox(boxes, "jp2h");
        const IsoBox stream = FindIsoBox(boxes, "jp2c");
        if (header.Is("") || stream.Is(""))
            return Damaged("no header, or no codestream");
        layout->streamAt = stream.begin;
    }
    if (Status status = StreamHeaders(source, layout).Read(); !status)
        return status;
    if (layout->isBoxed) {
        if (Status status = ReadColors(source, header, layout); !status)
            return status;
    }
    const int colors = layout->components - (layout->hasAlpha ? 1 : 0);
    return colors == 1 || colors == 3 ? Status::Ok() : Unsupported("components of unknown meaning are");
}

} // namespace imagefile
