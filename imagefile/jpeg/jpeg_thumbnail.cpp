#include "core/bytes.h"
#include "core/limits.h"
#include "jpeg_codec.h"

#include <cstring>

namespace imagefile {

namespace {

// The TIFF block in an APP1 segment, in either byte order. Numbers that extend past the end read as 0.
class ExifBlock {
public:
    explicit ExifBlock(Bytes bytes)
        : m_bytes(std::move(bytes)), m_isBigEndian(!m_bytes.empty() && m_bytes[0] == 'M') { }

    std::size_t Number(std::size_t at, std::size_t count) const
    {
        if (m_bytes.size() < count || at > m_bytes.size() - count)
            return 0;
        std::size_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value |= std::size_t(m_bytes[at + i]) << 8 * (m_isBigEndian ? count - 1 - i : i);
        return value;
    }
    /// Returns the value of a numeric field in the second directory, which describes the thumbnail; 0 if it is missing.
    std::size_t Value(std::uint16_t tag) const
    {
        constexpr std::size_t kField = 12, kCount = 2;
        const std::size_t first = Number(4, 4);
        const std::size_t second = Number(first + kCount + kField * Number(first, kCount), 4);
        for (std::size_t i = 0; second != 0 && i < Number(second, kCount); ++i) {
            const std::size_t field = second + kCount + kField * i;
            if (Number(field, 2) == tag)
                return Number(field + 8, Number(field + 2, 2) == 3 ? 2 : 4); // SHORT or LONG
        }
        return 0;
    }
    /// Returns a part of the block; empty if it extends past the end.
    Source Range(std::size_t at, std::size_t length) const
    {
        const bool fits = at <= m_bytes.size() && length <= m_bytes.size() - at;
        return fits ? Source(m_bytes.data() + at, length) : Source();
    }

private:
    const Bytes m_bytes;
    const bool m_isBigEndian;
};

// Finds the EXIF data, which is in the first segment of a file or follows the JFIF segment.
Bytes FindExif(const Source &source)
{
    constexpr std::size_t kHead = 10; // 0xFF, marker, length including its own two bytes, "Exif", two zeros
    std::uint8_t head[kHead];
    std::uint64_t at = 2;
    for (int i = 0; i < kMaxSegmentsBeforeExif && source.ReadAt(at, head, kHead) == kHead && head[0] == 0xFF; ++i) {
        const std::size_t length = head[2] * std::size_t(256) + head[3];
        if (head[1] == JPEG_APP0 + 1 && length > kHead - 2 && std::memcmp(head + 4, "Exif\0\0", 6) == 0) {
            Bytes bytes(length - (kHead - 2));
            bytes.resize(source.ReadAt(at + kHead, bytes.data(), bytes.size()));
            return bytes;
        }
        at += 2 + length;
    }
    return {};
}

} // namespace

Status ReadExifThumbnail(const Source &source, const Box &box, RowSink *rows)
{
    constexpr std::uint16_t kOffset = 513, kLength = 514; // JPEGInterchangeFormat, JPEGInterchangeFormatLength
    const Status none = Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, "JPEG: no thumbnail of the requested size");
    const ExifBlock exif(FindExif(source));
    const Source thumbnail = exif.Range(exif.Value(kOffset), exif.Value(kLength));
    if (thumbnail.Size() == 0)
        return none;
    GFL_FILE_INFORMATION small = {}, large = {};
    if (Status status = ReadJpegInfo(thumbnail, &small); !status)
        return status;
    if (Status status = ReadJpegInfo(source, &large); !status)
        return status;
    if (!CanReplace({large.Width, large.Height}, {small.Width, small.Height}, box))
        return none;
    return ReadJpegPixels(thumbnail, &box, rows);
}

} // namespace imagefile
