#include "core/pack_bits.h"
#include "metadata/exif_carry.h"
#include "metadata/photoshop_resources.h"
#include "psd_codec.h"
#include "psd_layout.h"

#include <algorithm>
#include <string_view>

namespace imagefile {

namespace {

/// Size limit of a PSD. Pictures that may come close to it are written as PSB.
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
        AppendNumber(1, 2, &info); // resolution shown per inch
        AppendNumber(1, 2, &info); // sides shown in inches
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

/// Returns a sample blended with white at its opacity.
template <class T> T Blended(T color, T opacity)
{
    if constexpr (std::is_floating_point_v<T>) {
        return color * opacity + (T(1) - opacity);
    } else {
        constexpr auto kFull = static_cast<std::uint64_t>(FullScale<T>());
        const auto light = static_cast<std::uint64_t>(color) * static_cast<std::uint64_t>(opacity);
        return static_cast<T>((light + kFull / 2) / kFull + kFull - static_cast<std::uint64_t>(opacity));
    }
}

/// Writer for one file. Pictures with opacity are stored twice, as other programs do: exactly, in a layer, and blended
/// with white, as the merged picture. Without a layer, those programs mistake opacity for a selection.
class Writer {
public:
    Writer(const GFL_BITMAP &bitmap, bool isPacked, Sink *sink);

    Status Write(const Bytes &resources);

private:
    int LengthBytes() const { return m_isLarge ? 8 : 4; }
    /// Returns the size in bytes of the table of a channel's packed row sizes.
    std::size_t SizeTableBytes() const
    {
        return m_isPacked ? static_cast<std::size_t>(m_bitmap.Height) * (m_isLarge ? 4 : 2) : 0;
    }
    Bytes Head(const Bytes &resources) const;
    Bytes LayerRecord(const std::vector<std::uint64_t> &channelBytes) const;
    Status Append(const Bytes &bytes) { return m_sink->WriteAt(m_sink->Size(), bytes.data(), bytes.size()); }
    Bytes LayersHead() const;
    Status WriteLayerChannels(std::vector<std::uint64_t> *channelBytes);
    Status PutLength(std::uint64_t at, std::uint64_t length);
    Status WriteLayers();
    Status WriteMerged();
    enum class Blend { No, WithWhite };
    template <class T> void TakeChannelAs(const T *row, int channel, Blend blend);
    void TakeChannel(const std::uint8_t *row, int channel, Blend blend);
    Status WriteChannel(int channel, Blend blend, Bytes *sizes);

    const GFL_BITMAP &m_bitmap;
    const int m_channels;
    const int m_sampleBytes;
    const bool m_isPacked;
    Sink *const m_sink;
    const std::size_t m_rowBytes;
    bool m_isLarge;
    std::vector<std::uint8_t> m_channel, m_packed;
};

Writer::Writer(const GFL_BITMAP &bitmap, bool isPacked, Sink *sink)
    : m_bitmap(bitmap),
      m_channels(gflChannelsOfType(bitmap.Type)),
      m_sampleBytes(bitmap.BitsPerComponent / 8),
      m_isPacked(isPacked),
      m_sink(sink),
      m_rowBytes(static_cast<std::size_t>(bitmap.Width) * static_cast<std::size_t>(m_sampleBytes)),
      m_channel(m_rowBytes)
{
    // The factor of 1.5 leaves room for what packing and metadata add. A row's packed size must also fit in 16 bits.
    const std::uint64_t copies = m_channels == 4 ? 2 : 1;
    const std::uint64_t bytes =
        copies * m_rowBytes * static_cast<std::uint64_t>(m_channels) * static_cast<std::uint64_t>(bitmap.Height);
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
    AppendNumber(static_cast<std::uint64_t>(m_channels == 1 ? PsdMode::Gray : PsdMode::Rgb), 2, &head);
    AppendNumber(0, 4, &head); // no color mode data
    AppendNumber(resources.size(), 4, &head);
    head.insert(head.end(), resources.begin(), resources.end());
    return head;
}

// Returns the layer count and the record of the only layer, whose channels are red, green, blue and opacity.
Bytes Writer::LayerRecord(const std::vector<std::uint64_t> &channelBytes) const
{
    Bytes record;
    AppendNumber(0xFFFF, 2, &record); // -1: one layer, and the merged picture includes its opacity
    AppendNumber(0, 8, &record);      // top, left
    AppendNumber(static_cast<std::uint64_t>(m_bitmap.Height), 4, &record);
    AppendNumber(static_cast<std::uint64_t>(m_bitmap.Width), 4, &record);
    AppendNumber(channelBytes.size(), 2, &record);
    for (std::size_t c = 0; c < channelBytes.size(); ++c) {
        AppendNumber(c < 3 ? c : 0xFFFF, 2, &record);
        AppendNumber(channelBytes[c], LengthBytes(), &record);
    }
    for (const char letter : std::string_view("8BIMnorm\xFF\0\0\0", 12)) // opacity, no clipping, visible
        record.push_back(static_cast<std::uint8_t>(letter));
    AppendNumber(12, 4, &record);         // bytes that follow:
    AppendNumber(0, 8, &record);          // no mask, no blending ranges
    AppendNumber(0x024C3100, 4, &record); // the name, "L1"
    return record;
}

// Extracts one channel of a row as big-endian samples.
template <class T> void Writer::TakeChannelAs(const T *row, int channel, Blend blend)
{
    std::uint8_t *out = m_channel.data();
    for (int x = 0; x < m_bitmap.Width; ++x, row += m_channels) {
        const T sample = blend == Blend::WithWhite ? Blended(row[channel], row[3]) : row[channel];
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(&sample);
        out = std::reverse_copy(bytes, bytes + sizeof sample, out);
    }
}

void Writer::TakeChannel(const std::uint8_t *row, int channel, Blend blend)
{
    if (m_sampleBytes == 1)
        TakeChannelAs(row, channel, blend);
    else if (m_sampleBytes == 2)
        TakeChannelAs(reinterpret_cast<const std::uint16_t *>(row), channel, blend);
    else
        TakeChannelAs(reinterpret_cast<const float *>(row), channel, blend);
}

// Writes a channel. If its rows are packed, appends their sizes to @p sizes.
Status Writer::WriteChannel(int channel, Blend blend, Bytes *sizes)
{
    const std::uint8_t *row = m_bitmap.Data;
    for (int y = 0; y < m_bitmap.Height; ++y, row += m_bitmap.BytesPerLine) {
        TakeChannel(row, channel, blend);
        m_packed.clear();
        if (m_isPacked) {
            PackBits(m_channel.data(), m_channel.size(), &m_packed);
            AppendNumber(m_packed.size(), m_isLarge ? 4 : 2, sizes);
        }
        if (Status status = Append(m_isPacked ? m_packed : m_channel); !status)
            return status;
    }
    return Status::Ok();
}

// Writes the layer's channels, each packed separately, and appends their lengths to @p channelBytes.
Status Writer::WriteLayerChannels(std::vector<std::uint64_t> *channelBytes)
{
    for (int c = 0; c < m_channels; ++c) {
        const std::uint64_t at = m_sink->Size();
        Bytes sizes, head;
        AppendNumber(m_isPacked ? 1 : 0, 2, &head);
        head.resize(2 + SizeTableBytes());
        if (Status status = Append(head); !status)
            return status;
        if (Status status = WriteChannel(c, Blend::No, &sizes); !status)
            return status;
        if (Status status = m_sink->WriteAt(at + 2, sizes.data(), sizes.size()); !status)
            return status;
        channelBytes->push_back(m_sink->Size() - at);
    }
    return Status::Ok();
}

Status Writer::PutLength(std::uint64_t at, std::uint64_t length)
{
    Bytes bytes;
    AppendNumber(length, LengthBytes(), &bytes);
    return m_sink->WriteAt(at, bytes.data(), bytes.size());
}

// Returns the bytes before the layer: lengths to be filled in and, for samples of 16 or 32 bits, the header of a
// separate block.
Bytes Writer::LayersHead() const
{
    Bytes head(static_cast<std::size_t>(2 * LengthBytes())); // lengths of the section and of its layers
    if (m_sampleBytes == 1)
        return head;
    AppendNumber(0, 4, &head); // no global mask
    const std::string key = std::string(m_isLarge ? "8B64" : "8BIM") + (m_sampleBytes == 2 ? "Lr16" : "Lr32");
    head.insert(head.end(), key.begin(), key.end());
    AppendNumber(0, LengthBytes(), &head);
    return head;
}

// Writes the layer section, whose lengths are known only at the end.
Status Writer::WriteLayers()
{
    const auto lengthBytes = static_cast<std::uint64_t>(LengthBytes());
    const Bytes head = LayersHead();
    const std::uint64_t sectionAt = m_sink->Size(), infoAt = sectionAt + head.size();
    std::vector<std::uint64_t> channelBytes;
    if (Status status = Append(head); !status)
        return status;
    if (Status status = Append(LayerRecord(std::vector<std::uint64_t>(4))); !status)
        return status;
    if (Status status = WriteLayerChannels(&channelBytes); !status)
        return status;
    const Bytes padding(static_cast<std::size_t>((4 - (m_sink->Size() - infoAt) % 4) % 4));
    if (Status status = Append(padding); !status)
        return status;
    if (Status status = PutLength(infoAt - lengthBytes, m_sink->Size() - infoAt); !status)
        return status;
    if (m_sampleBytes == 1)
        if (Status status = Append(Bytes(4)); !status) // no global mask
            return status;
    if (Status status = PutLength(sectionAt, m_sink->Size() - sectionAt - lengthBytes); !status)
        return status;
    const Bytes record = LayerRecord(channelBytes);
    return m_sink->WriteAt(infoAt, record.data(), record.size());
}

// Writes the merged picture, which begins with the row sizes of all channels.
Status Writer::WriteMerged()
{
    Bytes head;
    AppendNumber(m_isPacked ? 1 : 0, 2, &head);
    const std::uint64_t sizesAt = m_sink->Size() + head.size();
    head.resize(head.size() + SizeTableBytes() * static_cast<std::size_t>(m_channels));
    if (Status status = Append(head); !status)
        return status;
    Bytes packedSizes;
    for (int c = 0; c < m_channels; ++c)
        if (Status status = WriteChannel(c, m_channels == 4 && c < 3 ? Blend::WithWhite : Blend::No, &packedSizes);
            !status)
            return status;
    return m_sink->WriteAt(sizesAt, packedSizes.data(), packedSizes.size());
}

Status Writer::Write(const Bytes &resources)
{
    if (Status status = Append(Head(resources)); !status)
        return status;
    Status status = m_channels == 4 ? WriteLayers() : Append(Bytes(static_cast<std::size_t>(LengthBytes())));
    return status ? WriteMerged() : status;
}

} // namespace

Status WritePsd(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    constexpr int kMaxSide = 300000; // of a PSB
    if (bitmap.Width > kMaxSide || bitmap.Height > kMaxSide)
        return Status::Fail(
            GFL_ERROR_BAD_BITMAP,
            Text("PSB allows sides up to %d pixels; the picture has %d x %d", kMaxSide, bitmap.Width, bitmap.Height));
    try {
        const Bytes resources = AllResources(bitmap, options.metadata ? *options.metadata : Metadata());
        return Writer(bitmap, /*isPacked=*/options.compression != 0, sink).Write(resources);
    } catch (const Exiv2::AnyError &error) {
        return Status::Fail(GFL_ERROR_FILE_WRITE, Text("Photoshop: the EXIF can't be written: %s", error.what()));
    }
}

} // namespace imagefile
