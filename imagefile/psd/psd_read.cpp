#include "core/byte_reader.h"
#include "core/color_transform.h"
#include "core/pack_bits.h"
#include "metadata/psd_metadata.h"
#include "psd_codec.h"
#include "psd_layout.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

Status EndsEarly()
{
    return Status::Fail(GFL_ERROR_FILE_READ, "Photoshop: the file ends early");
}

/// Reader for rows of the used channels. A file stores one channel after another; this class reads them all row by row.
class ChannelReader {
public:
    ChannelReader(const Source &source, const PsdLayout &layout) : m_source(source), m_layout(layout) { }

    /// Reads the sizes of packed rows.
    Status Start();
    /// Reads and unpacks the next row of a channel: layout.RowBytes() bytes, in the file's byte order.
    Status ReadRow(std::size_t channel, int y, std::uint8_t *row);

private:
    struct Channel {
        bool isPacked;
        std::uint64_t at;                // of the next row
        std::vector<std::uint32_t> size; // of packed rows
    };

    const Source &m_source;
    const PsdLayout &m_layout;
    std::vector<Channel> m_channels;
    std::vector<std::uint8_t> m_packed;
};

Status ChannelReader::Start()
{
    for (const PsdChannel &place : m_layout.channelLocations) {
        m_channels.push_back({place.compression != 0, place.pixelsAt, {}});
        ByteReader reader(m_source, place.sizesAt);
        if (!m_channels.back().isPacked)
            continue;
        if (reader.Remaining() < m_layout.SizeTableBytes())
            return EndsEarly();
        for (int y = 0; y < m_layout.height; ++y)
            m_channels.back().size.push_back(static_cast<std::uint32_t>(reader.Number(m_layout.SizeEntryBytes())));
        if (reader.Failed())
            return EndsEarly();
    }
    return Status::Ok();
}

Status ChannelReader::ReadRow(std::size_t channel, int y, std::uint8_t *row)
{
    const std::size_t rowBytes = m_layout.RowBytes();
    Channel &from = m_channels[channel];
    if (!from.isPacked) {
        const std::size_t got = m_source.ReadAt(from.at, row, rowBytes);
        from.at += rowBytes;
        return got == rowBytes ? Status::Ok() : EndsEarly();
    }
    const std::size_t size = from.size[static_cast<std::size_t>(y)];
    if (size > 2 * rowBytes + 2) // packing at most doubles the size
        return Status::Fail(GFL_ERROR_FILE_READ, Text("Photoshop: a packed row of %zu bytes is too long", size));
    m_packed.resize(size);
    if (m_source.ReadAt(from.at, m_packed.data(), size) < size)
        return EndsEarly();
    from.at += size;
    return UnpackBits(m_packed.data(), size, row, rowBytes)
        ? Status::Ok()
        : Status::Fail(GFL_ERROR_FILE_READ, "Photoshop: packed pixels are damaged");
}

// Loads a big-endian sample.
template <class T> T Load(const std::uint8_t *p)
{
    static_assert(sizeof(T) == 1 || sizeof(T) == 2 || sizeof(T) == 4);
    if constexpr (sizeof(T) == 1) {
        return *p;
    } else if constexpr (sizeof(T) == 2) {
        return static_cast<T>(p[0] << 8 | p[1]);
    } else {
        const std::uint32_t bits = BigEndian32(p);
        T value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
}

/// Writes a channel to its positions in a row.
template <class T>
void Interleave(const std::uint8_t *channel, std::size_t width, bool invert, T *row, std::size_t step)
{
    for (std::size_t x = 0; x < width; ++x, channel += sizeof(T), row += step)
        *row = invert ? static_cast<T>(FullScale<T>() - Load<T>(channel)) : Load<T>(channel);
}

/// Removes the white that partly transparent pixels were blended with. Pixels that are too dark to contain that
/// white stay unchanged, because some programs store unblended colors.
template <class T> void UnblendFromWhite(T *row, std::size_t width)
{
    constexpr auto kFull = static_cast<float>(FullScale<T>());
    constexpr float kRounding = std::is_floating_point_v<T> ? 1e-5f : 0.0f; // integers: white minus opacity is exact
    for (std::size_t x = 0; x < width; ++x, row += 4) {
        const float opacity = static_cast<float>(row[3]) / kFull;
        const float white = kFull - static_cast<float>(row[3]) - kRounding * kFull;
        const bool isBlended =
            std::all_of(row, row + 3, [white](T value) { return static_cast<float>(value) >= white; });
        for (int c = 0; c < 3 && isBlended && opacity > 0.0f && opacity < 1.0f; ++c)
            row[c] = ToSample<T>(kFull - (kFull - static_cast<float>(row[c])) / opacity);
    }
}

/// Converter from rows of channels to rows of the delivered form.
class Assembler {
public:
    Assembler(const PsdLayout &layout) : m_layout(layout) { }

    Status Start(const Source &source);
    /// Returns the buffer for a row of a channel, in the file's byte order.
    std::uint8_t *Channel() { return m_channel.data(); }
    /// Takes the row in Channel(), which belongs to the channel with index @p channel.
    void TakeChannel(std::size_t channel);
    /// Fills the delivered row once all channels are complete.
    void Finish(std::uint8_t *row);

private:
    template <class T> void Take(std::size_t channel);
    template <class T> void FinishAs(T *row);
    void LookUp(std::uint8_t *row) const;

    const PsdLayout &m_layout;
    const std::size_t m_width = static_cast<std::size_t>(m_layout.width);
    std::vector<std::uint8_t> m_channel;
    std::vector<std::uint8_t> m_samples; // of all channels, interleaved
    ColorTransform m_transform;
};

Status Assembler::Start(const Source &source)
{
    m_channel.resize(m_layout.RowBytes());
    m_samples.resize(m_width * static_cast<std::size_t>(m_layout.UsedChannels() * m_layout.form.bits / 8));
    if (m_layout.mode == PsdMode::Cmyk) {
        Metadata metadata;
        if (Status status = ReadPsdMetadata(source, &metadata); !status)
            return status;
        return m_transform.StartInks(metadata.icc, m_layout.bits, m_layout.hasAlpha);
    }
    if (m_layout.mode == PsdMode::Lab)
        return m_transform.StartLab(kD50, m_layout.bits, m_layout.hasAlpha);
    return Status::Ok();
}

template <class T> void Assembler::Take(std::size_t channel)
{
    // CMYK is stored inverted.
    const bool invert = m_layout.mode == PsdMode::Cmyk && channel < 4;
    Interleave(m_channel.data(), m_width, invert, reinterpret_cast<T *>(m_samples.data()) + channel,
               static_cast<std::size_t>(m_layout.UsedChannels()));
}

void Assembler::TakeChannel(std::size_t channel)
{
    if (m_layout.bits == 1)
        for (std::size_t x = 0; x < m_width; ++x) // 1 is black
            m_samples[x] = (m_channel[x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 255;
    else if (m_layout.bits == 8)
        Take<std::uint8_t>(channel);
    else if (m_layout.bits == 16)
        Take<std::uint16_t>(channel);
    else
        Take<float>(channel);
}

void Assembler::LookUp(std::uint8_t *row) const
{
    for (std::size_t x = 0; x < m_width; ++x)
        for (std::size_t c = 0; c < 3; ++c)
            *row++ = m_layout.palette[c * 256 + m_samples[x]];
}

template <class T> void Assembler::FinishAs(T *row)
{
    const T *samples = reinterpret_cast<const T *>(m_samples.data());
    if (m_layout.mode == PsdMode::Cmyk || m_layout.mode == PsdMode::Lab) {
        m_transform.Row(samples, row, m_width);
    } else if (m_layout.UsedChannels() == m_layout.form.channels) {
        std::memcpy(row, samples, m_samples.size());
    } else { // gray expanded to color, followed by opacity if there is any
        const int stored = m_layout.UsedChannels(), delivered = m_layout.form.channels;
        T *pixel = row;
        for (std::size_t x = 0; x < m_width; ++x, samples += stored, pixel += delivered) {
            pixel[0] = pixel[1] = pixel[2] = samples[0];
            if (delivered == 4)
                pixel[3] = samples[1];
        }
    }
    if (m_layout.isBlendedWithWhite)
        UnblendFromWhite(row, m_width);
}

void Assembler::Finish(std::uint8_t *row)
{
    if (m_layout.mode == PsdMode::Indexed)
        LookUp(row);
    else if (m_layout.form.bits == 8)
        FinishAs(row);
    else if (m_layout.form.bits == 16)
        FinishAs(reinterpret_cast<std::uint16_t *>(row));
    else
        FinishAs(reinterpret_cast<float *>(row));
}

struct ColorName {
    PsdMode mode;
    GflColorModel model;
    const char *suffix; // of the description; hosts use it to detect files that need special treatment
};
constexpr ColorName kColorNames[] = {
    {PsdMode::Bitmap, GFL_CM_GREY, ""}, {PsdMode::Gray, GFL_CM_GREY, ""},      {PsdMode::Indexed, GFL_CM_PALETTE, ""},
    {PsdMode::Rgb, GFL_CM_RGB, ""},     {PsdMode::Cmyk, GFL_CM_CMYK, " CMYK"}, {PsdMode::Duotone, GFL_CM_GREY, ""},
    {PsdMode::Lab, GFL_CM_LAB, " LAB"},
};

} // namespace

Status ReadPsdInfo(const Source &source, GFL_FILE_INFORMATION *info)
{
    PsdLayout layout;
    if (Status status = OpenPsd(source, &layout); !status)
        return status;
    const ColorName &name = *std::find_if(std::begin(kColorNames), std::end(kColorNames),
                                          [&](const ColorName &known) { return known.mode == layout.mode; });
    std::snprintf(info->Description, sizeof info->Description, "%s%s", layout.isLarge ? "PSB" : "PSD", name.suffix);
    info->Width = layout.width;
    info->Height = layout.height;
    info->BitsPerComponent = static_cast<std::uint16_t>(layout.form.bits);
    info->ComponentsPerPixel = static_cast<std::uint16_t>(layout.mode == PsdMode::Indexed ? 3 : layout.channels);
    info->ColorModel = name.model;
    ReadPsdResolution(source, &info->Xdpi, &info->Ydpi);
    return Status::Ok();
}

Status ReadPsdPixels(const Source &source, RowSink *rows)
{
    PsdLayout layout;
    if (Status status = OpenPsd(source, &layout); !status)
        return status;
    ChannelReader channels(source, layout);
    if (Status status = channels.Start(); !status)
        return status;
    Assembler assembler(layout);
    if (Status status = assembler.Start(source); !status)
        return status;
    if (Status status = rows->Start(layout.width, layout.height, layout.form); !status)
        return status;
    for (int y = 0; y < layout.height; ++y) {
        for (std::size_t c = 0; c < static_cast<std::size_t>(layout.UsedChannels()); ++c) {
            if (Status status = channels.ReadRow(c, y, assembler.Channel()); !status)
                return status;
            assembler.TakeChannel(c);
        }
        assembler.Finish(rows->Row(y));
        rows->Done(y);
    }
    return Status::Ok();
}

} // namespace imagefile
