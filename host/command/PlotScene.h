// Drawing of lines and texts, rendered as SVG or as pixels. Positions are measured from the top left corner. One unit
// of position or size is one SVG pixel.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QPointF>
#include <QString>
#include <QVector>

struct PlotLine {
    enum class Style { Solid, Dashed };

    QString title; // SVG viewers show it under the pointer; may be empty
    QVector<QPointF> points;
    QColor color;
    double width = 1.0;
    Style style = Style::Solid;
};

struct PlotText {
    enum class Anchor { Start, Middle, End };

    QPointF at; // on the baseline
    QString text;
    QColor color;
    Anchor anchor = Anchor::Start;
    bool isBold = false;
};

struct PlotScene {
    double width = 0.0, height = 0.0;
    QVector<PlotLine> lines; // drawn in this order, on white
    QVector<PlotText> texts;
};

/// Renders the scene as an SVG file, in UTF-8.
QByteArray ToSvg(const PlotScene &scene);

/// Renders the scene with @p scale pixels per unit. Needs the application object, for fonts.
QImage ToImage(const PlotScene &scene, double scale);
