#include "MapCheck.h"

#include "FitSteps_p.h"
#include "ProfileBlend.h"
#include "ProfileCheck_p.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kFrameWidth = 6000.0, kFrameHeight = 4000.0; // for entries without a frame size
constexpr double kMaxPixels = 60000.0;                        // larger frames are scaled down: only proportions matter

/// Returns the facts of a picture as large as the frame that an entry was measured on.
PictureFacts FactsOf(const ProfileEntry &entry)
{
    const bool hasSize = entry.width > 0.0 && entry.height > 0.0;
    const double width = hasSize ? entry.width : kFrameWidth, height = hasSize ? entry.height : kFrameHeight;
    const double scale = std::min(1.0, kMaxPixels / std::max(width, height));
    PictureFacts facts;
    facts.pixels = QSize(std::max(1, int(std::lround(width * scale))), std::max(1, int(std::lround(height * scale))));
    return facts;
}

class MapCheck {
public:
    MapCheck(LensProfile *profile, int entry)
        : m_profile(profile),
          m_index(entry),
          m_entry(profile->entries[entry]),
          m_facts(FactsOf(m_entry)),
          m_frame(m_facts, PictureBody()),
          m_blend(m_frame, m_facts.pixels)
    {
        EntryFrame frame;
        frame.unitPx = std::max(m_facts.pixels.width(), m_facts.pixels.height());
        frame.frameHeight = double(m_facts.pixels.height()) / m_facts.pixels.width();
        m_parts = {{&m_entry, frame, 1.0}};
    }

    /// Adds the notes. Returns whether the entry has a model that can be used.
    bool Run()
    {
        if (m_entry.geometry)
            Check("distortion", *m_entry.geometry, [this] { return Geometry(/*byGreen=*/false); });
        if (m_entry.green)
            Check("green", *m_entry.green, [this] { return Geometry(/*byGreen=*/true); });
        for (const auto &[name, model] :
             {std::pair("red", &ProfileEntry::redGreen), std::pair("blue", &ProfileEntry::blueGreen)})
            if (m_entry.*model)
                Check(name, *(m_entry.*model), [this, model = model] { return m_blend.Color(m_parts, model, 1.0); });
        return m_isUsable || m_entry.vignette;
    }

    QString FirstError() const { return m_firstError; }

private:
    RadialMap Geometry(bool byGreen) const { return m_blend.Geometry(m_parts, byGreen, Projection::Rectilinear, 1.0); }

    template <typename Make> void Check(const char *name, const ProfileModel &model, const Make &make)
    {
        const bool hasScale = model.focalLengthX > 0.0; // otherwise the scale depends on the picture's frame
        const QString why = hasScale ? WhyUseless(make(), m_facts.pixels) : QString();
        m_isUsable |= why.isEmpty();
        if (why.isEmpty())
            return;
        const QString text = QStringLiteral("%1 %2").arg(QLatin1String(name), why);
        AddNote(m_profile, m_entry.line, m_index, text, /*unusable=*/true);
        if (m_firstError.isEmpty())
            m_firstError = QStringLiteral("line %1: %2").arg(m_entry.line).arg(text);
    }

    LensProfile *m_profile;
    const int m_index;
    const ProfileEntry &m_entry;
    const PictureFacts m_facts;
    const PictureFrame m_frame;
    const ProfileBlend m_blend;
    BlendParts m_parts;
    bool m_isUsable = false;
    QString m_firstError;
};

} // namespace

QString CheckMaps(LensProfile *profile)
{
    QString first;
    bool isUsable = false;
    for (int i = 0; i < profile->entries.size(); ++i) {
        if (isUsable && profile->notes.size() > kMaxProfileNotes) // nothing left to report
            break;
        MapCheck check(profile, i);
        isUsable |= check.Run();
        if (first.isEmpty())
            first = check.FirstError();
    }
    if (isUsable || first.isEmpty())
        return QString();
    return QStringLiteral("none of its %1 entries can be used: %2").arg(profile->entries.size()).arg(first);
}
