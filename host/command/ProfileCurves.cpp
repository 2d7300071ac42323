#include "ProfileCurves.h"

#include "FitText_p.h"
#include "ModelCurves_p.h"
#include "PictureFrame.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <functional>

namespace {

constexpr int kSteps = 100;
// Curves end at these bounds: larger values mean that a profile is wrong, and would flatten the other curves.
constexpr double kMaxPercent = 200.0, kMaxPixels = 1000.0, kMaxEv = 8.0;

/// Scale of an entry's models in the plotted frame.
struct CurveFrame {
    double unitPx = 0.0;       // long side of the profile's frame, in pixels of the plotted frame
    double focalLength = 0.0;  // for models without one, in units of that long side
    double halfDiagonal = 0.0; // of the plotted frame, in pixels; 0: unknown
};

CurveFrame OwnFrame(const ProfileEntry &entry)
{
    return {std::max(entry.width, entry.height), 0.0, std::hypot(entry.width, entry.height) / 2.0};
}

CurveFrame FrameOf(const ProfileEntry &entry, const ProfileFit &fit)
{
    QString why;
    const PictureFrame frame(fit.facts, {fit.facts.make.value, fit.facts.model.value});
    const auto entryFrame = frame.ForEntry(entry, /*chosen=*/true, &why);
    if (!entryFrame)
        return {};
    return {entryFrame->unitPx, entryFrame->focalLength,
            std::hypot(fit.facts.pixels.width(), fit.facts.pixels.height()) / 2.0};
}

/// Samples @p value, a function of the radius in pixels, up to @p end or to the first value beyond @p most.
ProfileCurve Sampled(double halfDiagonal, double end, double most, const std::function<double(double)> &value)
{
    ProfileCurve curve;
    for (int i = 0; i <= kSteps; ++i) {
        const double share = double(i) / kSteps, radius = share * halfDiagonal;
        const double here = radius <= end ? value(radius) : HUGE_VAL;
        if (!(std::abs(here) <= most))
            break;
        curve.append({share, here});
    }
    return curve;
}

double UnitOf(const ProfileModel &model, const CurveFrame &frame)
{
    return (model.focalLengthX > 0.0 ? model.focalLengthX : frame.focalLength) * frame.unitPx;
}

ProfileCurve Distortion(const ProfileModel &model, bool isFisheye, const CurveFrame &frame)
{
    const double unit = UnitOf(model, frame), end = frame.halfDiagonal / unit;
    const auto factor = [&](double u) {
        return isFisheye ? FisheyeFactor(model, Projection::Equidistant, u) : PerspectiveFactor(model, u * u);
    };
    const double fold = isFisheye ? FisheyeEnd(model, Projection::Equidistant) : FoldRadius(factor, end);
    return Sampled(frame.halfDiagonal, fold < end ? fold * unit : HUGE_VAL, kMaxPercent,
                   [&](double radius) { return 100.0 * (factor(radius / unit) - 1.0); });
}

ProfileCurve Shift(const std::optional<ProfileModel> &model, const CurveFrame &frame)
{
    if (!model)
        return {};
    const double unit = UnitOf(*model, frame);
    return Sampled(frame.halfDiagonal, HUGE_VAL, kMaxPixels, [&](double radius) {
        const double u = radius / unit;
        return radius * (model->scaleFactor * PerspectiveFactor(*model, u * u) - 1.0);
    });
}

ProfileCurve Light(const std::optional<ProfileModel> &model, const CurveFrame &frame)
{
    if (!model)
        return {};
    const double unit = UnitOf(*model, frame);
    return Sampled(frame.halfDiagonal, HUGE_VAL, kMaxEv, [&](double radius) {
        const double u = radius / unit;
        return std::log2(LightShare(*model, u * u)); // zero and negative values are not plotted
    });
}

/// Returns the curves of an entry.
/// @param byGreen  whether to use green's model, if any, like a fit that corrects color.
ProfileCurves CurvesOf(const ProfileEntry &entry, const CurveFrame &frame, bool byGreen)
{
    ProfileCurves curves;
    curves.name = EntryText(entry);
    curves.focalMm = entry.focalMm;
    const auto &geometry = entry.green && (byGreen || !entry.geometry) ? entry.green : entry.geometry;
    if (geometry)
        curves.distortion = Distortion(*geometry, entry.kind == ProfileEntry::Kind::Fisheye, frame);
    curves.red = Shift(entry.redGreen, frame);
    curves.blue = Shift(entry.blueGreen, frame);
    curves.light = Light(entry.vignette, frame);
    return curves;
}

ProfileCurve CurveOfMap(const std::optional<RadialMap> &map, double halfDiagonal, double most, bool inPercent)
{
    if (!map)
        return {};
    const double end = std::min(map->endRadius, std::sqrt(map->factor.EndSquared()));
    return Sampled(halfDiagonal, end, most, [&](double radius) {
        return (map->factor.AtSquared(radius * radius) - 1.0) * (inPercent ? 100.0 : radius);
    });
}

} // namespace

QVector<ProfileCurves> CurvesOfEntries(const LensProfile &profile, const ProfileFit *fit)
{
    const int step = (profile.entries.size() + kMaxPlottedEntries - 1) / kMaxPlottedEntries;
    QVector<ProfileCurves> all;
    for (int i = 0; i < profile.entries.size(); i += step) {
        const ProfileEntry &entry = profile.entries[i];
        const CurveFrame frame = fit ? FrameOf(entry, *fit) : OwnFrame(entry);
        if (!(frame.halfDiagonal > 0.0))
            continue;
        const ProfileCurves curves = CurvesOf(entry, frame, fit && fit->result.chromatic);
        if (!curves.distortion.isEmpty() || !curves.red.isEmpty() || !curves.blue.isEmpty() || !curves.light.isEmpty())
            all.append(curves);
    }
    return all;
}

ProfileCurves CurvesOfBlend(const LensProfile &profile, const ProfileFit &fit)
{
    FitOptions options;
    options.profile = profile.path;
    options.framing = Framing::Keep;
    options.projection = Projection::Equidistant; // like the plotted entries
    const Correction correction = Fit(profile, fit.facts, options).correction;
    const double half = std::hypot(correction.width, correction.height) / 2.0;
    ProfileCurves curves;
    curves.name = QStringLiteral("blend for ") + QFileInfo(fit.picture).fileName();
    curves.distortion = CurveOfMap(correction.geometry, half, kMaxPercent, true);
    curves.red = CurveOfMap(correction.red, half, kMaxPixels, false);
    curves.blue = CurveOfMap(correction.blue, half, kMaxPixels, false);
    if (correction.light)
        curves.light = Sampled(half, std::sqrt(correction.light->gain.EndSquared()), kMaxEv, [&](double radius) {
            return -std::log2(correction.light->gain.AtSquared(radius * radius));
        });
    return curves;
}
