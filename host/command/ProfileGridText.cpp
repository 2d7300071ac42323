#include "ProfileGridText.h"

#include "Console.h"
#include "ProfileGrid.h"

#include <QVector>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr int kLabelWidth = 12;
constexpr int kMaxNames = 3; // of cameras, lenses, frames

QString Number(double value, int digits)
{
    return QString::number(value, 'g', digits);
}

QString Line(const char *label, const QString &value)
{
    return LabeledLine(QLatin1String(label), kLabelWidth, value);
}

/// Joins the distinct texts that @p text returns for the entries, in the order of the file.
template <typename Text> QString Distinct(const LensProfile &profile, const Text &text)
{
    QStringList found;
    for (const ProfileEntry &entry : profile.entries) {
        const QString one = text(entry);
        if (!one.isEmpty() && !found.contains(one) && found.size() <= kMaxNames)
            found << one;
    }
    const bool more = found.size() > kMaxNames;
    return QStringList(found.mid(0, kMaxNames)).join(QLatin1String("; "))
        + (more ? QLatin1String("; ...") : QLatin1String());
}

QString FirstOf(const QStringList &texts)
{
    const auto found = std::find_if(texts.begin(), texts.end(), [](const QString &text) { return !text.isEmpty(); });
    return found == texts.end() ? QString() : *found;
}

QString FrameOf(const ProfileEntry &entry)
{
    if (!(entry.width > 0.0) || !(entry.height > 0.0))
        return QStringLiteral("unknown");
    const QString size = QStringLiteral("%1 x %2 pixels").arg(Number(entry.width, 7), Number(entry.height, 7));
    return entry.sensorFormatFactor > 0.0 ? size + QStringLiteral(", factor ") + Number(entry.sensorFormatFactor, 5)
                                          : size;
}

QString DistanceOf(const ProfileEntry &entry)
{
    if (!(entry.distanceM > 0.0))
        return QStringLiteral("-");
    return std::isinf(entry.distanceM) ? QStringLiteral("infinity") : Number(entry.distanceM, 3) + QLatin1String(" m");
}

QString ApertureOf(const ProfileEntry &entry)
{
    return entry.hasAperture ? QLatin1String("f/") + Number(std::exp2(entry.apertureApex / 2.0), 2)
                             : QStringLiteral("-");
}

/// One row of the grid: entries that differ only in aperture.
struct Row {
    QString focal, distance, models;
    QStringList apertures;
    QVector<int> entries;
};

Row RowOf(const ProfileEntry &entry)
{
    Row row;
    row.focal = entry.focalMm > 0.0 ? Number(entry.focalMm, 4) + QLatin1String(" mm") : QStringLiteral("-");
    row.distance = DistanceOf(entry);
    row.models = ModelNames(entry);
    if (row.models.isEmpty())
        row.models = QStringLiteral("none");
    else if (entry.kind == ProfileEntry::Kind::Fisheye)
        row.models += QLatin1String(" (fisheye)");
    return row;
}

/// Returns whether @p a and @p b, with a <= b, count as the same value; 0 equals only 0.
bool AreSame(double a, double b, double ratio)
{
    return a == b || (a > 0.0 && b <= a * ratio && std::isfinite(b));
}

/// Splits @p entries into runs of values that count as the same, ascending. Entries with equal values keep their order.
template <typename Value> QVector<QVector<int>> Runs(QVector<int> entries, double ratio, const Value &value)
{
    std::stable_sort(entries.begin(), entries.end(), [&](int a, int b) { return value(a) < value(b); });
    QVector<QVector<int>> runs;
    for (int i : qAsConst(entries)) {
        if (runs.isEmpty() || !AreSame(value(runs.last().first()), value(i), ratio))
            runs.append(QVector<int>());
        runs.last().append(i);
    }
    return runs;
}

/// Appends the rows of one focal length and distance: one per run of apertures with the same models.
void AppendRows(const LensProfile &profile, QVector<int> setting, QVector<Row> *rows)
{
    const auto aperture = [&](int i) {
        return profile.entries[i].hasAperture ? profile.entries[i].apertureApex : -HUGE_VAL;
    };
    std::stable_sort(setting.begin(), setting.end(), [&](int a, int b) { return aperture(a) < aperture(b); });
    const int begin = rows->size();
    for (int i : qAsConst(setting)) {
        const Row row = RowOf(profile.entries[i]);
        if (rows->size() == begin || rows->last().models != row.models)
            rows->append(row);
        const QString one = ApertureOf(profile.entries[i]);
        if (!rows->last().apertures.endsWith(one)) // sorted, so equal ones are adjacent
            rows->last().apertures << one;
        rows->last().entries << i + 1;
    }
}

QVector<Row> RowsOf(const LensProfile &profile)
{
    QVector<int> all(profile.entries.size());
    std::iota(all.begin(), all.end(), 0);
    QVector<Row> rows;
    const auto focals = Runs(all, kSameFocal, [&](int i) { return profile.entries[i].focalMm; });
    for (const QVector<int> &focal : focals) {
        const auto distances = Runs(focal, kSameDistance, [&](int i) { return profile.entries[i].distanceM; });
        for (const QVector<int> &distance : distances)
            AppendRows(profile, distance, &rows);
    }
    return rows;
}

/// Sorts the numbers and joins them into ranges: "1-3, 7".
QString Ranges(QVector<int> numbers)
{
    std::sort(numbers.begin(), numbers.end());
    QStringList parts;
    for (int begin = 0, end = 0; begin < numbers.size(); begin = end) {
        for (end = begin + 1; end < numbers.size() && numbers[end] == numbers[end - 1] + 1;)
            ++end;
        parts << (end - begin == 1 ? QString::number(numbers[begin])
                                   : QStringLiteral("%1-%2").arg(numbers[begin]).arg(numbers[end - 1]));
    }
    return parts.join(QLatin1String(", "));
}

QString TableOf(const QVector<Row> &rows)
{
    QVector<QStringList> table{{QStringLiteral("Focal length"), QStringLiteral("Distance"), QStringLiteral("Apertures"),
                                QStringLiteral("Models"), QStringLiteral("Entries")}};
    for (const Row &row : rows)
        table.append({row.focal, row.distance, row.apertures.join(QLatin1Char(' ')), row.models, Ranges(row.entries)});
    QVector<int> widths(table.first().size(), 0);
    for (const QStringList &cells : qAsConst(table))
        for (int i = 0; i < cells.size(); ++i)
            widths[i] = std::max(widths[i], cells[i].size());
    QString text;
    for (const QStringList &cells : qAsConst(table)) {
        text += QLatin1Char(' ');
        for (int i = 0; i + 1 < cells.size(); ++i)
            text += QLatin1Char(' ') + cells[i].leftJustified(widths[i] + 1);
        text += QLatin1Char(' ') + cells.last() + QLatin1Char('\n');
    }
    return text;
}

} // namespace

QString ModelNames(const ProfileEntry &entry)
{
    const struct {
        const std::optional<ProfileModel> &model;
        const char *name;
    } models[] = {{entry.geometry, "distortion"},
                  {entry.green, "green"},
                  {entry.redGreen, "red"},
                  {entry.blueGreen, "blue"},
                  {entry.vignette, "light"}};
    QStringList names;
    for (const auto &one : models)
        if (one.model)
            names << QLatin1String(one.name);
    return names.join(QLatin1String(", "));
}

QString ProfileGridText(const QString &file, const LensProfile &profile)
{
    QString text = OneLine(file) + QLatin1Char('\n');
    text += Line("Profile", Distinct(profile, [](const ProfileEntry &entry) { return entry.profileName; }));
    text += Line("Camera", Distinct(profile, [](const ProfileEntry &entry) {
                     return FirstOf({entry.cameraName, entry.uniqueModel, entry.model});
                 }));
    text += Line("Lens", Distinct(profile, [](const ProfileEntry &entry) {
                     return FirstOf({entry.lensName, entry.lens, entry.lensId});
                 }));
    text += Line("Frame", Distinct(profile, FrameOf));
    text += Line("Measured on", Distinct(profile, [](const ProfileEntry &entry) {
                     return entry.raw ? QStringLiteral("raw data") : QStringLiteral("rendered pictures");
                 }));
    text += Line("Entries", QString::number(profile.entries.size()));
    if (!profile.notes.isEmpty())
        text += Line("Problems", QStringLiteral("%1; --check lists them").arg(profile.notes.size()));
    return text + QLatin1Char('\n') + TableOf(RowsOf(profile));
}

QString ProfileNotesText(const QString &file, const LensProfile &profile)
{
    QString text;
    for (const ProfileNote &note : profile.notes) {
        const QString entry = note.entry < 0 ? QString() : QStringLiteral("entry %1: ").arg(note.entry + 1);
        text += OneLine(QStringLiteral("%1:%2: %3: ")
                            .arg(file)
                            .arg(note.line)
                            .arg(QLatin1String(note.unusable ? "error" : "warning"))
                        + entry + note.text)
            + QLatin1Char('\n');
    }
    return text;
}
