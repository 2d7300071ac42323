#include "Fit.h"

#include "FitSteps_p.h"
#include "FitText_p.h"
#include "PictureFrame.h"
#include "ProfileBlend.h"

#include <algorithm>
#include <cmath>

namespace {

/// The picture's frame for an entry, shared by all entries with the same frame.
struct KnownFrame {
    const ProfileEntry *of;
    std::optional<EntryFrame> frame;
    QString why; // if none
};
constexpr int kKnownFrames = 8;

class Fitting {
public:
    Fitting(const LensProfile &profile, const PictureFacts &facts, const FitOptions &options)
        : m_profile(profile),
          m_facts(facts),
          m_options(options),
          m_tasks(TasksOf(facts, options)),
          m_setting(SettingOf(facts, options.typed)),
          m_frame(facts, BodyOf(facts, options.typed)),
          m_blend(m_frame, facts.pixels)
    {
        m_result.profile = profile.path;
        m_result.correction.width = facts.pixels.width();
        m_result.correction.height = facts.pixels.height();
    }

    FitResult Run()
    {
        if (const QString why = WhyRefused(m_facts); !why.isEmpty())
            return Refuse(why);
        BlendParts parts[3];
        for (int i = 0; i < 3; ++i)
            parts[i] = Chosen(m_tasks[i], WeightsOf(m_tasks[i].quantity));
        MakeMaps(parts);
        const bool isFisheye = !parts[0].isEmpty() && parts[0][0].entry->kind == ProfileEntry::Kind::Fisheye;
        FrameResult(m_options, isFisheye, &m_result);
        Tell();
        return m_result;
    }

private:
    FitResult Refuse(const QString &why)
    {
        m_result.why = why;
        return m_result;
    }

    QVector<EntryWeight> *WeightsOf(Quantity quantity)
    {
        return quantity == Quantity::Geometry ? &m_result.geometryEntries
            : quantity == Quantity::Color     ? &m_result.colorEntries
                                              : &m_result.lightEntries;
    }

    /// Returns the entries for one correction; none if it isn't made, with a reason if it was requested.
    BlendParts Chosen(const FitTask &task, QVector<EntryWeight> *weights)
    {
        if (!m_leftOut.Allows(task, m_options))
            return {};
        if (task.done.value)
            m_result.assumed << QStringLiteral("%1 again, though corrected before (%2)")
                                    .arg(QLatin1String(task.name), task.done.source);
        QString why;
        const ProfileGrid grid(m_profile, task.quantity, [&](int entry) { return FrameOf(entry, &why).has_value(); });
        if (grid.IsEmpty()) {
            m_leftOut.Add(task, why.isEmpty() ? QStringLiteral("the profile has no model of it") : why);
            return {};
        }
        const GridChoice choice = grid.Choose(m_setting);
        if (choice.entries.isEmpty()) {
            m_leftOut.Add(task, choice.why);
            return {};
        }
        *weights = choice.entries;
        m_result.assumed += choice.assumed;
        return PartsOf(choice.entries, task.quantity);
    }

    BlendParts PartsOf(const QVector<EntryWeight> &weights, Quantity quantity)
    {
        BlendParts parts;
        QString why;
        for (const EntryWeight &one : weights) {
            const ProfileEntry &entry = m_profile.entries[one.entry];
            parts.append({&entry, *FrameOf(one.entry, &why), one.weight});
            m_result.assumed += parts.last().frame.assumed;
            if (quantity == Quantity::Light && entry.raw != m_facts.raw)
                m_result.assumed << (entry.raw ? QStringLiteral("the profile was measured on raw data")
                                               : QStringLiteral("the profile was measured on rendered pictures"));
        }
        return parts;
    }

    /// Returns the picture's frame for an entry; none if the entry cannot be used.
    std::optional<EntryFrame> FrameOf(int index, QString *why)
    {
        const ProfileEntry &entry = m_profile.entries[index];
        const KnownFrame &known = KnownFrameOf(entry);
        std::optional<EntryFrame> frame = known.frame;
        *why = known.why;
        if (frame && frame->focalLength > 0.0)
            frame->focalLength *= entry.focalMm / known.of->focalMm;
        if (frame && !HasFocalLengths(entry) && !(frame->focalLength > 0.0)) {
            *why = QStringLiteral("the size of the frame that the profile was made from is unknown");
            return std::nullopt;
        }
        return frame;
    }

    const KnownFrame &KnownFrameOf(const ProfileEntry &entry)
    {
        const auto found = std::find_if(m_frames.cbegin(), m_frames.cend(),
                                        [&](const KnownFrame &one) { return IsFramedAlike(entry, *one.of); });
        if (found != m_frames.cend())
            return *found;
        if (m_frames.size() == kKnownFrames)
            m_frames.removeFirst();
        KnownFrame known{&entry, std::nullopt, QString()};
        known.frame = m_frame.Under(entry, !m_options.profile.isEmpty(), &known.why);
        m_frames.append(known);
        return m_frames.constLast();
    }

    static bool IsFramedAlike(const ProfileEntry &a, const ProfileEntry &b)
    {
        return a.width == b.width && a.height == b.height && a.sensorFormatFactor == b.sensorFormatFactor
            && a.make == b.make && a.model == b.model && a.uniqueModel == b.uniqueModel && a.cameraName == b.cameraName
            && (a.focalMm > 0.0) == (b.focalMm > 0.0);
    }

    static bool HasFocalLengths(const ProfileEntry &entry)
    {
        for (const auto *model : {&entry.geometry, &entry.green, &entry.redGreen, &entry.blueGreen, &entry.vignette})
            if (*model && !((*model)->focalLengthX > 0.0))
                return false;
        return true;
    }

    static bool Any(const BlendParts &parts, std::optional<ProfileModel> ProfileEntry::*model)
    {
        return std::any_of(parts.begin(), parts.end(),
                           [model](const BlendPart &part) { return (part.entry->*model).has_value(); });
    }

    void MakeMaps(const BlendParts (&parts)[3])
    {
        Correction &to = m_result.correction;
        const BlendParts &geometry = parts[0], &color = parts[1], &light = parts[2];
        if (!geometry.isEmpty())
            to.geometry = m_blend.Geometry(geometry, !color.isEmpty(), m_options.projection, m_tasks[0].amount);
        if (Any(color, &ProfileEntry::redGreen))
            to.red = m_blend.Color(color, &ProfileEntry::redGreen, m_tasks[1].amount);
        if (Any(color, &ProfileEntry::blueGreen))
            to.blue = m_blend.Color(color, &ProfileEntry::blueGreen, m_tasks[1].amount);
        if (!light.isEmpty())
            to.light = m_blend.Light(light, m_tasks[2].amount);
        m_result.distortion = to.geometry.has_value();
        m_result.chromatic = to.red || to.blue;
        m_result.vignetting = to.light.has_value();
    }

    void Tell()
    {
        m_result.assumed.removeDuplicates();
        m_result.entries = EntriesText(m_profile, m_result);
        m_result.why = m_leftOut.Text();
    }

    const LensProfile &m_profile;
    const PictureFacts &m_facts;
    const FitOptions &m_options;
    const FitTasks m_tasks;
    const Setting m_setting;
    const PictureFrame m_frame;
    const ProfileBlend m_blend;
    FitResult m_result;
    LeftOut m_leftOut;
    QVector<KnownFrame> m_frames; // entries of a profile rarely differ in it
};

} // namespace

FitResult Fit(const LensProfile &profile, const PictureFacts &facts, const FitOptions &options)
{
    return Fitting(profile, facts, options).Run();
}
