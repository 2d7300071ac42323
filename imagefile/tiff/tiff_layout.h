// What the directory of a TIFF says of its pixels, checked, in our terms.
#pragma once

#include "core/color_transform.h"
#include "core/pixel_form.h"
#include "core/row_sink.h"
#include "tiff_handle.h"

#include <vector>

namespace imagefile {

enum class TiffColour {
    Grey,
    Rgb,
    Palette,
    Cmyk,
    Lab,   // of 8 or 16 bits
    Other, // YCbCr, LogLuv, and Lab as fax machines store it: by libtiff's own conversion to 8-bit RGB
};

/// How pixels are stored, and the form in which they are delivered:
///
///   | stored                                   | delivered                              |
///   |------------------------------------------|----------------------------------------|
///   | unsigned, 2 to 8 bits a sample           | 8 bits                                 |
///   | unsigned, 9 to 16 bits                   | 16 bits                                |
///   | unsigned, 24 or 32 bits; float, 16 to 64 | 32 bits, float                         |
///   | 1 bit, palette                           | RGB of 8 bits                          |
///   | grey, RGB                                | grey, RGB; RGBA with an opacity sample |
///   | CMYK; Lab of 8 or 16 bits                | RGB; RGBA with an opacity sample       |
///   | YCbCr, LogLuv, ITU Lab                   | RGB of 8 bits                          |
///
/// Opacity is an extra sample that says so, or the only extra sample of grey or RGB. Other extra samples are left out.
struct TiffLayout {
    int width = 0;
    int height = 0;
    int bits = 1;    // a sample
    int samples = 1; // a pixel
    bool isFloat = false;
    bool isPlanar = false; // each sample in strips or tiles of its own
    bool isTiled = false;
    bool minIsWhite = false;
    bool premultiplied = false;
    std::uint16_t compression = 1;
    std::uint16_t photometric = 0;
    TiffColour colour = TiffColour::Grey;
    std::vector<int> used;                // the samples that make a delivered pixel: colours, then opacity
    const std::uint16_t *palette[3] = {}; // red, green, blue; owned by libtiff
    Chromaticity white = kD50;            // of CIE Lab
    PixelForm unpacked; // bits: of the used samples once they are unpacked; channels: how many there are
    PixelForm form;     // as delivered
};

/// Opens the picture of a TIFF: its first directory that isn't marked as a reduced version, with everything checked
/// that the directory shows.
Status OpenTiffPicture(const Source &source, TiffHandle *handle, TiffLayout *layout);

/// Opens the smallest reduced version in the file, in a directory of its own or below the picture's, that can stand for
/// the picture in @p box. A failure when there is none.
Status OpenTiffReduced(const Source &source, const Box &box, TiffHandle *handle, TiffLayout *layout);

} // namespace imagefile
