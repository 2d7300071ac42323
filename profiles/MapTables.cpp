#include "MapTables_p.h"

#include "ModelCurves_p.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kTolerancePx = 0.0005;
constexpr double kToleranceGain = 1e-5; // relative
constexpr double kMarginPx = 16.0;      // beyond the picture, for bilinear neighbors and for lateral color at the edges

} // namespace

double FarthestRadius(const QSize &pixels, const PictureVector &center, double shrink)
{
    const double middleX = (pixels.width() - 1) / 2.0, middleY = (pixels.height() - 1) / 2.0;
    return std::hypot(pixels.width() / 2.0 / shrink + std::abs(center.x - middleX),
                      pixels.height() / 2.0 / shrink + std::abs(center.y - middleY))
        + kMarginPx;
}

RadialMap TabulateMap(const MapMiddle &middle, const std::function<double(double)> &factor, double reach, double end,
                      double amount)
{
    const auto shared = [&](double radius) { return 1.0 + amount * (factor(radius) - 1.0); };
    RadialMap map;
    map.centerX = middle.center.x;
    map.centerY = middle.center.y;
    map.tangential1 = amount * middle.tangential.y;
    map.tangential2 = amount * middle.tangential.x;
    const double last = std::min(reach, end);
    const double fold = std::min(FoldRadius(factor, last), FoldRadius(shared, last));
    if (fold < reach)
        map.endRadius = fold;
    map.factor = Tabulate(shared, fold, [](double radius) { return kTolerancePx / std::max(radius, 1.0); });
    return map;
}

GainMap TabulateGain(const PictureVector &center, const std::function<double(double)> &stops, double reach,
                     double amount)
{
    const auto gain = [&](double radius) {
        return std::clamp(std::exp2(-amount * stops(radius)), 1.0, 1.0 / kMinLight);
    };
    GainMap map;
    map.centerX = center.x;
    map.centerY = center.y;
    map.gain = Tabulate(gain, reach, [&gain](double radius) { return kToleranceGain * gain(radius); });
    return map;
}
