#include "FitText_p.h"

#include <cmath>

namespace {

QString Numeral(double value, int digits)
{
    return QString::number(value, 'g', digits);
}

QString WeightsText(const LensProfile &profile, const QVector<EntryWeight> &weights)
{
    QStringList parts;
    for (const EntryWeight &one : weights)
        parts
            << QStringLiteral("%1 %2 %").arg(EntryText(profile.entries[one.entry])).arg(one.weight * 100.0, 0, 'f', 0);
    return parts.join(QStringLiteral(", "));
}

} // namespace

QString EntryText(const ProfileEntry &entry)
{
    QStringList parts;
    if (entry.focalMm > 0.0)
        parts << Numeral(entry.focalMm, 4) + QStringLiteral(" mm");
    if (entry.hasAperture)
        parts << QStringLiteral("f/") + Numeral(std::exp2(entry.apertureApex / 2.0), 2);
    if (std::isinf(entry.distanceM))
        parts << QStringLiteral("infinity");
    else if (entry.distanceM > 0.0)
        parts << Numeral(entry.distanceM, 3) + QStringLiteral(" m");
    return parts.isEmpty() ? QStringLiteral("the entry at line %1").arg(entry.line) : parts.join(QLatin1Char(' '));
}

QString EntriesText(const LensProfile &profile, const FitResult &result)
{
    const struct {
        const char *name;
        QString text;
    } corrections[] = {
        {"distortion", WeightsText(profile, result.geometryEntries)},
        {"color", WeightsText(profile, result.colorEntries)},
        {"light", WeightsText(profile, result.lightEntries)},
    };
    QStringList texts, named;
    for (const auto &one : corrections) {
        if (one.text.isEmpty())
            continue;
        if (!texts.contains(one.text))
            texts << one.text;
        named << QStringLiteral("%1: %2").arg(QLatin1String(one.name), one.text);
    }
    return texts.size() == 1 ? texts.first() : named.join(QStringLiteral("; "));
}
