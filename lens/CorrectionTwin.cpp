#include "CorrectionTwin.h"

#include <algorithm>
#include <cmath>

namespace {

using Point = SourcePlaces::Point;

double EndOf(const std::optional<RadialMap> &map)
{
    return map ? std::min(map->endRadius, std::sqrt(map->factor.EndSquared())) : 0.0;
}

/// Applies @p map to @p from and updates the distance to the map's end in @p places.
Point Mapped(const RadialMap &map, double end, const Point &from, SourcePlaces *places)
{
    const double dx = from.x - map.centerX, dy = from.y - map.centerY;
    const double squared = dx * dx + dy * dy, factor = map.factor.AtSquared(squared);
    const double radius = std::sqrt(squared);
    places->folded |= radius > map.endRadius;
    places->toEnd = std::min(places->toEnd, end - radius);
    const double t1 = map.tangential1, t2 = map.tangential2;
    return {map.centerX + factor * dx + (2.0 * dx * dx + squared) * t2 + 2.0 * dx * dy * t1,
            map.centerY + factor * dy + (2.0 * dy * dy + squared) * t1 + 2.0 * dx * dy * t2};
}

double GainAt(const GainMap &map, double end, const Point &at, SourcePlaces *places)
{
    const double dx = at.x - map.centerX, dy = at.y - map.centerY, squared = dx * dx + dy * dy;
    places->toEnd = std::min(places->toEnd, end - std::sqrt(squared));
    return std::clamp(map.gain.AtSquared(squared), 1.0, kMaxGain); // the cubic overshoots at steep nodes
}

Point Framed(const Correction &correction, double x, double y)
{
    const double middleX = (correction.width - 1) / 2.0, middleY = (correction.height - 1) / 2.0;
    return {middleX + (x - middleX) / correction.zoom, middleY + (y - middleY) / correction.zoom};
}

} // namespace

CorrectionTwin::CorrectionTwin(const Correction &correction)
    : m_correction(correction),
      m_geometryEnd(EndOf(correction.geometry)),
      m_redEnd(EndOf(correction.red)),
      m_blueEnd(EndOf(correction.blue)),
      m_lightEnd(correction.light ? std::sqrt(correction.light->gain.EndSquared()) : 0.0)
{
}

SourcePlaces CorrectionTwin::At(double x, double y) const
{
    const Correction &c = m_correction;
    SourcePlaces places;
    const Point a = Framed(c, x, y), g = c.geometry ? Mapped(*c.geometry, m_geometryEnd, a, &places) : a;
    places.green = g;
    places.red = c.red ? Mapped(*c.red, m_redEnd, g, &places) : g;
    places.blue = c.blue ? Mapped(*c.blue, m_blueEnd, g, &places) : g;
    if (c.light)
        places.gain = GainAt(*c.light, m_lightEnd, g, &places);
    return places;
}

bool CorrectionTwin::Contains(const Point &place) const
{
    return place.x >= -kBorderPixels && place.x <= m_correction.width - 1 + kBorderPixels && place.y >= -kBorderPixels
        && place.y <= m_correction.height - 1 + kBorderPixels; // false for NaN
}

bool CorrectionTwin::IsEmpty(const SourcePlaces &places) const
{
    return places.folded || !Contains(places.red) || !Contains(places.green) || !Contains(places.blue);
}

bool CorrectionTwin::LeavesEmpty() const
{
    const int right = m_correction.width - 1, bottom = m_correction.height - 1;
    for (int x = 0; x <= right; ++x)
        if (IsEmpty(At(x, 0)) || IsEmpty(At(x, bottom)))
            return true;
    for (int y = 0; y <= bottom; ++y)
        if (IsEmpty(At(0, y)) || IsEmpty(At(right, y)))
            return true;
    return false;
}
