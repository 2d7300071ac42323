#include "PictureReport.h"

#include <QJsonArray>

#include <algorithm>
#include <iterator>

namespace {

struct OutcomeRow {
    PictureReport::Outcome outcome;
    QLatin1String name;
};

const OutcomeRow kOutcomes[] = {
    {PictureReport::Outcome::Corrected, QLatin1String("corrected")},
    {PictureReport::Outcome::Planned, QLatin1String("planned")},
    {PictureReport::Outcome::Skipped, QLatin1String("skipped")},
    {PictureReport::Outcome::CorrectedBefore, QLatin1String("corrected before")},
    {PictureReport::Outcome::Failed, QLatin1String("failed")},
};

struct TextRow {
    QLatin1String key;
    QString PictureReport::*text;
};

const TextRow kTexts[] = {
    {QLatin1String("output"), &PictureReport::output},   {QLatin1String("why"), &PictureReport::why},
    {QLatin1String("camera"), &PictureReport::camera},   {QLatin1String("lens"), &PictureReport::lens},
    {QLatin1String("profile"), &PictureReport::profile}, {QLatin1String("entries"), &PictureReport::entries},
};

struct ListRow {
    QLatin1String key;
    QStringList PictureReport::*texts;
};

const ListRow kLists[] = {
    {QLatin1String("assumed"), &PictureReport::assumed},
    {QLatin1String("corrections"), &PictureReport::corrections},
    {QLatin1String("notes"), &PictureReport::notes},
};

const QLatin1String kPicture("picture"), kOutcome("outcome"), kSeconds("seconds");

} // namespace

QString NameOf(PictureReport::Outcome outcome)
{
    return std::find_if(std::begin(kOutcomes), std::end(kOutcomes),
                        [&](const OutcomeRow &row) { return row.outcome == outcome; })
        ->name;
}

QString TextOf(const QMap<PictureReport::Outcome, int> &counts)
{
    QStringList parts;
    for (auto count = counts.cbegin(); count != counts.cend(); ++count)
        parts << QStringLiteral("%1 %2").arg(count.value()).arg(NameOf(count.key()));
    return parts.join(QLatin1String(", "));
}

QJsonObject ToJson(const PictureReport &report)
{
    QJsonObject object{{kPicture, report.picture}, {kOutcome, NameOf(report.outcome)}, {kSeconds, report.seconds}};
    for (const TextRow &row : kTexts) {
        if (!(report.*row.text).isEmpty())
            object.insert(row.key, report.*row.text);
    }
    for (const ListRow &row : kLists) {
        if (!(report.*row.texts).isEmpty())
            object.insert(row.key, QJsonArray::fromStringList(report.*row.texts));
    }
    return object;
}

bool FromJson(const QJsonObject &object, PictureReport *report)
{
    const auto outcome = std::find_if(std::begin(kOutcomes), std::end(kOutcomes), [&](const OutcomeRow &row) {
        return object.value(kOutcome).toString() == row.name;
    });
    report->picture = object.value(kPicture).toString();
    if (outcome == std::end(kOutcomes) || report->picture.isEmpty() || !object.value(kSeconds).isDouble())
        return false;
    report->outcome = outcome->outcome;
    report->seconds = object.value(kSeconds).toDouble();
    for (const TextRow &row : kTexts)
        report->*row.text = object.value(row.key).toString();
    for (const ListRow &row : kLists) {
        const QVariantList texts = object.value(row.key).toArray().toVariantList();
        for (const QVariant &text : texts)
            report->*row.texts << text.toString();
    }
    return true;
}
