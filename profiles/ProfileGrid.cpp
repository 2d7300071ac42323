#include "ProfileGrid.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kBeyond = 1.02; // a setting outside the profile's range by more than this factor gets a note

/// Returns the f-number.
double Aperture(const ProfileEntry &entry)
{
    return entry.hasAperture ? std::exp2(entry.apertureApex / 2.0) : 0.0;
}

/// Sorts entries by a value and calls take(run) for each run of entries whose values count as equal; the entries of a
/// run are in the file's order.
/// @param same  ratio up to which values count as equal.
template <typename Value, typename Take>
void ForEachRun(QVector<int> entries, double same, const Value &value, const Take &take)
{
    std::stable_sort(entries.begin(), entries.end(), [&](int a, int b) { return value(a) < value(b); });
    for (int begin = 0, end = 0; begin < entries.size(); begin = end) {
        const double least = value(entries[begin]);
        while (end < entries.size() && (value(entries[end]) == least || value(entries[end]) <= least * same))
            ++end;
        QVector<int> run = entries.mid(begin, end - begin);
        std::sort(run.begin(), run.end()); // the file's order
        take(run);
    }
}

/// Position of a value in a monotonic list: between the indices first and second, which are equal beyond the ends.
struct Bracket {
    int first = 0, second = 0;
    double secondWeight = 0.0; // 0 to 1; the first has the rest
};

/// Finds the position of @p value in the monotonic list @p values.
Bracket Find(const QVector<double> &values, double value)
{
    const bool isFalling = values.first() > values.last();
    const auto found = std::lower_bound(values.begin(), values.end(), value,
                                        [isFalling](double a, double b) { return isFalling ? a > b : a < b; });
    const int second = int(found - values.begin());
    if (second == 0)
        return {0, 0, 0.0};
    if (second == values.size())
        return {second - 1, second - 1, 0.0};
    const double from = values[second - 1], to = values[second];
    return {second - 1, second, (value - from) / (to - from)};
}

template <typename Items, typename ValueOf> Bracket FindAmong(const Items &items, double value, const ValueOf &valueOf)
{
    QVector<double> values;
    for (const auto &item : items)
        values.append(valueOf(item));
    return Find(values, value);
}

double ApertureTerm(double apertureApex)
{
    return std::exp2(-apertureApex); // 1 / N^2
}

QString Numeral(double value)
{
    return QString::number(value, 'g', 4);
}

/// Text before and after a number.
struct Unit {
    const char *before, *after;
};
constexpr Unit kMillimeters = {"", " mm"}, kMeters = {"", " m"}, kFNumber = {"f/", ""};

QString Text(double value, const Unit &unit)
{
    return std::isinf(value) ? QStringLiteral("infinity")
                             : QLatin1String(unit.before) + Numeral(value) + QLatin1String(unit.after);
}

/// Returns "20 to 40 mm", "1 m to infinity" or, if both are equal, "20 mm".
QString RangeText(double least, double most, const Unit &unit)
{
    if (!(least < most))
        return Text(most, unit);
    const QString first = std::isinf(most) ? Text(least, unit) : QLatin1String(unit.before) + Numeral(least);
    return first + QStringLiteral(" to ") + Text(most, unit);
}

/// Notes a setting outside the profile's range.
void NoteBeyond(double taken, double least, double most, const Unit &unit, QStringList *assumed)
{
    if (taken > most * kBeyond || taken * kBeyond < least)
        *assumed << QStringLiteral("%1 is outside the profile's %2: the nearest is used")
                        .arg(Text(taken, unit), RangeText(least, most, unit));
}

} // namespace

bool HasModel(const ProfileEntry &entry, Quantity quantity)
{
    switch (quantity) {
    case Quantity::Geometry:
        return entry.geometry || entry.green;
    case Quantity::Color:
        return entry.redGreen || entry.blueGreen;
    case Quantity::Light:
        break;
    }
    return entry.vignette.has_value();
}

ProfileGrid::ProfileGrid(const LensProfile &profile, Quantity quantity, const std::function<bool(int)> &serves)
    : m_profile(profile), m_quantity(quantity)
{
    QVector<int> kinds[2];
    bool isFocalGiven = false;
    for (int i = 0; i < profile.entries.size(); ++i) {
        const ProfileEntry &entry = profile.entries[i];
        if (!HasModel(entry, quantity) || !serves(i))
            continue;
        kinds[entry.kind == ProfileEntry::Kind::Fisheye].append(i);
        isFocalGiven |= entry.focalMm > 0.0;
    }
    for (QVector<int> &entries : kinds) {
        if (isFocalGiven) // entries without a focal length cannot be ordered among the others
            entries.erase(std::remove_if(entries.begin(), entries.end(),
                                         [&](int i) { return !(profile.entries[i].focalMm > 0.0); }),
                          entries.end());
        Insert(entries);
    }
    std::stable_sort(m_focals.begin(), m_focals.end(),
                     [](const Focal &a, const Focal &b) { return a.focalMm < b.focalMm; });
}

void ProfileGrid::Insert(QVector<int> entries)
{
    ForEachRun(
        entries, kSameFocal, [this](int i) { return m_profile.entries[i].focalMm; },
        [this](const QVector<int> &run) {
            const ProfileEntry &last = m_profile.entries[run.last()];
            m_focals.append(Focal{last.focalMm, last.kind, {}});
            InsertDistances(run, &m_focals.last());
        });
}

void ProfileGrid::InsertDistances(QVector<int> entries, Focal *focal)
{
    ForEachRun(
        entries, kSameDistance, [this](int i) { return m_profile.entries[i].distanceM; },
        [this, focal](const QVector<int> &run) {
            focal->distances.append(Distance{m_profile.entries[run.last()].distanceM, {}});
            InsertCells(run, &focal->distances.last());
        });
    if (focal->distances.size() > 1 && focal->distances.first().distanceM == 0.0)
        focal->distances.removeFirst(); // drop entries without a distance if others have one
}

void ProfileGrid::InsertCells(QVector<int> entries, Distance *distance)
{
    ForEachRun(
        entries, kSameAperture, [this](int i) { return Aperture(m_profile.entries[i]); },
        [this, distance](const QVector<int> &run) {
            const ProfileEntry &last = m_profile.entries[run.last()];
            distance->cells.append(Cell{last.apertureApex, last.hasAperture, run.last()});
            for (int i : run.mid(0, run.size() - 1))
                m_replaced.append({i, run.last()});
        });
    if (distance->cells.size() > 1 && !distance->cells.first().hasAperture)
        distance->cells.removeFirst();
}

GridChoice ProfileGrid::Choose(const Setting &setting) const
{
    GridChoice choice;
    const Focal &shortest = m_focals.first(), &longest = m_focals.last();
    Bracket at;
    if (!setting.focalMm) {
        if (m_focals.size() > 1) {
            choice.why =
                QStringLiteral("the focal length is unknown, and the profile has entries from %1; give it with --focal")
                    .arg(RangeText(shortest.focalMm, longest.focalMm, kMillimeters));
            return choice;
        }
        choice.assumed << QStringLiteral("focal length unknown: the profile's only one is used");
    } else if (longest.focalMm > 0.0) {
        at = FindAmong(m_focals, 1.0 / *setting.focalMm, [](const Focal &one) { return 1.0 / one.focalMm; });
        NoteBeyond(*setting.focalMm, shortest.focalMm, longest.focalMm, kMillimeters, &choice.assumed);
    }
    if (m_focals[at.first].kind != m_focals[at.second].kind) {
        const int nearest = at.secondWeight < 0.5 ? at.first : at.second;
        at = {nearest, nearest, 0.0};
        choice.assumed << QStringLiteral("perspective and fisheye entries aren't mixed: the nearest is used");
    }
    const bool isWhole = AddFocal(m_focals[at.first], 1.0 - at.secondWeight, setting, &choice)
        && AddFocal(m_focals[at.second], at.secondWeight, setting, &choice);
    if (!isWhole)
        choice.entries.clear();
    choice.assumed.removeDuplicates();
    return choice;
}

bool ProfileGrid::AddFocal(const Focal &focal, double weight, const Setting &setting, GridChoice *choice) const
{
    if (weight <= 0.0)
        return true;
    const QVector<Distance> &distances = focal.distances;
    if (!setting.distanceM) {
        if (distances.size() > 1)
            choice->assumed << QStringLiteral("distance unknown: the farthest is used");
        return AddDistance(distances.last(), weight, setting, choice);
    }
    if (distances.first().distanceM > 0.0)
        NoteBeyond(*setting.distanceM, distances.first().distanceM, distances.last().distanceM, kMeters,
                   &choice->assumed);
    const Bracket at =
        FindAmong(distances, 1.0 / *setting.distanceM, [](const Distance &one) { return 1.0 / one.distanceM; });
    return AddDistance(distances[at.first], weight * (1.0 - at.secondWeight), setting, choice)
        && AddDistance(distances[at.second], weight * at.secondWeight, setting, choice);
}

/// Adds a note: light changes with the aperture, so a measurement at one aperture may be far off at another.
void ProfileGrid::NoteOnlyAperture(const Cell &only, const Setting &setting, GridChoice *choice) const
{
    if (m_quantity != Quantity::Light)
        return;
    const double measured = std::exp2(only.apertureApex / 2.0), taken = setting.aperture.value_or(0.0);
    if (!only.hasAperture)
        choice->assumed << QStringLiteral("the profile's only vignetting, measured at an unknown aperture");
    else if (!(taken <= measured * kSameAperture && measured <= taken * kSameAperture))
        choice->assumed << QStringLiteral("the profile's vignetting at f/%1, its only aperture").arg(Numeral(measured));
}

bool ProfileGrid::AddDistance(const Distance &distance, double weight, const Setting &setting, GridChoice *choice) const
{
    if (weight <= 0.0)
        return true;
    const auto add = [choice, weight](const Cell &cell, double share) {
        if (weight * share > 0.0)
            choice->entries.append({cell.entry, weight * share});
        return true;
    };
    const QVector<Cell> &cells = distance.cells;
    if (cells.size() == 1) {
        NoteOnlyAperture(cells.first(), setting, choice);
        return add(cells.first(), 1.0);
    }
    if (m_quantity != Quantity::Light) { // nearly independent of the aperture: use the nearest
        const double apex = setting.aperture ? 2.0 * std::log2(*setting.aperture) : cells.last().apertureApex;
        return add(*std::min_element(cells.begin(), cells.end(),
                                     [apex](const Cell &a, const Cell &b) {
                                         return std::abs(a.apertureApex - apex) < std::abs(b.apertureApex - apex);
                                     }),
                   1.0);
    }
    if (!setting.aperture) {
        choice->why = QStringLiteral("the aperture is unknown, and the profile has several");
        return false;
    }
    NoteBeyond(*setting.aperture, std::exp2(cells.first().apertureApex / 2.0),
               std::exp2(cells.last().apertureApex / 2.0), kFNumber, &choice->assumed);
    const Bracket at = FindAmong(cells, 1.0 / (*setting.aperture * *setting.aperture),
                                 [](const Cell &one) { return ApertureTerm(one.apertureApex); });
    return add(cells[at.first], 1.0 - at.secondWeight) && add(cells[at.second], at.secondWeight);
}
