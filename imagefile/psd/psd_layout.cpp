// Source: Adobe, "Photoshop File Formats".
#include "psd_layout.h"

#include "core/byte_reader.h"
#include "core/image_limits.h"
#include "metadata/photoshop_resources.h"
#include "metadata/psd_metadata.h"
#include "psd_layers.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

struct Mode {
    PsdMode mode;
    int colors;
    int minBits, maxBits;
};
constexpr Mode kModes[] = {
    {PsdMode::Bitmap, 1, 1, 1}, {PsdMode::Gray, 1, 8, 32},    {PsdMode::Indexed, 1, 8, 8}, {PsdMode::Rgb, 3, 8, 32},
    {PsdMode::Cmyk, 4, 8, 16},  {PsdMode::Duotone, 1, 8, 32}, {PsdMode::Lab, 3, 8, 16},
};

Status Damaged(const std::string &why)
{
    return Status::Fail(GFL_ERROR_FILE_READ, "Photoshop: " + why);
}

Status TakeMode(std::uint64_t mode, PsdLayout *layout)
{
    const int bits = layout->bits;
    for (const Mode &known : kModes) {
        if (static_cast<std::uint64_t>(known.mode) != mode || bits < known.minBits || bits > known.maxBits
            || (bits != 1 && bits != 8 && bits != 16 && bits != 32))
            continue;
        layout->mode = known.mode;
        layout->colors = known.colors;
        return layout->channels >= known.colors
            ? Status::Ok()
            : Damaged(Text("%d channels; %d are needed", layout->channels, known.colors));
    }
    return Status::Fail(
        GFL_ERROR_UNKNOWN_FORMAT,
        Text("Photoshop: color mode %llu with %d bits is not supported", static_cast<unsigned long long>(mode), bits));
}

Status ReadHeader(ByteReader *reader, PsdLayout *layout)
{
    reader->Skip(4);
    const auto version = reader->Number(2);
    reader->Skip(6);
    layout->channels = static_cast<int>(reader->Number(2));
    const auto height = static_cast<std::int64_t>(reader->Number(4)),
               width = static_cast<std::int64_t>(reader->Number(4));
    layout->bits = static_cast<int>(reader->Number(2));
    const std::uint64_t mode = reader->Number(2);
    if (reader->Failed())
        return Damaged("the file ends early");
    if (version != 1 && version != 2)
        return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT,
                            "Photoshop: version " + std::to_string(version) + " is not supported");
    if (layout->channels < 1 || layout->channels > kMaxPsdChannels)
        return Damaged(Text("%d channels; 1 to %d are allowed", layout->channels, kMaxPsdChannels));
    if (Status status = CheckImageSize(width, height, 1, 8); !status)
        return status;
    layout->isLarge = version == 2;
    layout->width = static_cast<int>(width);
    layout->height = static_cast<int>(height);
    return TakeMode(mode, layout);
}

Status ReadColorData(ByteReader *reader, PsdLayout *layout)
{
    constexpr std::size_t kPaletteBytes = 768;
    std::uint64_t length = reader->Number(4);
    if (layout->mode == PsdMode::Indexed) {
        if (length < kPaletteBytes)
            return Damaged("the palette is missing");
        layout->palette.resize(kPaletteBytes);
        reader->Read(layout->palette.data(), kPaletteBytes);
        length -= kPaletteBytes;
    }
    return reader->Skip(length) ? Status::Ok() : Damaged("the file ends early");
}

void ChooseOpacity(PsdLayout *layout)
{
    const bool isFlat = layout->mode == PsdMode::Bitmap || layout->mode == PsdMode::Indexed;
    layout->hasAlpha = !isFlat && layout->mergesOpacity && layout->channels > layout->colors;
    if (!layout->hasAlpha)
        layout->channelLocations.clear();
    layout->isBlendedWithWhite = layout->hasAlpha && layout->channelLocations.empty();
}

// Finds the channels of the merged picture. The row sizes of all channels precede the first channel.
Status FindMergedChannels(const Source &source, ByteReader *reader, PsdLayout *layout)
{
    const auto compression = static_cast<int>(reader->Number(2));
    if (reader->Failed())
        return Damaged("the file ends early");
    if (compression > 1)
        return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT,
                            Text("Photoshop: compression %d; 0 (none) and 1 (PackBits) are supported", compression));
    if (!layout->channelLocations.empty())
        return Status::Ok();
    const std::uint64_t tablesAt = reader->Position(),
                        tableBytes = layout->SizeTableBytes() * static_cast<std::uint64_t>(layout->channels);
    if (compression != 0 && reader->Remaining() < tableBytes)
        return Damaged("the file ends early");
    std::uint64_t at = tablesAt + (compression == 0 ? 0 : tableBytes);
    ByteReader sizes(source, tablesAt);
    for (int c = 0; c < layout->UsedChannels(); ++c) {
        const std::uint64_t sizesAt = tablesAt + static_cast<std::uint64_t>(c) * layout->SizeTableBytes();
        layout->channelLocations.push_back({compression, sizesAt, at});
        if (compression == 0)
            at += layout->RowBytes() * static_cast<std::uint64_t>(layout->height);
        for (int y = 0; compression != 0 && y < layout->height; ++y)
            at += sizes.Number(layout->SizeEntryBytes());
    }
    return Status::Ok();
}

void ChooseForm(PsdLayout *layout)
{
    const bool isGray = layout->mode == PsdMode::Gray || layout->mode == PsdMode::Duotone;
    layout->form = {std::max(layout->bits, 8), layout->hasAlpha ? 4 : isGray ? 1 : 3};
}

Status CheckBytes(const Source &source, const PsdLayout &layout)
{
    const PixelForm &form = layout.form;
    if (Status status = CheckImageSize(layout.width, layout.height, form.channels, form.bits); !status)
        return status;
    const std::int64_t stored = static_cast<std::int64_t>(layout.RowBytes()) * layout.height * layout.UsedChannels();
    const bool isPacked = std::any_of(layout.channelLocations.begin(), layout.channelLocations.end(),
                                      [](const PsdChannel &channel) { return channel.compression != 0; });
    const std::int64_t delivered = std::int64_t(layout.width) * layout.height * form.BytesPerPixel();
    return CheckClaim(stored, delivered, source.Size(), isPacked ? kPackBitsRatio : 1);
}

} // namespace

Status OpenPsd(const Source &source, PsdLayout *layout)
{
    ByteReader reader(source);
    if (Status status = ReadHeader(&reader, layout); !status)
        return status;
    if (Status status = ReadColorData(&reader, layout); !status)
        return status;
    if (!reader.Skip(reader.Number(4))) // image resources
        return Damaged("the file ends early");
    if (Status status = ReadPsdLayers(source, &reader, layout); !status)
        return status;
    ChooseOpacity(layout);
    if (Status status = FindMergedChannels(source, &reader, layout); !status)
        return status;
    ChooseForm(layout);
    return CheckBytes(source, *layout);
}

// The resource has dots per inch with 16 fractional bits, regardless of the displayed unit: horizontal at byte 0,
// vertical at byte 8.
void ReadPsdResolution(const Source &source, std::uint16_t *xDpi, std::uint16_t *yDpi)
{
    const Bytes info = FindResource(ReadPsdResources(source), PhotoshopResource::Resolution);
    if (info.size() < 10)
        return;
    *xDpi = static_cast<std::uint16_t>(info[0] << 8 | info[1]);
    *yDpi = static_cast<std::uint16_t>(info[8] << 8 | info[9]);
}

} // namespace imagefile
