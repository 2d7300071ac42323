// Source: Adobe, "Photoshop File Formats", "Layer and Mask Information Section".
#include "psd_layers.h"

#include "core/byte_reader.h"
#include "core/limits.h"

#include <algorithm>
#include <string_view>

namespace imagefile {

namespace {

constexpr std::int16_t kOpacityChannel = -1;

std::string Key(ByteReader *reader)
{
    std::string key(4, '\0');
    reader->Read(key.data(), key.size());
    return key;
}

bool IsOneOf(const std::string &key, std::initializer_list<std::string_view> keys)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

/// Returns whether a block with this key has a 64-bit length in a PSB.
bool IsWide(const std::string &key)
{
    return IsOneOf(
        key, {"LMsk", "Lr16", "Lr32", "Layr", "Mt16", "Mt32", "Mtrn", "Alph", "FMsk", "lnk2", "FEid", "FXid", "PxSD"});
}

/// Record of a layer: its channels in the order of their data, and whether it shows its pixels unchanged.
struct LayerRecord {
    bool isPlain = false;
    std::vector<std::pair<std::int16_t, std::uint64_t>> channels; // identifier, bytes
};

LayerRecord ReadRecord(ByteReader *reader, const PsdLayout &layout)
{
    constexpr unsigned kHidden = 2;
    LayerRecord record;
    const std::uint64_t top = reader->Number(4), left = reader->Number(4), bottom = reader->Number(4),
                        right = reader->Number(4), channels = reader->Number(2);
    for (std::uint64_t i = 0; i < std::min<std::uint64_t>(channels, kMaxPsdChannels); ++i) {
        const auto identifier = static_cast<std::int16_t>(reader->Number(2));
        record.channels.emplace_back(identifier, reader->Number(layout.LengthBytes()));
    }
    const std::string signature = Key(reader), mode = Key(reader);
    const std::uint8_t opacity = reader->Byte(), clipping = reader->Byte(), flags = reader->Byte();
    reader->Skip(1);
    const std::uint64_t extraBytes = reader->Number(4), extraAt = reader->Position();
    const std::uint64_t maskBytes = reader->Number(4), rangeBytes = reader->Number(4);
    const std::uint64_t nameBytes = (1 + std::uint64_t(reader->Byte()) + 3) / 4 * 4;
    const bool hasNothingElse = maskBytes == 0 && rangeBytes == 0 && 8 + nameBytes == extraBytes;
    const bool coversAll = top == 0 && left == 0 && bottom == static_cast<std::uint64_t>(layout.height)
        && right == static_cast<std::uint64_t>(layout.width);
    record.isPlain = coversAll && signature == "8BIM" && mode == "norm" && opacity == 255 && clipping == 0
        && (flags & kHidden) == 0 && hasNothingElse && channels <= kMaxPsdChannels;
    const std::uint64_t read = reader->Position() - extraAt;
    reader->Skip(extraBytes > read ? extraBytes - read : 0);
    return record;
}

// Returns the positions of the color channels and of opacity; empty if one is missing or its compression is
// unsupported.
std::vector<PsdChannel> ChannelsOf(const LayerRecord &record, const PsdLayout &layout, ByteReader *reader)
{
    const auto colors = static_cast<std::size_t>(layout.colors);
    std::vector<PsdChannel> found(colors + 1, PsdChannel{-1, 0, 0});
    for (const auto &[identifier, bytes] : record.channels) {
        const auto compression = static_cast<int>(reader->Number(2));
        const std::uint64_t sizesAt = reader->Position();
        const std::size_t place = identifier == kOpacityChannel ? colors : static_cast<std::size_t>(identifier);
        if (identifier >= kOpacityChannel && place <= colors && compression <= 1)
            found[place] = {compression, sizesAt, sizesAt + (compression == 0 ? 0 : layout.SizeTableBytes())};
        if (bytes < 2 || !reader->Skip(bytes - 2))
            return {};
    }
    const bool isComplete =
        std::all_of(found.begin(), found.end(), [](const PsdChannel &c) { return c.compression >= 0; });
    return isComplete ? found : std::vector<PsdChannel>();
}

// Reads the layer info at @p at. Its layer count is negative if the first channel after the colors is the opacity of
// the merged picture.
void ReadLayerInfo(const Source &source, std::uint64_t at, PsdLayout *layout)
{
    ByteReader reader(source, at);
    const auto count = static_cast<std::int16_t>(reader.Number(2));
    layout->mergesOpacity = layout->mergesOpacity || count < 0;
    if (count != -1)
        return;
    const LayerRecord record = ReadRecord(&reader, *layout);
    if (record.isPlain && !reader.Failed())
        layout->channelLocations = ChannelsOf(record, *layout, &reader);
}

// Reads the additional layer information, where 16-bit and 32-bit files store their layers.
void ReadBlocks(const Source &source, ByteReader *reader, std::uint64_t end, PsdLayout *layout)
{
    constexpr std::uint64_t kShortestBlock = 12;
    while (!reader->Failed() && end - reader->Position() >= kShortestBlock) {
        const std::string signature = Key(reader), key = Key(reader);
        if (signature != "8BIM" && signature != "8B64")
            return;
        const std::uint64_t bytes = reader->Number(layout->isLarge && IsWide(key) ? 8 : 4);
        if (reader->Position() > end || bytes > end - reader->Position())
            return;
        if (IsOneOf(key, {"Lr16", "Lr32", "Layr"}) && bytes >= 2)
            ReadLayerInfo(source, reader->Position(), layout);
        layout->mergesOpacity = layout->mergesOpacity || IsOneOf(key, {"Mt16", "Mt32", "Mtrn"});
        reader->Skip(std::min((bytes + 3) / 4 * 4, end - reader->Position()));
    }
}

} // namespace

Status ReadPsdLayers(const Source &source, ByteReader *reader, PsdLayout *layout)
{
    const auto lengthBytes = static_cast<std::uint64_t>(layout->LengthBytes());
    const std::uint64_t length = reader->Number(layout->LengthBytes()), end = reader->Position() + length;
    ByteReader inside(source, reader->Position());
    if (!reader->Skip(length))
        return Status::Fail(GFL_ERROR_FILE_READ, "Photoshop: the file ends early");
    if (length < lengthBytes)
        return Status::Ok();
    const std::uint64_t infoBytes = inside.Number(layout->LengthBytes());
    if (infoBytes >= 2)
        ReadLayerInfo(source, inside.Position(), layout);
    const std::uint64_t maskBytes = infoBytes == 0 && end - inside.Position() >= 4 ? inside.Number(4) : length;
    if (maskBytes <= end - inside.Position() && inside.Skip(maskBytes))
        ReadBlocks(source, &inside, end, layout);
    return Status::Ok();
}

} // namespace imagefile
