#include "FittedOptions.h"

#include "FitOptions.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr double kMaxPercent = 100.0 * kMaxAmount;

/// Returns whether a text is a number from @p least to @p most. The decimal separator is a point in every locale.
bool IsNumber(const QString &text, double least, double most)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    return ok && number >= least && number <= most;
}

bool IsAboveZero(const QString &text)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    return ok && std::isfinite(number) && number > 0.0;
}

bool IsZoom(const QString &text)
{
    return IsNumber(text, kMinZoom, kMaxZoom);
}

bool IsQuality(const QString &text)
{
    bool ok = false;
    const int quality = text.toInt(&ok);
    return ok && quality >= 1 && quality <= 100;
}

bool IsText(const QString &text)
{
    return !text.trimmed().isEmpty();
}

struct AmountName {
    const char *name;
    const char *attribute;
    double FitOptions::*amount;
};

constexpr AmountName kAmounts[] = {{"distortion", "AmountDisto", &FitOptions::amountDistortion},
                                   {"ca", "AmountCA", &FitOptions::amountChromatic},
                                   {"vignetting", "AmountFalloff", &FitOptions::amountVignetting}};

/// Converts "distortion=80,ca=100" to attributes with factors instead of percentages; empty if it can't be parsed.
QVector<QPair<QString, QString>> Amounts(const QString &text)
{
    QVector<QPair<QString, QString>> attributes;
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString &part : parts) {
        const QString name = part.section(QLatin1Char('='), 0, 0), percent = part.section(QLatin1Char('='), 1);
        const auto found = std::find_if(std::begin(kAmounts), std::end(kAmounts),
                                        [&](const AmountName &one) { return name == QLatin1String(one.name); });
        if (found == std::end(kAmounts) || !IsNumber(percent, 0.0, kMaxPercent))
            return {};
        attributes.append({QLatin1String(found->attribute), QString::number(percent.toDouble() / 100.0)});
    }
    return attributes;
}

bool AreAmounts(const QString &text)
{
    return !Amounts(text).isEmpty();
}

struct Row {
    FittedOptionRow shown;
    const char *attribute;                // of the record's XML element; null: those that Amounts() returns
    bool (*isValid)(const QString &text); // checks values other than the words; null: no others are valid
    const char *expected;                 // for the message
    void (*applyToFit)(const QString &text, FitOptions *options) = nullptr; // null: doesn't affect the fit
};

void TakeFraming(const QString &text, FitOptions *options)
{
    options->framing = text == QLatin1String("fill") ? Framing::Fill
        : text == QLatin1String("keep")              ? Framing::Keep
        : text == QLatin1String("all")               ? Framing::All
                                                     : Framing::Factor;
    if (options->framing == Framing::Factor)
        options->framingFactor = text.toDouble();
}

void TakeProjection(const QString &text, FitOptions *options)
{
    options->projection = text == QLatin1String("equidistant") ? Projection::Equidistant
        : text == QLatin1String("stereographic")               ? Projection::Stereographic
        : text == QLatin1String("equisolid")                   ? Projection::Equisolid
                                                               : Projection::Rectilinear;
}

void TakeAmounts(const QString &text, FitOptions *options)
{
    for (const auto &[attribute, factor] : Amounts(text))
        for (const AmountName &one : kAmounts)
            if (attribute == QLatin1String(one.attribute))
                options->*one.amount = factor.toDouble();
}

void TakeSource(const QString &text, FitOptions *options)
{
    options->source = text == QLatin1String("lcp") ? ProfileSource::Lcp
        : text == QLatin1String("lensfun")         ? ProfileSource::Lensfun
                                                   : ProfileSource::Auto;
}

template <std::optional<double> TypedFacts::*fact> void TakeNumber(const QString &text, FitOptions *options)
{
    options->typed.*fact = text.toDouble(); // accepts "inf" too
}

const Row kRows[] = {
    {{"format", "NAME", "output format: tiff (default), jpeg, png, exr", false, "tiff jpeg png exr"},
     "Format",
     nullptr,
     "tiff, jpeg, png or exr"},
    {{"quality", "N", "JPEG quality, 1 to 100; default: 92", false, nullptr, true},
     "Quality",
     IsQuality,
     "a whole number from 1 to 100"},
    {{"compression", "NAME", "TIFF compression: deflate (default), none, lzw, zstd", false, "none lzw deflate zstd",
      true},
     "Compression",
     nullptr,
     "none, lzw, deflate or zstd"},
    {{"framing", "HOW", "fill (default), keep, all, or a zoom from 0.5 to 2", false, "fill keep all"},
     "Framing",
     IsZoom,
     "fill, keep, all, or a number from 0.5 to 2",
     TakeFraming},
    {{"sampling", "HOW", "sharp (default) or bilinear", false, "sharp bilinear", true},
     "Sampling",
     nullptr,
     "sharp or bilinear"},
    {{"projection", "NAME", "for fisheyes: rectilinear (default), equidistant, stereographic, equisolid", false,
      "rectilinear equidistant stereographic equisolid", true},
     "Projection",
     nullptr,
     "rectilinear, equidistant, stereographic or equisolid",
     TakeProjection},
    {{"amount", "LIST", "in percent, such as distortion=80,ca=100,vignetting=50"},
     nullptr,
     AreAmounts,
     "distortion=PERCENT,ca=PERCENT,vignetting=PERCENT or some of these, each 0 to 200",
     TakeAmounts},
    {{"source", "NAME", "where profiles come from: auto (default), lcp, lensfun", false, "auto lcp lensfun", true},
     "Source",
     nullptr,
     "auto, lcp or lensfun",
     TakeSource},
    {{"again", nullptr, "correct even pictures that were corrected before", false, nullptr, true},
     "Again",
     nullptr,
     "",
     [](const QString &, FitOptions *options) { options->again = true; }},
    {{"lens", "NAME", "the lens, for pictures that don't name it", true, nullptr, true},
     "Lens",
     IsText,
     "a name",
     [](const QString &text, FitOptions *options) { options->typed.lens = text; }},
    {{"focal", "MM", "the focal length", true, nullptr, true},
     "Focal",
     IsAboveZero,
     "a number above 0",
     TakeNumber<&TypedFacts::focalMm>},
    {{"aperture", "N", "the f-number", true, nullptr, true},
     "Aperture",
     IsAboveZero,
     "a number above 0",
     TakeNumber<&TypedFacts::aperture>},
    {{"distance", "M", "the subject distance in meters, or inf", true, "inf", true},
     "Distance",
     IsAboveZero,
     "a number above 0, or inf",
     TakeNumber<&TypedFacts::distanceM>},
    {{"body", "MODEL", "the camera, for pictures that don't name it", true, nullptr, true},
     "Body",
     IsText,
     "a name",
     [](const QString &text, FitOptions *options) { options->typed.body = text; }},
};

bool Accepts(const Row &row, const QString &value)
{
    if (!row.shown.value)
        return true;
    const QStringList words = QString::fromLatin1(row.shown.words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return words.contains(value) || (row.isValid && row.isValid(value));
}

} // namespace

QVector<FittedOptionRow> FittedOptionRows()
{
    QVector<FittedOptionRow> rows;
    for (const Row &row : kRows)
        rows.append(row.shown);
    return rows;
}

QString TakeFittedOption(const QString &name, const QString &value, FittedOptions *options)
{
    const auto row = std::find_if(std::begin(kRows), std::end(kRows),
                                  [&](const Row &one) { return name == QLatin1String(one.shown.name); });
    if (!Accepts(*row, value))
        return QStringLiteral("'--%1' has the value '%2', expected %3.").arg(name, value, QLatin1String(row->expected));
    if (row->attribute)
        options->attributes.append({QLatin1String(row->attribute), row->shown.value ? value : QStringLiteral("1")});
    else
        options->attributes += Amounts(value);
    if (row->applyToFit)
        row->applyToFit(value, &options->fit);
    return QString();
}
