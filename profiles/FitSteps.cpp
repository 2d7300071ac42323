#include "FitSteps_p.h"

#include "CorrectionTwin.h"
#include "Framing.h"
#include "LensName.h"

#include <algorithm>
#include <cmath>

namespace {

/// Returns the value typed by the user, otherwise the one read from the file; nullopt if neither is above 0.
std::optional<double> TypedOrRead(const std::optional<double> &typed, const Fact<double> &fact)
{
    if (typed && *typed > 0.0)
        return typed;
    if (fact.Known() && fact.value > 0.0)
        return fact.value;
    return std::nullopt;
}

/// Returns whether a corner of the source is farther from the center than the geometric map reaches.
bool ExtendsBeyondMap(const Correction &correction)
{
    if (!correction.geometry)
        return false;
    const RadialMap &map = *correction.geometry;
    const double endSquared = map.endRadius * map.endRadius;
    if (!(endSquared <= map.factor.EndSquared())) // the table ends first: no framing shows more
        return false;
    const double reach = map.endRadius * map.factor.AtSquared(endSquared);
    return std::hypot(std::max(map.centerX, correction.width - 1.0 - map.centerX),
                      std::max(map.centerY, correction.height - 1.0 - map.centerY))
        > reach;
}

} // namespace

Setting SettingOf(const PictureFacts &facts, const TypedFacts &typed)
{
    Setting setting;
    setting.focalMm = TypedOrRead(typed.focalMm, facts.focalMm);
    setting.aperture = TypedOrRead(typed.aperture, facts.aperture);
    setting.distanceM = TypedOrRead(typed.distanceM, facts.distanceM);
    if (setting.focalMm && std::isinf(*setting.focalMm))
        setting.focalMm.reset();
    if (setting.aperture && std::isinf(*setting.aperture))
        setting.aperture.reset();
    return setting;
}

QString WhyRefused(const PictureFacts &facts)
{
    if (facts.pixels.isEmpty())
        return QStringLiteral("the picture's size is unknown");
    if (facts.cropTurned)
        return QStringLiteral("the picture was cropped at an angle, so the center of its lens is unknown");
    if (facts.cropLost)
        return QStringLiteral("the picture was cropped, and its place in the original can't be read "
                              "(XMP crs:CropLeft, CropTop, CropRight, CropBottom)");
    return QString();
}

PictureBody BodyOf(const PictureFacts &facts, const TypedFacts &typed)
{
    if (typed.body.isEmpty())
        return {facts.make.value, facts.model.value};
    const QString body = typed.body.simplified(), first = body.section(QLatin1Char(' '), 0, 0);
    const bool namesMaker = first != body && IsMakerName(first);
    return {namesMaker ? first : facts.make.value, body};
}

/// Clamps an amount to the range from 0 to kMaxAmount.
static double Amount(double requested)
{
    return std::clamp(requested, 0.0, kMaxAmount);
}

FitTasks TasksOf(const PictureFacts &facts, const FitOptions &options)
{
    return {{
        {Quantity::Geometry, "distortion", options.distortion, Amount(options.amountDistortion), facts.distortionDone,
         facts.distortionTried},
        {Quantity::Color, "lateral color", options.chromatic, Amount(options.amountChromatic), facts.chromaticDone,
         facts.chromaticTried},
        {Quantity::Light, "vignetting", options.vignetting, Amount(options.amountVignetting), facts.vignettingDone,
         facts.vignettingTried},
    }};
}

bool LeftOut::Allows(const FitTask &task, const FitOptions &options)
{
    if (!task.isWanted)
        return false;
    const bool isChosen = !options.profile.isEmpty(); // an explicit choice overrides earlier corrections
    const bool mayRepeat = options.again || isChosen;
    if (task.done.value && !mayRepeat)
        Add(task, QStringLiteral("corrected before (%1)").arg(task.done.source));
    else if (task.tried && !mayRepeat)
        Add(task, QStringLiteral("an earlier run couldn't correct it (XMP vitrelux:Requested)"));
    else if (!(task.amount > 0.0))
        Add(task, QStringLiteral("its amount is 0"));
    else
        return true;
    return false;
}

void LeftOut::Add(const FitTask &task, const QString &why)
{
    const QString name = QLatin1String(task.name);
    for (auto &reason : m_reasons) {
        if (reason.second == why) {
            reason.first += QStringLiteral(", ") + name;
            return;
        }
    }
    m_reasons.append({name, why});
}

QString LeftOut::Text() const
{
    QStringList reasons;
    for (const auto &reason : m_reasons)
        reasons << QStringLiteral("%1: %2").arg(reason.first, reason.second);
    return reasons.join(QStringLiteral("; "));
}

void NoteAgain(const FitTasks &tasks, FitResult *result)
{
    const bool made[] = {result->distortion, result->chromatic, result->vignetting};
    for (std::size_t i = 0; i < tasks.size(); ++i)
        if (made[i] && tasks[i].done.value)
            result->assumed << QStringLiteral("%1 corrected again, although already corrected (%2)")
                                   .arg(QLatin1String(tasks[i].name), tasks[i].done.source);
}

QString WhyUseless(const RadialMap &map, const QSize &pixels)
{
    constexpr int kCells = 32;
    constexpr double kMinShare = 0.05; // strong fisheyes and zoomed crops keep more
    Correction alone;
    alone.width = pixels.width();
    alone.height = pixels.height();
    alone.geometry = map;
    const CorrectionTwin twin(alone);
    int kept = 0, folded = 0;
    for (int y = 0; y < kCells; ++y) {
        for (int x = 0; x < kCells; ++x) {
            const SourcePlaces places =
                twin.At((x + 0.5) / kCells * pixels.width() - 0.5, (y + 0.5) / kCells * pixels.height() - 0.5);
            kept += !twin.IsEmpty(places);
            folded += places.folded;
        }
    }
    constexpr int kAll = kCells * kCells;
    if (kept >= kMinShare * kAll)
        return QString();
    const QString text = QStringLiteral("leaves %1 % of the picture").arg(100.0 * kept / kAll, 0, 'f', 0);
    return folded >= kAll / 2
        ? text + QStringLiteral(": it folds back %1 px from the center").arg(map.endRadius, 0, 'f', 0)
        : text + QStringLiteral(": the rest lies outside the photograph");
}

void FrameResult(const FitOptions &options, bool isFisheye, FitResult *result)
{
    Correction &correction = result->correction;
    if (isFisheye && options.projection == Projection::Rectilinear && ExtendsBeyondMap(correction))
        result->assumed << QStringLiteral("the photograph extends beyond 85 degrees from the axis, where rectilinear "
                                          "pictures end; other projections show more");
    const FramingZoom framing = ZoomFor(correction, options.framing, options.framingFactor);
    correction.zoom = result->zoom = framing.zoom;
    if (framing.isBounded)
        result->assumed << QStringLiteral("framing limited to a zoom of %1").arg(framing.zoom);
    if (!correction.ChangesPositions())
        return;
    result->fieldShare = FieldShare(correction);
    result->leavesEmpty = !framing.isFull && LeavesEmpty(correction);
}
