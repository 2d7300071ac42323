#include "FittedRecord.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

// --- Texts of values ---

template <typename Value> struct Word {
    QLatin1String text;
    Value value;
};

const Word<Framing> kFramings[] = {{QLatin1String("fill"), Framing::Fill},
                                   {QLatin1String("keep"), Framing::Keep},
                                   {QLatin1String("all"), Framing::All}};
const Word<Sampling> kSamplings[] = {{QLatin1String("sharp"), Sampling::Sharp},
                                     {QLatin1String("bilinear"), Sampling::Bilinear}};
const Word<Projection> kProjections[] = {{QLatin1String("rectilinear"), Projection::Rectilinear},
                                         {QLatin1String("equidistant"), Projection::Equidistant},
                                         {QLatin1String("stereographic"), Projection::Stereographic},
                                         {QLatin1String("equisolid"), Projection::Equisolid}};
const Word<ProfileSource> kSources[] = {{QLatin1String("auto"), ProfileSource::Auto},
                                        {QLatin1String("lcp"), ProfileSource::Lcp},
                                        {QLatin1String("lensfun"), ProfileSource::Lensfun}};

template <typename Value, std::size_t count>
bool ReadWord(const Word<Value> (&words)[count], const QString &text, Value *value)
{
    const auto found = std::find_if(std::begin(words), std::end(words), [&](const auto &w) { return w.text == text; });
    if (found != std::end(words))
        *value = found->value;
    return found != std::end(words);
}

template <typename Value, std::size_t count> QString WordOf(const Word<Value> (&words)[count], Value value)
{
    const auto found =
        std::find_if(std::begin(words), std::end(words), [=](const auto &w) { return w.value == value; });
    return found != std::end(words) ? QString(found->text) : QString();
}

QString TextOf(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

/// Parses a number and clamps it to the range. Returns false, with @p value unchanged, if the text is not a number.
bool ReadNumber(const QString &text, double least, double most, double *value)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber || std::isnan(number))
        return false;
    *value = std::clamp(number, least, most);
    return true;
}

void ReadFraming(const QString &text, FitOptions *options)
{
    if (!ReadWord(kFramings, text, &options->framing) && ReadNumber(text, kMinZoom, kMaxZoom, &options->framingFactor))
        options->framing = Framing::Factor;
}

QString FramingText(const FitOptions &options)
{
    return options.framing == Framing::Factor ? TextOf(options.framingFactor) : WordOf(kFramings, options.framing);
}

// --- Readers and writers of options; the text of an absent option is empty ---

template <double FitOptions::*amount> void ReadAmount(const QString &text, FitOptions *options)
{
    ReadNumber(text, 0.0, kMaxAmount, &(options->*amount));
}

template <double FitOptions::*amount> QString AmountText(const FitOptions &options)
{
    return TextOf(options.*amount);
}

template <QString TypedFacts::*name> void ReadName(const QString &text, FitOptions *options)
{
    options->typed.*name = text;
}

template <QString TypedFacts::*name> QString NameText(const FitOptions &options)
{
    return options.typed.*name;
}

template <std::optional<double> TypedFacts::*fact> void ReadFact(const QString &text, FitOptions *options)
{
    double value = 0.0;
    const bool mayBeInfinite = fact == &TypedFacts::distanceM;
    if (ReadNumber(text, -kInfinite, kInfinite, &value) && value > 0.0 && (mayBeInfinite || std::isfinite(value)))
        options->typed.*fact = value;
}

template <std::optional<double> TypedFacts::*fact> QString FactText(const FitOptions &options)
{
    const std::optional<double> &value = options.typed.*fact;
    return value ? TextOf(*value) : QString();
}

struct OptionRow {
    const char *name;
    void (*read)(const QString &text, FitOptions *options);
    QString (*text)(const FitOptions &options);
};

constexpr int kLastingCount = 7; // the first rows of the table
const OptionRow kOptions[] = {
    {"Framing", ReadFraming, FramingText},
    {"Sampling", [](const QString &text, FitOptions *options) { ReadWord(kSamplings, text, &options->sampling); },
     [](const FitOptions &options) { return WordOf(kSamplings, options.sampling); }},
    {"Projection", [](const QString &text, FitOptions *options) { ReadWord(kProjections, text, &options->projection); },
     [](const FitOptions &options) { return WordOf(kProjections, options.projection); }},
    {"AmountDisto", ReadAmount<&FitOptions::amountDistortion>, AmountText<&FitOptions::amountDistortion>},
    {"AmountCA", ReadAmount<&FitOptions::amountChromatic>, AmountText<&FitOptions::amountChromatic>},
    {"AmountFalloff", ReadAmount<&FitOptions::amountVignetting>, AmountText<&FitOptions::amountVignetting>},
    {"Source", [](const QString &text, FitOptions *options) { ReadWord(kSources, text, &options->source); },
     [](const FitOptions &options) { return WordOf(kSources, options.source); }},
    {"Again", [](const QString &text, FitOptions *options) { options->again = text == QLatin1String("1"); },
     [](const FitOptions &options) { return options.again ? QStringLiteral("1") : QString(); }},
    {"Lens", ReadName<&TypedFacts::lens>, NameText<&TypedFacts::lens>},
    {"Body", ReadName<&TypedFacts::body>, NameText<&TypedFacts::body>},
    {"Focal", ReadFact<&TypedFacts::focalMm>, FactText<&TypedFacts::focalMm>},
    {"Aperture", ReadFact<&TypedFacts::aperture>, FactText<&TypedFacts::aperture>},
    {"Distance", ReadFact<&TypedFacts::distanceM>, FactText<&TypedFacts::distanceM>},
};

const OptionRow *EndOf(fitted::Options which)
{
    return which == fitted::Options::Lasting ? std::begin(kOptions) + kLastingCount : std::end(kOptions);
}

} // namespace

FitOptions fitted::Read(Options which, const std::function<QString(const QString &)> &textOf)
{
    FitOptions options;
    for (const OptionRow *row = std::begin(kOptions); row != EndOf(which); ++row)
        row->read(textOf(QLatin1String(row->name)), &options);
    return options;
}

void fitted::Write(Options which, const FitOptions &options,
                   const std::function<void(const QString &, const QString &)> &write)
{
    for (const OptionRow *row = std::begin(kOptions); row != EndOf(which); ++row) {
        const QString text = row->text(options);
        if (!text.isEmpty())
            write(QLatin1String(row->name), text);
    }
}

void fitted::Write(const FitReport &report, QDomElement *element)
{
    const std::pair<const char *, const QString &> results[] = {{"Profile", report.profile},
                                                                {"Entries", report.entries},
                                                                {"Assumed", report.assumed},
                                                                {"Done", report.done},
                                                                {"Why", report.why}};
    for (const auto &[name, text] : results)
        element->setAttribute(QLatin1String(name), text);
}

void fitted::CopyLasting(FittedRecord *destination, const FittedRecord &source)
{
    FitOptions options = source.options;
    options.again = destination->options.again;
    options.typed = destination->options.typed;
    destination->options = options;
}
