#include "ProfileCheck_p.h"

#include "ModelCurves_p.h"
#include "ProfileGrid.h"

#include <QPair>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

/// Returns the distance from the model's center to the farthest corner of the entry's frame, in focal lengths; 0 if
/// unknown.
double CornerRadius(const ProfileEntry &entry, const ProfileModel &model)
{
    if (!(model.focalLengthX > 0.0) || !(entry.width > 0.0) || !(entry.height > 0.0))
        return 0.0;
    const double unit = std::max(entry.width, entry.height) * model.focalLengthX;
    return std::hypot((0.5 + std::abs(model.centerX - 0.5)) * entry.width,
                      (0.5 + std::abs(model.centerY - 0.5)) * entry.height)
        / unit;
}

QString Share(double part, double whole)
{
    return QStringLiteral("%1 %").arg(100.0 * part / whole, 0, 'f', 0);
}

class Check {
public:
    Check(LensProfile *profile, int entry) : m_profile(profile), m_index(entry), m_entry(profile->entries[entry]) { }

    void Run()
    {
        CheckFrame();
        if (m_entry.geometry)
            CheckGeometry(*m_entry.geometry, "distortion");
        if (m_entry.green)
            CheckGeometry(*m_entry.green, "green");
        CheckPerspective(m_entry.redGreen, "red");
        CheckPerspective(m_entry.blueGreen, "blue");
        if (m_entry.redGreen.has_value() != m_entry.blueGreen.has_value())
            Note(QStringLiteral("a model for %1 but none for %2")
                     .arg(QLatin1String(m_entry.redGreen ? "red" : "blue"),
                          QLatin1String(m_entry.redGreen ? "blue" : "red")));
        CheckLight();
    }

private:
    void Note(const QString &text) { AddNote(m_profile, m_entry.line, m_index, text); }

    void CheckFrame()
    {
        if (!(m_entry.width > 0.0) || !(m_entry.height > 0.0))
            Note(QStringLiteral("the size of the calibrated picture (ImageWidth, ImageLength) is missing"));
        else if (!(m_entry.sensorFormatFactor > 0.0) && m_entry.model.isEmpty() && m_entry.uniqueModel.isEmpty())
            Note(QStringLiteral("neither SensorFormatFactor nor a camera: the frame is unknown"));
        if (!(m_entry.focalMm > 0.0))
            Note(QStringLiteral("no focal length"));
    }

    /// Notes an unused ScaleFactor: only lateral color is scaled.
    void NoteScale(const ProfileModel &model, const char *name)
    {
        if (model.scaleFactor != 1.0)
            Note(QStringLiteral("the ScaleFactor of %1 isn't used").arg(QLatin1String(name)));
    }

    void NoteFold(double fold, double corner, const char *name)
    {
        if (corner > 0.0 && fold < corner)
            Note(QStringLiteral("%1 folds back within the frame, at %2 of the way to the corner")
                     .arg(QLatin1String(name), Share(fold, corner)));
    }

    void CheckPerspective(const std::optional<ProfileModel> &model, const char *name)
    {
        if (!model)
            return;
        const double corner = CornerRadius(m_entry, *model);
        NoteFold(FoldRadius([&](double radius) { return PerspectiveFactor(*model, radius * radius); }, corner), corner,
                 name);
    }

    void CheckGeometry(const ProfileModel &model, const char *name)
    {
        NoteScale(model, name);
        if (m_entry.kind == ProfileEntry::Kind::Perspective)
            return CheckPerspective(model, name);
        // The model reaches no source radius beyond that of the fold.
        const double fold = FisheyeEnd(model, Projection::Equidistant);
        NoteFold(fold * FisheyeFactor(model, Projection::Equidistant, fold), CornerRadius(m_entry, model), name);
    }

    void CheckLight()
    {
        if (!m_entry.vignette)
            return;
        constexpr int kSteps = 64;
        const double corner = CornerRadius(m_entry, *m_entry.vignette);
        for (int i = 1; i <= kSteps; ++i) {
            const double radius = corner * i / kSteps;
            if (LightShare(*m_entry.vignette, radius * radius) > 0.0)
                continue;
            Note(QStringLiteral("the light falls to 0 within the frame, at %1 of the way to the corner")
                     .arg(Share(radius, corner)));
            return;
        }
    }

    LensProfile *m_profile;
    int m_index;
    const ProfileEntry &m_entry;
};

/// Notes each pair of duplicate entries once, even if they are duplicates for several corrections.
void NoteReplaced(LensProfile *profile)
{
    QSet<QPair<int, int>> pairs;
    for (Quantity quantity : {Quantity::Geometry, Quantity::Color, Quantity::Light}) {
        const ProfileGrid grid(*profile, quantity, [](int) { return true; });
        for (const QPair<int, int> &pair : grid.Replaced())
            pairs.insert(pair);
    }
    QList<QPair<int, int>> sorted = pairs.values();
    std::sort(sorted.begin(), sorted.end());
    for (const QPair<int, int> &pair : qAsConst(sorted))
        AddNote(profile, profile->entries[pair.first].line, pair.first,
                QStringLiteral("the same focal length, distance and aperture as entry %1, line %2, which is used")
                    .arg(pair.second + 1)
                    .arg(profile->entries[pair.second].line));
}

} // namespace

void AddNote(LensProfile *profile, qint64 line, int entry, const QString &text, bool unusable)
{
    if (profile->notes.size() > kMaxProfileNotes)
        return;
    if (profile->notes.size() == kMaxProfileNotes)
        profile->notes.append(
            {line, -1, QStringLiteral("more than %1 notes; the rest are left out").arg(kMaxProfileNotes)});
    else
        profile->notes.append({line, entry, text, unusable});
}

void CheckProfile(LensProfile *profile)
{
    for (int i = 0; i < profile->entries.size(); ++i)
        Check(profile, i).Run();
    NoteReplaced(profile);
}
