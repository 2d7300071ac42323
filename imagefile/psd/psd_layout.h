// Checked layout of a Photoshop file's merged picture.
#pragma once

#include "core/bytes.h"
#include "core/codec.h"

namespace imagefile {

/// Color modes, numbered as in the file header.
enum class PsdMode : std::uint16_t { Bitmap = 0, Gray = 1, Indexed = 2, Rgb = 3, Cmyk = 4, Duotone = 8, Lab = 9 };

/// Location of a channel.
struct PsdChannel {
    int compression;        // 0: none, 1: PackBits
    std::uint64_t sizesAt;  // offset of the sizes of packed rows
    std::uint64_t pixelsAt; // offset of the first row
};

/// Layout of the pixels, as stored and as delivered:
///
///   | stored                      | delivered                                                  |
///   |-----------------------------|------------------------------------------------------------|
///   | bitmap (1 bit), indexed (8) | 8-bit RGB                                                  |
///   | gray, duotone, RGB          | gray or RGB, with opacity RGBA; 8 or 16 bits, or float     |
///   | CMYK, Lab (8 or 16 bits)    | RGB, with opacity RGBA; same depth                         |
///
/// Opacity is the first channel after the colors if the layer section marks it as such. Other channels are selections
/// and are left out. If a picture with opacity has a single layer, of its size and shown unchanged, that layer is read,
/// because the colors of the merged picture are blended with white.
struct PsdLayout {
    bool isLarge = false; // PSB: sides up to 300,000 pixels, 64-bit lengths
    int channels = 0;     // stored
    int width = 0;
    int height = 0;
    int bits = 8; // per sample
    PsdMode mode = PsdMode::Rgb;
    int colors = 3;                           // color channels
    bool hasAlpha = false;                    // an opacity channel follows the colors
    bool mergesOpacity = false;               // the merged picture includes the opacity of the layers
    bool isBlendedWithWhite = false;          // the colors of partly transparent pixels are
    Bytes palette;                            // indexed: 256 values each of red, green and blue
    std::vector<PsdChannel> channelLocations; // where the used channels are stored
    PixelForm form;                           // as delivered

    int UsedChannels() const { return colors + (hasAlpha ? 1 : 0); }
    /// Returns the size of a length field in bytes.
    int LengthBytes() const { return isLarge ? 8 : 4; }
    /// Returns the size in bytes of one entry in the table of packed row sizes.
    int SizeEntryBytes() const { return isLarge ? 4 : 2; }
    /// Returns the size in bytes of one channel's table of packed row sizes.
    std::uint64_t SizeTableBytes() const
    {
        return static_cast<std::uint64_t>(height) * static_cast<std::uint64_t>(SizeEntryBytes());
    }
    /// Returns the unpacked size in bytes of a row of one channel.
    std::size_t RowBytes() const { return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) + 7) / 8; }
};

constexpr int kPsdMaxSide = 30000; // pixels; a larger picture needs a PSB

/// Reads and checks everything before the pixels.
Status OpenPsd(const Source &source, PsdLayout *layout);

/// Reads the resolution from the image resources.
void ReadPsdResolution(const Source &source, std::uint16_t *xDpi, std::uint16_t *yDpi);

} // namespace imagefile
