// Checked layout of a TIFF's pixels, from its directory.
#pragma once

#include "core/color_transform.h"
#include "core/pixel_form.h"
#include "core/row_sink.h"
#include "tiff_handle.h"

#include <vector>

namespace imagefile {

enum class TiffColor {
    Gray,
    Rgb,
    Palette,
    Cmyk,
    Lab,   // 8 or 16 bits
    Other, // LogLuv, ITU Lab, and YCbCr other than interleaved JPEG; libtiff converts them to 8-bit RGB
};

/// Layout of the pixels, as stored and as delivered:
///
///   | stored                                   | delivered                              |
///   |------------------------------------------|----------------------------------------|
///   | unsigned, 2 to 8 bits per sample         | 8 bits                                 |
///   | unsigned, 9 to 16 bits                   | 16 bits                                |
///   | unsigned 24, 32; float 16, 32, 64 bits   | 32 bits, float                         |
///   | 1 bit, palette                           | 8-bit RGB                              |
///   | gray, RGB                                | gray, RGB; RGBA with an opacity sample |
///   | CMYK; Lab of 8 or 16 bits                | RGB; RGBA with an opacity sample       |
///   | YCbCr, LogLuv, ITU Lab                   | 8-bit RGB                              |
///
/// Opacity is an extra sample marked as such, or the only extra sample of gray or RGB. Other extra samples are left
/// out.
struct TiffLayout {
    int width = 0;
    int height = 0;
    int bits = 1;    // per sample
    int samples = 1; // per pixel
    bool isFloat = false;
    bool isPlanar = false; // each sample in separate strips or tiles
    bool isTiled = false;
    bool minIsWhite = false;
    bool premultiplied = false;
    std::uint16_t compression = 1;
    std::uint16_t photometric = 0;
    TiffColor color = TiffColor::Gray;
    std::vector<int> used;                // indexes of the delivered samples: colors, then opacity
    const std::uint16_t *palette[3] = {}; // red, green, blue; owned by libtiff
    Chromaticity white = kD50;            // of CIE Lab
    PixelForm unpacked;                   // of the used samples after unpacking
    PixelForm form;                       // as delivered
};

/// Opens and checks the picture of a TIFF: its first directory that isn't marked as a reduced version.
Status OpenTiffPicture(const Source &source, TiffHandle *handle, TiffLayout *layout);

/// Opens the smallest reduced version that can replace the picture in @p box, from a main directory or from a
/// sub-directory of the picture's directory. Fails if there is none.
Status OpenTiffReduced(const Source &source, const Box &box, TiffHandle *handle, TiffLayout *layout);

} // namespace imagefile
