#include "ReportCommand.h"

#include "Console.h"
#include "InputLimits.h"
#include "app/FileNames.h"

#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int kMaxRows = 20; // of reasons, of lenses, and of lines that aren't records
constexpr int kSlowest = 5;

/// Returns whether @p later was skipped only because the picture had already been corrected or was listed twice.
bool AddsNothing(const PictureReport &earlier, const PictureReport &later)
{
    return later.outcome == PictureReport::Outcome::Skipped
        && (later.output.isEmpty() || earlier.outcome == PictureReport::Outcome::Corrected);
}

/// Returns one record per picture, in the order in which the pictures first occur.
QVector<PictureReport> OnePerPicture(const QVector<PictureReport> &reports)
{
    QVector<PictureReport> last;
    QHash<QString, int> places;
    for (const PictureReport &report : reports) {
        const auto place = places.constFind(report.picture);
        if (place == places.constEnd()) {
            places.insert(report.picture, last.size());
            last.append(report);
        } else if (!AddsNothing(last.at(*place), report)) {
            last[*place] = report;
        }
    }
    return last;
}

/// Removes quoted names, so that reasons that differ only in names count as the same.
QString Reason(const QString &why)
{
    static const QRegularExpression kQuoted(QStringLiteral("\"[^\"]*\""));
    return QString(why).replace(kQuoted, QStringLiteral("\"\u2026\""));
}

using Counts = QMap<QString, QMap<PictureReport::Outcome, int>>;

int Total(const QMap<PictureReport::Outcome, int> &counts)
{
    int total = 0;
    for (const int count : counts)
        total += count;
    return total;
}

/// Returns a heading and one line per name, the most frequent names first; empty if there are none.
QString Table(const char *heading, const Counts &counts, bool withOutcomes)
{
    QStringList names = counts.keys();
    std::stable_sort(names.begin(), names.end(),
                     [&](const QString &a, const QString &b) { return Total(counts[a]) > Total(counts[b]); });
    QString text = names.isEmpty() ? QString() : QStringLiteral("\n%1\n").arg(QLatin1String(heading));
    for (const QString &name : names.mid(0, kMaxRows)) {
        text += QStringLiteral("  %1  %2").arg(Total(counts[name]), 6).arg(OneLine(name));
        text += withOutcomes ? QStringLiteral(": %1\n").arg(TextOf(counts[name])) : QStringLiteral("\n");
    }
    if (names.size() > kMaxRows)
        text += QStringLiteral("  and %1 more\n").arg(names.size() - kMaxRows);
    return text;
}

QString SlowestTable(QVector<PictureReport> reports)
{
    std::stable_sort(reports.begin(), reports.end(),
                     [](const PictureReport &a, const PictureReport &b) { return a.seconds > b.seconds; });
    QString text;
    for (const PictureReport &report : reports.mid(0, kSlowest)) {
        if (report.seconds > 0.0)
            text += QStringLiteral("  %1 s  %2\n").arg(report.seconds, 6, 'f', 2).arg(OneLine(report.picture));
    }
    return text.isEmpty() ? text : QStringLiteral("\nSlowest\n") + text;
}

} // namespace

QVector<PictureReport> ReadReports(const QString &file, QStringList *problems)
{
    QVector<PictureReport> reports;
    QFile source(file == QLatin1String("-") ? QString() : AbsolutePath(file));
    if (!(source.fileName().isEmpty() ? source.open(stdin, QIODevice::ReadOnly) : source.open(QIODevice::ReadOnly))) {
        *problems << QStringLiteral("cannot be read: ") + source.errorString();
        return reports;
    }
    int others = 0;
    for (int number = 1; !source.atEnd(); ++number) {
        QByteArray line = source.readLine(kMaxRecordBytes);
        if (line.size() >= kMaxRecordBytes - 1) {
            *problems << QStringLiteral("line %1 is longer than %2 bytes; the rest is left out")
                             .arg(number)
                             .arg(kMaxRecordBytes);
            break;
        }
        line = std::move(line).trimmed();
        if (line.isEmpty())
            continue;
        PictureReport report;
        if (FromJson(QJsonDocument::fromJson(line).object(), &report))
            reports.append(report);
        else if (++others <= kMaxRows)
            *problems << QStringLiteral("line %1 is not a record of 'correct --json'").arg(number);
    }
    if (others > kMaxRows)
        *problems << QStringLiteral("%1 more lines are not records").arg(others - kMaxRows);
    if (source.error() != QFileDevice::NoError)
        *problems << QStringLiteral("cannot be read to the end: ") + source.errorString();
    return reports;
}

QString SummaryOfReports(const QVector<PictureReport> &all)
{
    const QVector<PictureReport> reports = OnePerPicture(all);
    QMap<PictureReport::Outcome, int> outcomes;
    Counts reasons, lenses;
    double seconds = 0.0;
    for (const PictureReport &report : reports) {
        ++outcomes[report.outcome];
        if (report.outcome == PictureReport::Outcome::Failed)
            ++reasons[Reason(report.why)][report.outcome];
        ++lenses[report.lens.isEmpty() ? QStringLiteral("(no lens named)") : report.lens][report.outcome];
        seconds += report.seconds;
    }
    QString text =
        reports.size() == 1 ? QStringLiteral("1 picture") : QStringLiteral("%1 pictures").arg(reports.size());
    if (!reports.isEmpty())
        text += QStringLiteral(": %1; %2 s of work").arg(TextOf(outcomes)).arg(seconds, 0, 'f', 1);
    text += QLatin1Char('\n');
    return text + Table("Failed", reasons, false) + Table("Lenses", lenses, true) + SlowestTable(reports);
}

ExitCode RunReport(const ReportOptions &options, Console *console)
{
    QVector<PictureReport> reports;
    ExitCode result = kAllDone;
    for (const QString &file : options.files) {
        QStringList problems;
        reports += ReadReports(file, &problems);
        for (const QString &problem : qAsConst(problems)) {
            console->Failure(file, problem);
            result = kSomeFailed;
        }
    }
    console->Print(SummaryOfReports(reports));
    return result;
}
