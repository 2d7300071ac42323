#include "PlotScene.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace {

constexpr int kFontPixels = 12;
constexpr double kDash = 4.0; // length of dashes and gaps

QString Coordinate(double value)
{
    return QString::number(value, 'f', 3);
}

QString SvgOf(const PlotLine &line)
{
    QStringList points;
    for (const QPointF &point : line.points)
        points << Coordinate(point.x()) + QLatin1Char(',') + Coordinate(point.y());
    const QString dashes =
        line.style == PlotLine::Style::Dashed ? QStringLiteral(" stroke-dasharray=\"%1\"").arg(kDash) : QString();
    return QStringLiteral("<polyline fill=\"none\" stroke=\"%1\" stroke-width=\"%2\"%3 points=\"%4\"><title>%5</title>"
                          "</polyline>\n")
        .arg(line.color.name(), QString::number(line.width), dashes, points.join(QLatin1Char(' ')),
             line.title.toHtmlEscaped());
}

QString SvgOf(const PlotText &text)
{
    const char *const anchors[] = {"start", "middle", "end"};
    return QStringLiteral("<text x=\"%1\" y=\"%2\" fill=\"%3\" text-anchor=\"%4\"%5>%6</text>\n")
        .arg(Coordinate(text.at.x()), Coordinate(text.at.y()), text.color.name(),
             QLatin1String(anchors[static_cast<int>(text.anchor)]),
             text.isBold ? QStringLiteral(" font-weight=\"bold\"") : QString(), text.text.toHtmlEscaped());
}

void Draw(const PlotLine &line, QPainter *painter)
{
    QPen pen(line.color, line.width);
    if (line.style == PlotLine::Style::Dashed)
        pen.setDashPattern({kDash / line.width, kDash / line.width}); // in pen widths
    painter->setPen(pen);
    painter->drawPolyline(line.points.constData(), line.points.size());
}

void Draw(const PlotText &text, QFont font, QPainter *painter)
{
    font.setBold(text.isBold);
    painter->setFont(font);
    painter->setPen(text.color);
    const double width = QFontMetricsF(font).horizontalAdvance(text.text);
    const double shares[] = {0.0, 0.5, 1.0};
    painter->drawText(text.at - QPointF(width * shares[static_cast<int>(text.anchor)], 0.0), text.text);
}

} // namespace

QByteArray ToSvg(const PlotScene &scene)
{
    QString svg = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                 "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\" "
                                 "viewBox=\"0 0 %1 %2\" font-family=\"sans-serif\" font-size=\"%3\">\n"
                                 "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n")
                      .arg(scene.width)
                      .arg(scene.height)
                      .arg(kFontPixels);
    for (const PlotLine &line : scene.lines)
        svg += SvgOf(line);
    for (const PlotText &text : scene.texts)
        svg += SvgOf(text);
    return (svg + QLatin1String("</svg>\n")).toUtf8();
}

QImage ToImage(const PlotScene &scene, double scale)
{
    QImage image(int(std::ceil(scene.width * scale)), int(std::ceil(scene.height * scale)), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    QFont font(QStringLiteral("sans-serif"));
    font.setPixelSize(kFontPixels);
    for (const PlotLine &line : scene.lines)
        Draw(line, &painter);
    for (const PlotText &text : scene.texts)
        Draw(text, font, &painter);
    return image;
}
