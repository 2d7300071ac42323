#include "primaries.h"

#include "core/color_engine.h"

#include <cmath>

namespace imagefile {

namespace {

const cmsCIEXYZ *ColorTag(cmsHPROFILE profile, cmsTagSignature tag)
{
    return static_cast<const cmsCIEXYZ *>(cmsReadTag(profile, tag)); // owned by the profile
}

using Matrix = cmsFloat64Number[9]; // row-major

/// Returns the color that the matrix maps to D50, by Cramer's rule; D50 if the matrix can't be inverted.
cmsCIEXYZ MappedToD50(const Matrix &m)
{
    const cmsCIEXYZ d50 = *cmsD50_XYZ();
    const double right[3] = {d50.X, d50.Y, d50.Z};
    const auto determinant = [&](int replaced) {
        const auto at = [&](int row, int column) { return column == replaced ? right[row] : m[3 * row + column]; };
        return at(0, 0) * (at(1, 1) * at(2, 2) - at(1, 2) * at(2, 1))
            - at(0, 1) * (at(1, 0) * at(2, 2) - at(1, 2) * at(2, 0))
            + at(0, 2) * (at(1, 0) * at(2, 1) - at(1, 1) * at(2, 0));
    };
    constexpr int kNone = 3;
    const double whole = determinant(kNone);
    if (!(std::abs(whole) > 1e-9))
        return d50;
    return {determinant(0) / whole, determinant(1) / whole, determinant(2) / whole};
}

/// Returns the white point before adaptation to D50 (ICC.1:2010, annex E): from the adaptation matrix if there is one,
/// otherwise the media white point of a profile older than version 4; without either, D50.
cmsCIEXYZ WhiteOf(cmsHPROFILE profile)
{
    if (const auto *matrix = static_cast<const Matrix *>(cmsReadTag(profile, cmsSigChromaticAdaptationTag)))
        return MappedToD50(*matrix);
    const cmsCIEXYZ *white = ColorTag(profile, cmsSigMediaWhitePointTag);
    const bool isAdapted = cmsGetEncodedICCversion(profile) >= 0x4000000;
    return white && !isAdapted ? *white : *cmsD50_XYZ();
}

bool ToChromaticity(const cmsCIEXYZ &color, Chromaticity *result)
{
    const double sum = color.X + color.Y + color.Z;
    *result = {color.X / sum, color.Y / sum};
    return std::isfinite(result->x) && std::isfinite(result->y);
}

} // namespace

std::optional<Primaries> PrimariesOf(const Bytes &icc)
{
    const ProfilePtr profile = OpenProfile(icc.data(), icc.size());
    if (!profile || cmsGetColorSpace(profile.get()) != cmsSigRgbData)
        return std::nullopt;
    const cmsCIEXYZ white = WhiteOf(profile.get());
    Primaries primaries = {};
    bool isGood = ToChromaticity(white, &primaries.white);
    const std::pair<cmsTagSignature, Chromaticity *> colors[] = {{cmsSigRedColorantTag, &primaries.red},
                                                                 {cmsSigGreenColorantTag, &primaries.green},
                                                                 {cmsSigBlueColorantTag, &primaries.blue}};
    for (const auto &[tag, color] : colors) {
        const cmsCIEXYZ *adapted = ColorTag(profile.get(), tag);
        cmsCIEXYZ own = {};
        isGood = isGood && adapted && cmsAdaptToIlluminant(&own, cmsD50_XYZ(), &white, adapted)
            && ToChromaticity(own, color);
    }
    return isGood ? std::optional(primaries) : std::nullopt;
}

} // namespace imagefile
