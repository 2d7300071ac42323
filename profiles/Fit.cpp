#include "Fit.h"

#include "FitSteps_p.h"
#include "FitText_p.h"
#include "PictureFrame.h"
#include "ProfileBlend.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <unordered_map>

namespace {

/// The picture's frame for an entry, shared by all entries with the same camera and frame size.
struct KnownFrame {
    std::optional<EntryFrame> frame;
    QString why; // why there is none
};

/// Hash key of an entry: entries with the same camera and frame compare equal.
struct FramedEntry {
    const ProfileEntry *entry;

    bool operator==(const FramedEntry &other) const
    {
        const ProfileEntry &a = *entry, &b = *other.entry;
        return a.width == b.width && a.height == b.height && a.sensorFormatFactor == b.sensorFormatFactor
            && a.make == b.make && a.model == b.model && a.uniqueModel == b.uniqueModel && a.cameraName == b.cameraName
            && (a.focalMm > 0.0) == (b.focalMm > 0.0);
    }
};

struct FramedEntryHash {
    std::size_t operator()(const FramedEntry &key) const
    {
        const ProfileEntry &entry = *key.entry; // the other fields rarely differ
        return qHash(entry.model) ^ (qHash(entry.cameraName) << 1) ^ (qHash(entry.uniqueModel) << 2)
            ^ qHash(entry.width);
    }
};

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
        for (std::size_t i = 0; i < 3; ++i)
            parts[i] = Chosen(m_tasks[i], WeightsOf(m_tasks[i].quantity));
        MakeMaps(parts);
        NoteAgain(m_tasks, &m_result);
        const bool isFisheye = !parts[0].isEmpty() && parts[0][0].entry->kind == ProfileEntry::Kind::Fisheye;
        FrameResult(m_options, isFisheye, &m_result);
        Summarize();
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

    /// Returns the entries for one correction; none if it isn't made. Records the reason if it was requested.
    BlendParts Chosen(const FitTask &task, QVector<EntryWeight> *weights)
    {
        if (!m_leftOut.Allows(task, m_options))
            return {};
        QString why;
        const ProfileGrid grid(m_profile, task.quantity, [&](int entry) { return FrameOf(entry, &why).has_value(); });
        if (grid.IsEmpty()) {
            m_leftOut.Add(task, why.isEmpty() ? QStringLiteral("the profile has no model for it") : why);
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
            if (quantity != Quantity::Light && !parts.last().frame.isDirectionKnown && HasTangentialTerms(entry))
                m_result.assumed << QStringLiteral("rotated in an unknown direction: tangential terms are left out");
            if (quantity == Quantity::Light && entry.raw != m_facts.raw)
                m_result.assumed << (entry.raw ? QStringLiteral("the profile was measured on raw data")
                                               : QStringLiteral("the profile was measured on rendered pictures"));
        }
        return parts;
    }

    /// Returns the picture's frame for an entry; nullopt, with the reason in @p why, if the entry cannot be used.
    std::optional<EntryFrame> FrameOf(int index, QString *why)
    {
        const ProfileEntry &entry = m_profile.entries[index];
        const auto &[framed, known] = KnownFrameOf(entry);
        std::optional<EntryFrame> frame = known.frame;
        *why = known.why;
        if (frame && frame->focalLength > 0.0)
            frame->focalLength *= entry.focalMm / framed.entry->focalMm;
        if (frame && !HasFocalLengths(entry) && !(frame->focalLength > 0.0)) {
            *why = QStringLiteral("the size of the frame that the profile was made from is unknown");
            return std::nullopt;
        }
        return frame;
    }

    using Frames = std::unordered_map<FramedEntry, KnownFrame, FramedEntryHash>;

    const Frames::value_type &KnownFrameOf(const ProfileEntry &entry)
    {
        const auto [place, isNew] = m_frames.try_emplace({&entry});
        if (isNew)
            place->second.frame = m_frame.ForEntry(entry, !m_options.profile.isEmpty(), &place->second.why);
        return *place;
    }

    static bool HasFocalLengths(const ProfileEntry &entry)
    {
        for (const auto *model : {&entry.geometry, &entry.green, &entry.redGreen, &entry.blueGreen, &entry.vignette})
            if (*model && !((*model)->focalLengthX > 0.0))
                return false;
        return true;
    }

    static bool HasTangentialTerms(const ProfileEntry &entry)
    {
        for (const auto *model : {&entry.geometry, &entry.green, &entry.redGreen, &entry.blueGreen})
            if (*model && ((*model)->tangential1 != 0.0 || (*model)->tangential2 != 0.0))
                return true;
        return false;
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
            MakeMap(m_tasks[0], geometry, QString(), &to.geometry, [&](const BlendParts &used) {
                return m_blend.Geometry(used, !color.isEmpty(), m_options.projection, m_tasks[0].amount);
            });
        for (auto [name, map, model] : {std::tuple("red", &to.red, &ProfileEntry::redGreen),
                                        std::tuple("blue", &to.blue, &ProfileEntry::blueGreen)}) {
            if (Any(color, model) && !m_result.colorEntries.isEmpty())
                MakeMap(m_tasks[1], color, QStringLiteral(": the model for %1").arg(QLatin1String(name)), map,
                        [&, model = model](const BlendParts &used) {
                            return Any(used, model) ? m_blend.Color(used, model, m_tasks[1].amount) : RadialMap();
                        });
        }
        if (m_result.colorEntries.isEmpty())
            to.red.reset(); // if only blue failed: correcting one color would be worse than correcting none
        if (!light.isEmpty())
            to.light = m_blend.Light(light, m_tasks[2].amount);
        m_result.distortion = to.geometry.has_value();
        m_result.chromatic = to.red || to.blue;
        m_result.vignetting = to.light.has_value();
    }

    /// Makes a map from these entries. If it can't be used, leaves it out with a reason that names the entry at fault
    /// and, with @p detail, the model.
    void MakeMap(const FitTask &task, const BlendParts &parts, const QString &detail, std::optional<RadialMap> *to,
                 const std::function<RadialMap(const BlendParts &)> &make)
    {
        *to = make(parts);
        QString why = WhyUseless(**to, m_facts.pixels);
        if (why.isEmpty())
            return;
        const ProfileEntry *entry = parts.first().entry;
        for (BlendPart one : parts) {
            one.weight = 1.0;
            const QString alone = WhyUseless(make({one}), m_facts.pixels);
            if (alone.isEmpty())
                continue;
            entry = one.entry;
            why = alone;
            break;
        }
        m_leftOut.Add(task,
                      QStringLiteral("%1 (line %2)%3 %4").arg(EntryText(*entry)).arg(entry->line).arg(detail, why));
        WeightsOf(task.quantity)->clear();
        to->reset();
    }

    /// Adds the problems that the profile's reader noted about the entries used.
    void AddNotes()
    {
        QSet<int> used;
        for (const auto *weights : {&m_result.geometryEntries, &m_result.colorEntries, &m_result.lightEntries})
            for (const EntryWeight &one : *weights)
                used.insert(one.entry);
        for (const ProfileNote &note : m_profile.notes)
            if (used.contains(note.entry))
                m_result.assumed << QStringLiteral("problem in the profile: %1").arg(note.text);
    }

    void Summarize()
    {
        AddNotes();
        m_result.assumed.removeDuplicates();
        for (const auto *weights : {&m_result.lightEntries, &m_result.colorEntries, &m_result.geometryEntries})
            if (!weights->isEmpty())
                m_result.profileName = m_profile.entries[weights->first().entry].profileName;
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
    Frames m_frames;
};

} // namespace

FitResult Fit(const LensProfile &profile, const PictureFacts &facts, const FitOptions &options)
{
    return Fitting(profile, facts, options).Run();
}

void LeaveOutColor(FitResult *fit)
{
    if (!fit->correction.red && !fit->correction.blue)
        return;
    fit->correction.red.reset();
    fit->correction.blue.reset();
    fit->chromatic = false;
    const QString note = QStringLiteral("left out: lateral color: the picture is gray");
    fit->assumed << note;
    if (!fit->correction.ChangesAnything())
        fit->why = note;
}
