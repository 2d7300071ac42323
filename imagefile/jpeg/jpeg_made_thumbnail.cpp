#include "jpeg_made_thumbnail.h"

#include "jpeg_codec.h"

#include <algorithm>

namespace imagefile {

namespace {

constexpr int kSide = 160;                    // pixels of the longer side; 160 x 120 in Exif 2.3 and DCF 2.0
constexpr std::size_t kRoomBytes = 16 * 1024; // for the thumbnail: even 160 x 160 pixels of noise fit at low quality
constexpr std::size_t kSignatureBytes = 6;    // "Exif" and two zeros, before the TIFF block
constexpr std::uint16_t kQualities[] = {80, 60, 40, 20};

struct Field {
    std::uint16_t tag, type;
    std::uint32_t value;
};

enum : std::uint16_t { kShort = 3, kLong = 4, kRational = 5 };
constexpr std::size_t kFields = 6, kFieldBytes = 12;
constexpr std::size_t kRationalsAt = 2 + kFields * kFieldBytes + 4; // after the directory
constexpr std::size_t kJpegAt = kRationalsAt + 2 * 8;

void Add(std::uint64_t value, int bytes, Bytes *to)
{
    for (int i = 0; i < bytes; ++i)
        to->push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::size_t NumberAt(const Bytes &block, std::size_t at, std::size_t bytes)
{
    std::size_t value = 0;
    for (std::size_t i = 0; i < bytes && at + i < block.size(); ++i)
        value |= std::size_t(block[at + i]) << (8 * i);
    return value;
}

/// Returns a thumbnail's directory (Exif 2.3, 4.6.9) that will be at offset @p at, followed by its rational numbers.
Bytes DirectoryAt(std::size_t at, std::size_t jpegBytes)
{
    constexpr std::uint32_t kDpi = 72, kInch = 2, kJpegCompression = 6;
    const Field fields[kFields] = {
        {259, kShort, kJpegCompression},
        {282, kRational, static_cast<std::uint32_t>(at + kRationalsAt)},
        {283, kRational, static_cast<std::uint32_t>(at + kRationalsAt + 8)},
        {296, kShort, kInch},
        {513, kLong, static_cast<std::uint32_t>(at + kJpegAt)},
        {514, kLong, static_cast<std::uint32_t>(jpegBytes)},
    };
    Bytes bytes;
    Add(kFields, 2, &bytes);
    for (const Field &field : fields) {
        Add(field.tag, 2, &bytes);
        Add(field.type, 2, &bytes);
        Add(1, 4, &bytes);
        Add(field.value, 4, &bytes);
    }
    Add(0, 4, &bytes); // no next directory
    for (int i = 0; i < 2; ++i) {
        Add(kDpi, 4, &bytes);
        Add(1, 4, &bytes);
    }
    return bytes;
}

} // namespace

MadeThumbnail::MadeThumbnail() : m_rows(m_params, {kSide, kSide}) { }

Status MadeThumbnail::Start(int width, int height, int channels)
{
    m_rowBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(channels);
    return m_rows.Start(width, height, {8, channels});
}

void MadeThumbnail::AddRow(const std::uint8_t *row)
{
    std::copy(row, row + m_rowBytes, m_rows.Row(m_next));
    m_rows.Done(m_next++);
}

Status MadeThumbnail::Encode(std::size_t maxBytes, Bytes *jpeg)
{
    const Owned<GFL_BITMAP> bitmap(m_rows.Take(), gflFreeBitmap);
    for (const std::uint16_t quality : kQualities) {
        SaveOptions options;
        options.quality = quality;
        MemorySink sink;
        if (Status status = WriteJpeg(*bitmap, options, &sink); !status)
            return status;
        if (sink.Size() > maxBytes)
            continue;
        jpeg->resize(sink.Size());
        std::size_t count = 0;
        return sink.ReadAt(0, jpeg->data(), jpeg->size(), &count);
    }
    return Status::Ok();
}

void ThumbnailRoom::Append(std::size_t maxBytes, Bytes *tiff)
{
    constexpr std::size_t kHeaderBytes = 8;
    const std::size_t directoryAt = (tiff->size() + 1) & ~std::size_t(1);
    if (tiff->size() < kHeaderBytes || directoryAt + kJpegAt + kRoomBytes > maxBytes)
        return;
    const std::size_t first = NumberAt(*tiff, 4, 4); // the only directory but for those it points to
    m_pointerAt = first + 2 + NumberAt(*tiff, first, 2) * kFieldBytes;
    m_directoryAt = directoryAt;
    tiff->resize(directoryAt + kJpegAt + kRoomBytes);
}

Status ThumbnailRoom::Fill(MadeThumbnail &thumbnail, std::uint64_t exifAt, Sink *sink) const
{
    Bytes jpeg;
    if (Status status = thumbnail.Encode(kRoomBytes, &jpeg); !status || jpeg.empty())
        return status;
    Bytes block = DirectoryAt(m_directoryAt, jpeg.size());
    block.insert(block.end(), jpeg.begin(), jpeg.end());
    Bytes pointer;
    Add(m_directoryAt, 4, &pointer);
    const std::uint64_t begin = exifAt + kSignatureBytes;
    if (Status status = sink->WriteAt(begin + m_directoryAt, block.data(), block.size()); !status)
        return status;
    return sink->WriteAt(begin + m_pointerAt, pointer.data(), pointer.size());
}

} // namespace imagefile
