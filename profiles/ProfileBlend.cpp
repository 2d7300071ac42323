#include "ProfileBlend.h"

#include "Framing.h"
#include "MapTables_p.h"
#include "ModelCurves_p.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

} // namespace

ProfileBlend::Part ProfileBlend::PartOf(const BlendPart &part, const ProfileModel *model) const
{
    const double stated = model ? model->focalLengthX : 1.0, focal = stated > 0.0 ? stated : part.frame.focalLength;
    return {model, part.entry->kind == ProfileEntry::Kind::Fisheye, focal * part.frame.unitPx, part.weight};
}

/// Blends centers and tangential terms. The tangential field t is quadratic, so F t(u) = t(d) / F for d = F u in
/// pixels: terms divided by their focal lengths F have the same unit and can be blended.
MapMiddle ProfileBlend::MiddleOf(const QVector<Part> &parts, const BlendParts &entries, bool scaled) const
{
    MapMiddle middle{{0.0, 0.0}, {0.0, 0.0}};
    double weights = 0.0;
    for (int i = 0; i < parts.size(); ++i) {
        const Part &part = parts[i];
        if (!part.model)
            continue;
        const PictureVector center = m_frame.CenterOf(*part.model, entries[i].frame);
        middle.center.x += part.weight * center.x;
        middle.center.y += part.weight * center.y;
        weights += part.weight;
        if (!entries[i].frame.isDirectionKnown)
            continue;
        // The field is 2 (u . t) u + |u|^2 t with the vector t = (tangential2, tangential1).
        const double unit = part.weight * (scaled ? part.model->scaleFactor : 1.0) / part.unitPx;
        const PictureVector turned = Turned(m_frame.Place().turn, {part.model->tangential2, part.model->tangential1});
        middle.tangential.x += unit * turned.x;
        middle.tangential.y += unit * turned.y;
    }
    middle.center.x /= weights;
    middle.center.y /= weights;
    return middle;
}

RadialMap ProfileBlend::Geometry(const BlendParts &entries, bool byGreen, Projection projection, double amount) const
{
    QVector<Part> parts;
    double end = kInfinite;
    for (const BlendPart &part : entries) {
        const ProfileEntry &entry = *part.entry;
        const bool isGreen = entry.green && (byGreen || !entry.geometry);
        parts.append(PartOf(part, isGreen ? &*entry.green : &*entry.geometry));
        if (parts.last().isFisheye)
            end = std::min(end, parts.last().unitPx * FisheyeEnd(*parts.last().model, projection));
    }
    const MapMiddle middle = MiddleOf(parts, entries, /*scaled=*/false);
    const auto factor = [&](double radius) {
        double sum = 0.0;
        for (const Part &part : qAsConst(parts)) {
            const double u = radius / part.unitPx;
            sum += part.weight
                * (part.isFisheye ? FisheyeFactor(*part.model, projection, u) : PerspectiveFactor(*part.model, u * u));
        }
        return sum;
    };
    return TabulateMap(middle, factor, FarthestRadius(m_pixels, middle.center, kMinZoom), end, amount);
}

RadialMap ProfileBlend::Color(const BlendParts &entries, std::optional<ProfileModel> ProfileEntry::*color,
                              double amount) const
{
    QVector<Part> parts;
    for (const BlendPart &part : entries)
        parts.append(PartOf(part, part.entry->*color ? &*(part.entry->*color) : nullptr));
    const MapMiddle middle = MiddleOf(parts, entries, /*scaled=*/true);
    const auto factor = [&](double radius) {
        double sum = 0.0;
        for (const Part &part : qAsConst(parts)) {
            const double u = radius / part.unitPx;
            sum += part.weight * (part.model ? part.model->scaleFactor * PerspectiveFactor(*part.model, u * u) : 1.0);
        }
        return sum;
    };
    return TabulateMap(middle, factor, FarthestRadius(m_pixels, middle.center, 1.0), kInfinite, amount);
}

GainMap ProfileBlend::Light(const BlendParts &entries, double amount) const
{
    QVector<Part> parts;
    for (const BlendPart &part : entries)
        parts.append(PartOf(part, &*part.entry->vignette));
    const MapMiddle middle = MiddleOf(parts, entries, /*scaled=*/false);
    const auto stops = [&](double radius) {
        double sum = 0.0;
        for (const Part &part : qAsConst(parts)) {
            const double u = radius / part.unitPx;
            sum += part.weight * std::log2(std::max(LightShare(*part.model, u * u), kMinLight));
        }
        return sum;
    };
    return TabulateGain(middle.center, stops, FarthestRadius(m_pixels, middle.center, 1.0), amount);
}
