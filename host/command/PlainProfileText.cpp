#include "PlainProfileText.h"

#include "Console.h"
#include "ProfileReport.h"
#include "app/ProfileUse.h"

namespace {

constexpr int kLabelWidth = 22;

QString Line(const QString &label, const QString &value)
{
    return LabeledLine(label, kLabelWidth, value);
}

QString Number(double value)
{
    return QString::number(value, 'g', 7); // the precision of a float
}

QString Numbers(const QVector<float> &values)
{
    QStringList numbers;
    for (float value : values)
        numbers << Number(static_cast<double>(value));
    return numbers.join(QStringLiteral(", "));
}

/// Returns focal length, aperture and distance of the measurement: "135 mm, f/2.5, 5.9 m".
QString MeasurementText(const ProfileReport &report)
{
    QStringList parts;
    if (report.focalLengthMm)
        parts << Number(*report.focalLengthMm) + QLatin1String(" mm");
    if (report.fNumber)
        parts << QLatin1String("f/") + QString::number(*report.fNumber, 'g', 2);
    if (report.focusDistanceM)
        parts << QString::number(*report.focusDistanceM, 'g', 3) + QLatin1String(" m");
    return parts.join(QStringLiteral(", "));
}

/// Returns one line of values. Focal lengths are fractions of the picture's width, as in the file; the center is in
/// pixels.
QString Values(const LensParam &model)
{
    QStringList parts;
    parts << QStringLiteral("focal length %1, %2").arg(Number(model.focalLengthX), Number(model.focalLengthY));
    // Spelled as it has always been: scripts read this text.
    parts << QStringLiteral("centre %1, %2").arg(Number(model.centerX), Number(model.centerY));
    if (model.scaleFactor != 1.0F)
        parts << QStringLiteral("scale %1").arg(Number(static_cast<double>(model.scaleFactor)));
    parts << QStringLiteral("coefficients %1")
                 .arg(model.coefficients.isEmpty() ? QStringLiteral("none") : Numbers(model.coefficients));
    if (model.tangential1 != 0.0 || model.tangential2 != 0.0)
        parts << QStringLiteral("tangential %1, %2").arg(Number(model.tangential1), Number(model.tangential2));
    return parts.join(QStringLiteral("; "));
}

} // namespace

QString PlainProfileText(const QString &file, const ProfileReport &report)
{
    const ProfileUse use = JudgeProfile(file, report);
    QString text = OneLine(file) + QLatin1Char('\n');
    text += Line(QStringLiteral("Profile"), report.profileName);
    text += Line(QStringLiteral("Camera"), report.camera.isEmpty() ? report.model : report.camera);
    text += Line(QStringLiteral("Lens"), report.lens);
    text += Line(QStringLiteral("Measured at"), MeasurementText(report));
    text += Line(QStringLiteral("Made for pictures of"),
                 QStringLiteral("%1 x %2 pixels").arg(Number(report.imageWidth), Number(report.imageLength)));
    text += Line(QStringLiteral("Entries"), QString::number(report.entryCount));
    text +=
        Line(QStringLiteral("Projection"), report.fisheye ? QStringLiteral("fisheye") : QStringLiteral("perspective"));
    for (const ProfileReportModel &model : report.models) {
        const QString name = model.name.left(1).toUpper() + model.name.mid(1);
        text += Line(name, model.values.found ? Values(model.values) : QStringLiteral("none"));
    }
    text += Line(QStringLiteral("Corrects"), use.holds.Any() ? NamesOf(use.holds) : QStringLiteral("nothing"));
    for (const QString &note : report.notes)
        text += Line(QStringLiteral("Note"), note);
    return text;
}

QString WhyNoPlainCorrection(const QString &file, const ProfileReport &report)
{
    if (!report.usable)
        return report.problem;
    QString why;
    ChooseCorrections(JudgeProfile(file, report), Corrections(), &why);
    return why;
}
