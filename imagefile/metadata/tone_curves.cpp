#include "tone_curves.h"

#include "core/color_engine.h"
#include "core/memory_check.h"

#include <algorithm>

namespace imagefile {

namespace {

/// Returns the linear light of a pixel value. Interpolates tables itself, because lcms2 rounds interpolated table
/// values to 16 bits, which is coarse in the shadows; it uses floating point only for formulas.
double LightAt(const cmsToneCurve *curve, double stored)
{
    if (cmsGetToneCurveParametricType(curve) != 0)
        return static_cast<double>(cmsEvalToneCurveFloat(curve, static_cast<cmsFloat32Number>(stored)));
    const cmsUInt16Number *table = cmsGetToneCurveEstimatedTable(curve);
    const std::size_t last = cmsGetToneCurveEstimatedTableEntries(curve) - 1;
    const double at = stored * static_cast<double>(last);
    const std::size_t before = std::min(static_cast<std::size_t>(at), last == 0 ? 0 : last - 1);
    const double from = table[before], to = table[std::min(before + 1, last)];
    return (from + (at - static_cast<double>(before)) * (to - from)) / 65535.0;
}

std::vector<double> SampleCurve(const cmsToneCurve *curve, std::size_t points)
{
    std::vector<double> light(points);
    for (std::size_t i = 0; i < points; ++i)
        light[i] = LightAt(curve, static_cast<double>(i) / static_cast<double>(points - 1));
    return light;
}

} // namespace

std::vector<std::vector<double>> ToneCurves(const void *profile, std::size_t bytes, std::size_t points)
{
    const ProfilePtr opened = OpenProfile(profile, bytes);
    if (!opened || points < 2)
        return {};
    const MemoryCheck memory;
    std::vector<cmsTagSignature> tags;
    if (cmsGetColorSpace(opened.get()) == cmsSigRgbData)
        tags = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    else if (cmsGetColorSpace(opened.get()) == cmsSigGrayData)
        tags = {cmsSigGrayTRCTag};
    std::vector<std::vector<double>> curves;
    for (cmsTagSignature tag : tags) {
        const auto *curve = static_cast<const cmsToneCurve *>(cmsReadTag(opened.get(), tag)); // owned by the profile
        memory.Require();
        if (!curve)
            return {};
        curves.push_back(SampleCurve(curve, points));
    }
    return curves;
}

} // namespace imagefile
