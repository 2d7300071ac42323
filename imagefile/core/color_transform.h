// Conversion from CMYK and Lab to RGB.
#pragma once

#include "bytes.h"
#include "status.h"

#include <array>
#include <memory>

namespace imagefile {

/// The color of a light, as CIE 1931 x and y.
struct Chromaticity {
    double x, y;
};
/// The white point of ICC's Lab, and of TIFF's unless a file specifies another (Adobe's TIFF technical note).
constexpr Chromaticity kD50 = {0.3457, 0.3585};

/// One conversion to sRGB with lcms2. Samples use the full range of their type. CMYK without a profile that lcms2 can
/// use is converted by formula: red is (1 - cyan) (1 - black), and so on.
class ColorTransform {
public:
    ColorTransform();
    ~ColorTransform();

    /// Prepares the conversion of CMYK, where the maximum means full ink. @p profile: may be empty or invalid; @p bits:
    /// 8, 16 or 32; @p hasAlpha: an opacity sample follows the colors, in source and target.
    Status StartInks(const Bytes &profile, int bits, bool hasAlpha);
    /// Prepares the conversion of Lab relative to the white point @p white: L* from 0 to 100, a* and b* from -128 to
    /// 127 (ICC version 4). @p bits: 8 or 16. White maps to white; other colors are adapted by the Bradford matrix.
    Status StartLab(Chromaticity white, int bits, bool hasAlpha);

    /// Converts @p width pixels from CMYK or Lab to RGB of the same depth.
    void Row(const void *src, void *dst, std::size_t width);

private:
    struct Engine;
    template <class T> void MixInks(const T *src, T *dst, std::size_t width) const;
    template <class T> void AdaptRow(const T *src, T *dst, std::size_t width);

    std::unique_ptr<Engine> m_engine; // null for the plain formula
    int m_bits = 8;
    bool m_hasAlpha = false;
    std::vector<float> m_percent;
    std::array<double, 3> m_white = {};                // XYZ of the white point if it isn't D50
    std::array<std::array<double, 3>, 3> m_toD50 = {}; // XYZ relative to m_white to XYZ relative to D50
    std::vector<double> m_lab;                         // a row adapted to D50; empty if the white is D50
};

} // namespace imagefile
