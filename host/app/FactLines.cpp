#include "FactLines.h"

#include "PictureFacts.h"

#include <QStringList>

#include <cmath>

namespace {

constexpr int kLabelWidth = 18;

struct NumberRow {
    const char *label;
    Fact<double> PictureFacts::*fact;
    const char *before, *after; // texts around the number
};

constexpr NumberRow kNumbers[] = {
    {"Min focal length", &PictureFacts::lensMinFocalMm, "", " mm"},
    {"Max focal length", &PictureFacts::lensMaxFocalMm, "", " mm"},
    {"Widest aperture", &PictureFacts::lensMinApertureAtMin, "f/", ""},
    {"... at max focal", &PictureFacts::lensMinApertureAtMax, "f/", ""},
    {"Focal length", &PictureFacts::focalMm, "", " mm"},
    {"35 mm equivalent", &PictureFacts::focal35Mm, "", " mm"},
    {"Digital zoom", &PictureFacts::digitalZoom, "", ""},
    {"Aperture", &PictureFacts::aperture, "f/", ""},
    {"Distance", &PictureFacts::distanceM, "", " m"},
    {"Focal plane", &PictureFacts::focalPlaneWidthMm, "", " mm"},
};

struct DoneRow {
    const char *name;
    Fact<bool> PictureFacts::*fact;
};

constexpr DoneRow kDone[] = {
    {"distortion", &PictureFacts::distortionDone},
    {"lateral color", &PictureFacts::chromaticDone},
    {"vignetting", &PictureFacts::vignettingDone},
};

QString Line(const char *label, const QString &text, const QString &source = QString())
{
    const QString from = source.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(source);
    return QStringLiteral("%1%2\n").arg(QLatin1String(label), -kLabelWidth).arg(text + from);
}

QString NumberText(const NumberRow &row, double value)
{
    return std::isinf(value) ? QStringLiteral("infinity")
                             : QLatin1String(row.before) + QString::number(value, 'g', 5) + QLatin1String(row.after);
}

QString NameLines(const PictureFacts &facts)
{
    QString text;
    const auto add = [&text](const char *label, const Fact<QString> &fact) {
        if (fact.Known())
            text += Line(label, fact.value, fact.source);
    };
    add("Make", facts.make);
    add("Model", facts.model);
    add("Lens make", facts.lensMake);
    for (const Fact<QString> &name : facts.lensNames)
        add("Lens", name);
    for (const Fact<QString> &number : facts.lensIds)
        add("Lens ID", number);
    return text;
}

QString FrameLines(const PictureFacts &facts)
{
    const auto sides = [](const QSize &size) { return QStringLiteral("%1 x %2").arg(size.width()).arg(size.height()); };
    QString text = Line("Pixels", sides(facts.pixels) + QLatin1String(facts.raw ? ", camera raw" : ""));
    if (facts.original.Known())
        text += Line("Full size", sides(facts.original.value), facts.original.source);
    text += Line("Orientation", QString::number(facts.orientation));
    if (facts.readerTurn != 1)
        text += Line("Reader applied", QString::number(facts.readerTurn));
    if (const QRectF &crop = facts.crop.value; facts.crop.Known()) {
        const auto share = [](double value) { return QString::number(value, 'g', 4); };
        text += Line("Crop",
                     QStringLiteral("%1, %2 to %3, %4")
                         .arg(share(crop.left()), share(crop.top()), share(crop.right()), share(crop.bottom())),
                     facts.crop.source);
    }
    return text;
}

} // namespace

QString FactLines(const PictureFacts &facts)
{
    QString text = NameLines(facts);
    for (const NumberRow &row : kNumbers) {
        if (const Fact<double> &fact = facts.*row.fact; fact.Known())
            text += Line(row.label, NumberText(row, fact.value), fact.source);
    }
    text += FrameLines(facts);
    const QString done = DoneBeforeText(facts);
    return done.isEmpty() ? text : text + Line("Done before", done);
}

QString DoneBeforeText(const PictureFacts &facts)
{
    QStringList texts;
    QStringList names;
    for (std::size_t i = 0; i < std::size(kDone); ++i) {
        const Fact<bool> &fact = facts.*kDone[i].fact;
        if (!fact.value)
            continue;
        names << QLatin1String(kDone[i].name);
        const bool isLast = i + 1 == std::size(kDone);
        if (const Fact<bool> *next = isLast ? nullptr : &(facts.*kDone[i + 1].fact);
            next && next->value && next->source == fact.source)
            continue; // the next correction has the same source: name it once
        texts << QStringLiteral("%1 (%2)").arg(names.join(QLatin1String(", ")), fact.source);
        names.clear();
    }
    return texts.join(QLatin1String(", "));
}
