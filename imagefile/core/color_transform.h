// From inks and Lab to RGB.
#pragma once

#include "metadata/metadata.h"

#include <memory>

namespace imagefile {

/// How samples that are to become RGB are coded, over the full range of their type.
enum class ColourCoding {
    Cmyk, // full range: all of the ink
    Lab,  // lightness 0 to 100; a and b from -128 to 127 (ICC version 4)
};

/// One kind of conversion, to sRGB. By lcms2 for Lab, and for inks that come with their profile; inks without one, or
/// with one that lcms2 can't use, are paper white times what each of them leaves.
class ColourTransform {
public:
    ColourTransform();
    ~ColourTransform();

    /// @p profile: of the inks, may be empty or of anything else; @p bits: 8, 16 or 32, for Lab 8 or 16; @p hasAlpha: a
    /// sample of opacity follows the colours, on both sides.
    Status Start(ColourCoding coding, const Bytes &profile, int bits, bool hasAlpha);

    /// Converts @p width pixels: four inks or three of Lab to three of RGB, of the same depth.
    void Row(const void *src, void *dst, std::size_t width);

private:
    struct Engine;
    template <class T> void MixInks(const T *src, T *dst, std::size_t width) const;

    std::unique_ptr<Engine> m_engine; // null for the plain formula
    int m_bits = 8;
    bool m_hasAlpha = false;
    std::vector<float> m_percent;
};

} // namespace imagefile
