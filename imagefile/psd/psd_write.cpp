#include "core/pack_bits.h"
#include "metadata/exif_carry.h"
#include "metadata/photoshop_resources.h"
#include "psd_codec.h"
#include "psd_layout.h"

#include <algorithm>

namespace imagefile {

namespace {

/// A PSD holds at most 2 GiB; what may come near goes into a PSB.
constexpr std::uint64_t kPsdMaxBytes = std::uint64_t(1) << 31;

void AppendNumber(std::uint64_t number, int bytes, Bytes *out)
{
    for (int i = bytes; i-- > 0;)
        out->push_back(static_cast<std::uint8_t>(number >> (8 * i)));
}

Bytes ResolutionInfo(const GFL_BITMAP &bitmap)
{
    Bytes info;
    if (bitmap.Xdpi == 0 || bitmap.Ydpi == 0)
        return info;
    for (const std::uint16_t dpi : {bitmap.Xdpi, bitmap.Ydpi}) {
        AppendNumber(std::uint64_t(dpi) << 16, 4, &info);
        AppendNumber(1, 2, &info); // shown by the inch
        AppendNumber(1, 2, &info); // sides too
    }
    return info;
}

Bytes AllResources(const GFL_BITMAP &bitmap, const Metadata &metadata)
{
    Bytes resources;
    AppendResource(PhotoshopResource::Resolution, ResolutionInfo(bitmap), &resources);
    AppendResource(PhotoshopResource::Iptc, metadata.iptc, &resources);
    AppendResource(PhotoshopResource::Icc, metadata.icc, &resources);
    AppendResource(PhotoshopResource::Exif, EncodeExif(metadata.exif), &resources);
    AppendResource(PhotoshopResource::Xmp, metadata.xmp, &resources);
    return resources;
}

/// One file on its way.
class Writer {
public:
    Writer(const GFL_BITMAP &bitmap, bool isPacked, Sink *sink);

    Status Write(const Bytes &resources);

private:
    Bytes Head(const Bytes &resources) const;
    void TakeChannel(const std::uint8_t *row, int channel);
    Status WriteRow();

    const GFL_BITMAP &m_bitmap;
    const int m_channels;
    const int m_sampleBytes;
    const bool m_isPacked;
    Sink *const m_sink;
    const std::size_t m_rowBytes;
    bool m_isLarge;
    Bytes m_sizes; // of packed rows, as the file holds them
    std::vector<std::uint8_t> m_channel, m_packed;
};

Writer::Writer(const GFL_BITMAP &bitmap, bool isPacked, Sink *sink)
    : m_bitmap(bitmap),
      m_channels(ChannelsOfType(bitmap.Type)),
      m_sampleBytes(bitmap.BitsPerComponent / 8),
      m_isPacked(isPacked),
      m_sink(sink),
      m_rowBytes(static_cast<std::size_t>(bitmap.Width) * static_cast<std::size_t>(m_sampleBytes)),
      m_channel(m_rowBytes)
{
    // Half as much again is more than packing and metadata add. A row's packed size has to fit into 16 bits, too.
    const std::uint64_t bytes =
        m_rowBytes * static_cast<std::uint64_t>(m_channels) * static_cast<std::uint64_t>(bitmap.Height);
    m_isLarge = bitmap.Width > kPsdMaxSide || bitmap.Height > kPsdMaxSide || bytes / 2 * 3 >= kPsdMaxBytes
        || (isPacked && m_rowBytes + m_rowBytes / 128 + 1 > UINT16_MAX);
}

Bytes Writer::Head(const Bytes &resources) const
{
    Bytes head = {'8', 'B', 'P', 'S'};
    AppendNumber(m_isLarge ? 2 : 1, 2, &head);
    AppendNumber(0, 6, &head);
    AppendNumber(static_cast<std::uint64_t>(m_channels), 2, &head);
    AppendNumber(static_cast<std::uint64_t>(m_bitmap.Height), 4, &head);
    AppendNumber(static_cast<std::uint64_t>(m_bitmap.Width), 4, &head);
    AppendNumber(m_bitmap.BitsPerComponent, 2, &head);
    AppendNumber(static_cast<std::uint64_t>(m_channels == 1 ? PsdMode::Grey : PsdMode::Rgb), 2, &head);
    AppendNumber(0, 4, &head); // no data of the colour mode
    AppendNumber(resources.size(), 4, &head);
    head.insert(head.end(), resources.begin(), resources.end());
    AppendNumber(0, m_isLarge ? 8 : 4, &head); // no layers
    AppendNumber(m_isPacked ? 1 : 0, 2, &head);
    return head;
}

// One channel of a row, in big-endian samples.
void Writer::TakeChannel(const std::uint8_t *row, int channel)
{
    const auto sampleBytes = static_cast<std::size_t>(m_sampleBytes);
    const std::size_t step = sampleBytes * static_cast<std::size_t>(m_channels);
    const std::uint8_t *sample = row + static_cast<std::size_t>(channel) * sampleBytes;
    std::uint8_t *out = m_channel.data();
    for (int x = 0; x < m_bitmap.Width; ++x, sample += step)
        out = std::reverse_copy(sample, sample + sampleBytes, out);
}

Status Writer::WriteRow()
{
    if (!m_isPacked)
        return m_sink->WriteAt(m_sink->Size(), m_channel.data(), m_channel.size());
    m_packed.clear();
    PackBits(m_channel.data(), m_channel.size(), &m_packed);
    AppendNumber(m_packed.size(), m_isLarge ? 4 : 2, &m_sizes);
    return m_sink->WriteAt(m_sink->Size(), m_packed.data(), m_packed.size());
}

Status Writer::Write(const Bytes &resources)
{
    const Bytes head = Head(resources);
    if (Status status = m_sink->WriteAt(0, head.data(), head.size()); !status)
        return status;
    const Bytes noSizes(m_isPacked ? static_cast<std::size_t>(m_bitmap.Height) * static_cast<std::size_t>(m_channels)
                                * (m_isLarge ? 4 : 2)
                                   : 0);
    if (Status status = m_sink->WriteAt(head.size(), noSizes.data(), noSizes.size()); !status)
        return status;
    for (int c = 0; c < m_channels; ++c) {
        const std::uint8_t *row = m_bitmap.Data;
        for (int y = 0; y < m_bitmap.Height; ++y, row += m_bitmap.BytesPerLine) {
            TakeChannel(row, c);
            if (Status status = WriteRow(); !status)
                return status;
        }
    }
    return m_sink->WriteAt(head.size(), m_sizes.data(), m_sizes.size());
}

} // namespace

Status WritePsd(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    constexpr int kMaxSide = 300000; // of a PSB
    if (bitmap.Width > kMaxSide || bitmap.Height > kMaxSide)
        return Status::Fail(
            GFL_ERROR_BAD_BITMAP,
            Text("PSB holds sides up to %d pixels; the picture has %d x %d", kMaxSide, bitmap.Width, bitmap.Height));
    try {
        const Bytes resources = AllResources(bitmap, options.metadata ? *options.metadata : Metadata());
        return Writer(bitmap, /*isPacked=*/options.compression != 0, sink).Write(resources);
    } catch (const Exiv2::AnyError &error) {
        return Status::Fail(GFL_ERROR_FILE_WRITE, Text("Photoshop: the EXIF can't be written: %s", error.what()));
    }
}

} // namespace imagefile
