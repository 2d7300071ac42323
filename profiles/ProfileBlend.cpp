#include "ProfileBlend.h"

#include "Framing.h"
#include "ModelCurves_p.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kTolerancePx = 0.0005;
constexpr double kToleranceGain = 1e-5;  // as a share
constexpr double kLeastLight = 1.0 / 16; // 4 EV

constexpr double kMarginPx = 16.0; // beyond the picture: bilinear neighbors and lateral color of the edges

constexpr double kInfinite = std::numeric_limits<double>::infinity();

} // namespace

ProfileBlend::Part ProfileBlend::PartOf(const BlendPart &part, const ProfileModel *model) const
{
    const double stated = model ? model->focalLengthX : 1.0, focal = stated > 0.0 ? stated : part.frame.focalLength;
    return {model, part.entry->kind == ProfileEntry::Kind::Fisheye, focal * part.frame.unitPx, part.weight};
}

/// Center and tangential terms. F t(u) = t(d) / F: terms over their focal lengths have one unit and can be blended.
ProfileBlend::Middle ProfileBlend::MiddleOf(const QVector<Part> &parts, const BlendParts &of, bool scaled) const
{
    Middle middle{{0.0, 0.0}, {0.0, 0.0}};
    double weights = 0.0;
    for (int i = 0; i < parts.size(); ++i) {
        const Part &part = parts[i];
        if (!part.model)
            continue;
        const PictureVector center = m_frame.CenterOf(*part.model, of[i].frame);
        middle.center.x += part.weight * center.x;
        middle.center.y += part.weight * center.y;
        weights += part.weight;
        if (!of[i].frame.tangential)
            continue;
        // The field 2 (u . t) u + |u|^2 t belongs to the vector t = (tangential2, tangential1).
        const double unit = part.weight * (scaled ? part.model->scaleFactor : 1.0) / part.unitPx;
        const PictureVector turned = Turned(m_frame.Place().turn, {part.model->tangential2, part.model->tangential1});
        middle.tangential.x += unit * turned.x;
        middle.tangential.y += unit * turned.y;
    }
    middle.center.x /= weights;
    middle.center.y /= weights;
    return middle;
}

/// From the center to the farthest corner of the picture after it was made smaller about its middle.
double ProfileBlend::FarthestRadius(const PictureVector &center, double shrink) const
{
    const double middleX = (m_pixels.width() - 1) / 2.0, middleY = (m_pixels.height() - 1) / 2.0;
    return std::hypot(m_pixels.width() / 2.0 / shrink + std::abs(center.x - middleX),
                      m_pixels.height() / 2.0 / shrink + std::abs(center.y - middleY))
        + kMarginPx;
}

RadialMap ProfileBlend::MapOf(const Middle &middle, const std::function<double(double)> &factor, double reach,
                              double end, double amount) const
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

RadialMap ProfileBlend::Geometry(const BlendParts &of, bool byGreen, Projection projection, double amount) const
{
    QVector<Part> parts;
    double end = kInfinite;
    for (const BlendPart &part : of) {
        const ProfileEntry &entry = *part.entry;
        const bool isGreen = entry.green && (byGreen || !entry.geometry);
        parts.append(PartOf(part, isGreen ? &*entry.green : &*entry.geometry));
        if (parts.last().isFisheye)
            end = std::min(end, parts.last().unitPx * FisheyeEnd(*parts.last().model, projection));
    }
    const Middle middle = MiddleOf(parts, of, /*scaled=*/false);
    const auto factor = [&](double radius) {
        double sum = 0.0;
        for (const Part &part : qAsConst(parts)) {
            const double u = radius / part.unitPx;
            sum += part.weight
                * (part.isFisheye ? FisheyeFactor(*part.model, projection, u) : PerspectiveFactor(*part.model, u * u));
        }
        return sum;
    };
    return MapOf(middle, factor, FarthestRadius(middle.center, kLeastZoom), end, amount);
}

RadialMap ProfileBlend::Color(const BlendParts &of, std::optional<ProfileModel> ProfileEntry::*color,
                              double amount) const
{
    QVector<Part> parts;
    for (const BlendPart &part : of)
        parts.append(PartOf(part, part.entry->*color ? &*(part.entry->*color) : nullptr));
    const Middle middle = MiddleOf(parts, of, /*scaled=*/true);
    const auto factor = [&](double radius) {
        double sum = 0.0;
        for (const Part &part : qAsConst(parts)) {
            const double u = radius / part.unitPx;
            sum += part.weight * (part.model ? part.model->scaleFactor * PerspectiveFactor(*part.model, u * u) : 1.0);
        }
        return sum;
    };
    return MapOf(middle, factor, FarthestRadius(middle.center, 1.0), kInfinite, amount);
}

GainMap ProfileBlend::Light(const BlendParts &of, double amount) const
{
    QVector<Part> parts;
    for (const BlendPart &part : of)
        parts.append(PartOf(part, &*part.entry->vignette));
    const Middle middle = MiddleOf(parts, of, /*scaled=*/false);
    const auto gain = [&](double radius) {
        double stops = 0.0;
        for (const Part &part : qAsConst(parts)) {
            const double u = radius / part.unitPx;
            stops += part.weight * std::log2(std::max(LightShare(*part.model, u * u), kLeastLight));
        }
        return std::clamp(std::exp2(-amount * stops), 1.0, 1.0 / kLeastLight);
    };
    GainMap map;
    map.centerX = middle.center.x;
    map.centerY = middle.center.y;
    const double reach = FarthestRadius(middle.center, 1.0);
    map.gain = Tabulate(gain, reach, [&gain](double radius) { return kToleranceGain * gain(radius); });
    return map;
}
