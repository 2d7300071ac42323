#include "ProfileFitText.h"

#include "Console.h"
#include "PictureFrame.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kLabelWidth = 12;

QString Line(const char *label, const QString &value)
{
    return LabeledLine(QLatin1String(label), kLabelWidth, value);
}

QString Known(const Fact<double> &fact, const QString &pattern)
{
    if (!fact.Known())
        return QString();
    const QString value =
        std::isinf(fact.value) ? QStringLiteral("infinity") : pattern.arg(QString::number(fact.value, 'g', 4));
    return QStringLiteral("%1 (%2)").arg(value, fact.source);
}

QString SettingText(const PictureFacts &facts)
{
    QStringList known{Known(facts.focalMm, QStringLiteral("%1 mm")), Known(facts.aperture, QStringLiteral("f/%1")),
                      Known(facts.distanceM, QStringLiteral("%1 m"))};
    known.removeAll(QString());
    return known.isEmpty() ? QStringLiteral("unknown") : known.join(QLatin1String(", "));
}

QString AppliedText(const FitResult &result)
{
    QStringList names;
    if (result.distortion)
        names << QStringLiteral("distortion");
    if (result.chromatic)
        names << QStringLiteral("color");
    if (result.vignetting)
        names << QStringLiteral("light");
    return names.isEmpty() ? QStringLiteral("nothing") : names.join(QLatin1String(", "));
}

/// Returns the long side of the picture's frame divided by that of the profile's frame, taken from the entry with the
/// largest weight; 0 if no entry is usable.
double FrameRatio(const LensProfile &profile, const ProfileFit &fit)
{
    for (const auto *entries : {&fit.result.geometryEntries, &fit.result.colorEntries, &fit.result.lightEntries}) {
        const auto most = std::max_element(entries->begin(), entries->end(),
                                           [](const auto &a, const auto &b) { return a.weight < b.weight; });
        if (most == entries->end())
            continue;
        QString why;
        const PictureFrame frame(fit.facts, {fit.facts.make.value, fit.facts.model.value});
        const auto entryFrame = frame.ForEntry(profile.entries[most->entry], /*chosen=*/true, &why);
        return entryFrame ? entryFrame->ratio : 0.0;
    }
    return 0.0;
}

QJsonArray WeightsJson(const QVector<EntryWeight> &weights)
{
    QJsonArray json;
    for (const EntryWeight &one : weights)
        json.append(QJsonObject{{QStringLiteral("entry"), one.entry + 1}, {QStringLiteral("weight"), one.weight}});
    return json;
}

} // namespace

ProfileFit FitTo(const LensProfile &profile, const QString &picture, const PictureFacts &facts)
{
    FitOptions options;
    options.profile = profile.path;
    return {picture, facts, Fit(profile, facts, options)};
}

QString FramingText(const FitResult &result)
{
    return QStringLiteral("zoom %1, %2 % of the field kept")
        .arg(result.zoom, 0, 'f', 4)
        .arg(100.0 * result.fieldShare, 0, 'f', 1);
}

QString ProfileFitText(const LensProfile &profile, const ProfileFit &fit)
{
    const FitResult &result = fit.result;
    QString text = Line("Picture", fit.picture);
    text += Line("Setting", SettingText(fit.facts));
    text += Line("Applied", AppliedText(result));
    text += Line("Entries", result.entries);
    if (const double ratio = FrameRatio(profile, fit); ratio > 0.0)
        text +=
            Line("Frame", QStringLiteral("the picture's is %1 of the profile's (long sides)").arg(ratio, 0, 'f', 3));
    if (fit.DoesAnything())
        text += Line("Framing", FramingText(result));
    if (result.leavesEmpty)
        text += Line("", QStringLiteral("some pixels stay empty"));
    for (const QString &assumed : result.assumed)
        text += Line("Assumed", assumed);
    return text + Line("Not done", result.why);
}

QJsonObject ProfileFitJson(const LensProfile &profile, const ProfileFit &fit)
{
    const FitResult &result = fit.result;
    QJsonObject json{{QStringLiteral("picture"), fit.picture},
                     {QStringLiteral("distortion"), WeightsJson(result.geometryEntries)},
                     {QStringLiteral("color"), WeightsJson(result.colorEntries)},
                     {QStringLiteral("light"), WeightsJson(result.lightEntries)},
                     {QStringLiteral("assumed"), QJsonArray::fromStringList(result.assumed)},
                     {QStringLiteral("zoom"), result.zoom},
                     {QStringLiteral("fieldShare"), result.fieldShare},
                     {QStringLiteral("leavesEmpty"), result.leavesEmpty}};
    if (const double ratio = FrameRatio(profile, fit); ratio > 0.0)
        json.insert(QStringLiteral("frameRatio"), ratio);
    if (!result.why.isEmpty())
        json.insert(QStringLiteral("notDone"), result.why);
    return json;
}
