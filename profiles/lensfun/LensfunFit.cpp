#include "LensfunFit.h"

#include "FitSteps_p.h"
#include "Framing.h"
#include "LensfunCurves.h"
#include "LensfunDatabase.h"
#include "MapTables_p.h"
#include "ModelCurves_p.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

using Curve = LensfunCurves::Curve;

/// The geometric map: from the requested projection to the lens's projection, then its distortion.
struct GeometryCurve {
    Curve factor;
    double end = kInfinite;
};

GeometryCurve GeometryOf(const LensfunCurves &curves, Projection projection)
{
    const Curve distortion = curves.distortion.value_or([](double) { return 1.0; });
    if (!curves.imageHeight)
        return {distortion, kInfinite};
    const Curve height = *curves.imageHeight;
    const double focal = curves.focalPx;
    const auto factor = [=](double radius) {
        const double u = std::max(radius / focal, 1e-6), ideal = height(AngleOf(projection, u));
        return ideal * distortion(ideal * focal) / u;
    };
    const double fold = FoldRadius([=](double angle) { return height(std::max(angle, 1e-6)) / std::max(angle, 1e-6); },
                                   /*endRadius=*/3.1); // radians: nearly the whole sphere
    return {factor, focal * RadiusOf(projection, fold)};
}

class LensfunFitting {
public:
    LensfunFitting(const LensfunMatch &match, const PictureFacts &facts, const FitOptions &options)
        : m_facts(facts), m_options(options), m_frame(facts, BodyOf(facts, options.typed))
    {
        m_result.profile = QLatin1String("lensfun:") + match.title;
        m_result.reason = match.reason;
        m_result.assumed = match.notes;
        m_result.correction.width = facts.pixels.width();
        m_result.correction.height = facts.pixels.height();
        m_match = &match;
    }

    FitResult Run()
    {
        if (!SetCurves())
            return m_result;
        const FitTasks tasks = TasksOf(m_facts, m_options);
        for (const FitTask &task : tasks) {
            if (m_leftOut.Allows(task, m_options) && !Make(task))
                m_leftOut.Add(task, WhyMissing(task));
            Check(task);
        }
        m_result.distortion = m_result.correction.geometry.has_value();
        m_result.chromatic = m_result.correction.red || m_result.correction.blue;
        m_result.vignetting = m_result.correction.light.has_value();
        NoteAgain(tasks, &m_result);
        FrameResult(m_options, m_curves.imageHeight.has_value(), &m_result);
        m_result.assumed.removeDuplicates();
        m_result.why = m_leftOut.Text();
        return m_result;
    }

private:
    bool SetCurves()
    {
        m_result.why = WhyRefused(m_facts);
        if (!m_result.why.isEmpty())
            return false;
        const Setting setting = SettingOf(m_facts, m_options.typed);
        if (!setting.focalMm) {
            m_result.why = QStringLiteral("the picture's focal length is unknown; give it with --focal");
            return false;
        }
        const PicturePlace &place = m_frame.Place();
        const double share = m_frame.FrameShare(m_match->cropFactor, &m_result.assumed);
        const auto shape = m_frame.Shape(QSizeF(), 0.0, &m_result.why);
        if (!shape)
            return false;
        m_result.assumed += shape->assumed;
        const LensfunFrame frame = {shape->longPx, shape->shortPx, m_match->cropFactor / share};
        m_curves = CurvesOf(*m_match->lens, frame,
                            {*setting.focalMm, setting.aperture.value_or(0.0), setting.distanceM.value_or(0.0)});
        m_knowsAperture = setting.aperture.has_value();
        if (m_curves.light && !setting.distanceM)
            m_result.assumed << QStringLiteral("distant subject");
        m_result.entries = QStringLiteral("at %1 mm").arg(*setting.focalMm);
        const double shift = shape->isRotated ? 0.0 : 1.0; // rotated: the direction of the center's shift is unknown
        const PictureVector turned =
            Turned(place.turn, {shift * m_curves.centerX - place.middleX, shift * m_curves.centerY - place.middleY});
        m_center = {(m_facts.pixels.width() - 1) / 2.0 + turned.x, (m_facts.pixels.height() - 1) / 2.0 + turned.y};
        return true;
    }

    /// Makes the maps of one correction; returns false if the database has no model for it.
    bool Make(const FitTask &task)
    {
        Correction &to = m_result.correction;
        if (task.quantity == Quantity::Geometry && (m_curves.distortion || m_curves.imageHeight)) {
            const GeometryCurve geometry = GeometryOf(m_curves, m_options.projection);
            to.geometry = Map(geometry.factor, kMinZoom, geometry.end, task.amount);
            return true;
        }
        if (task.quantity == Quantity::Color && (m_curves.red || m_curves.blue)) {
            if (m_curves.red)
                to.red = Map(*m_curves.red, 1.0, kInfinite, task.amount);
            if (m_curves.blue)
                to.blue = Map(*m_curves.blue, 1.0, kInfinite, task.amount);
            return true;
        }
        if (task.quantity == Quantity::Light && m_curves.light) {
            const Curve light = *m_curves.light;
            to.light = TabulateGain(
                m_center, [light](double radius) { return std::log2(std::max(light(radius), kMinLight)); },
                FarthestRadius(m_facts.pixels, m_center, 1.0), task.amount);
            return true;
        }
        return false;
    }

    /// Removes unusable maps, which may come from lenses that the user added to the database.
    void Check(const FitTask &task)
    {
        Correction &to = m_result.correction;
        QVector<std::pair<const char *, std::optional<RadialMap> *>> maps;
        if (task.quantity == Quantity::Geometry)
            maps = {{"it", &to.geometry}};
        else if (task.quantity == Quantity::Color)
            maps = {{"red", &to.red}, {"blue", &to.blue}};
        for (const auto &[name, map] : qAsConst(maps)) {
            const QString why = *map ? WhyUseless(**map, m_facts.pixels) : QString();
            if (why.isEmpty())
                continue;
            m_leftOut.Add(task, QStringLiteral("lensfun's model for %1 %2").arg(QLatin1String(name), why));
            for (const auto &each : qAsConst(maps))
                each.second->reset();
        }
    }

    RadialMap Map(const Curve &factor, double shrink, double end, double amount) const
    {
        return TabulateMap({m_center, {0.0, 0.0}}, factor, FarthestRadius(m_facts.pixels, m_center, shrink), end,
                           amount);
    }

    QString WhyMissing(const FitTask &task) const
    {
        return task.quantity == Quantity::Light && !m_knowsAperture
            ? QStringLiteral("the picture's aperture is unknown")
            : QStringLiteral("lensfun has no model for it with this lens");
    }

    const PictureFacts &m_facts;
    const FitOptions &m_options;
    const PictureFrame m_frame;
    const LensfunMatch *m_match;
    LensfunCurves m_curves;
    PictureVector m_center{0.0, 0.0};
    bool m_knowsAperture = false;
    FitResult m_result;
    LeftOut m_leftOut;
};

} // namespace

FitResult FitByLensfun(const PictureFacts &facts, const FitOptions &options)
{
    const LensfunMatch match = LensfunDatabase::Instance().Find(facts);
    if (match.lens)
        return LensfunFitting(match, facts, options).Run();
    FitResult result;
    result.why = match.reason;
    result.nearest = match.nearest;
    return result;
}
