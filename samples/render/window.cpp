#include "window.h"

namespace Samples {
namespace {

constexpr Rgb kStone = {0.92, 0.89, 0.83};
constexpr Rgb kFrame = {0.94, 0.93, 0.90};

/// Function object for the share of the footprint in a rectangle; left and right are relative to the window's axis.
struct Panel {
    const Brush &brush;
    double x;

    double operator()(double left, double top, double right, double bottom) const
    {
        return Span(x, left, right, brush.cell.width) * Span(brush.cell.at.y, top, bottom, brush.cell.height);
    }
};

void PaintShutter(Brush &brush, const Panel &panel, const Window &window, double left)
{
    const double right = left + window.half;
    const double y = brush.cell.at.y;
    brush.Shade(panel(left + 7, window.top + 10, right + 7, window.bottom + 8), kShadow);
    const double board = panel(left, window.top, right, window.bottom);
    brush.Fill(board, window.shutter);
    const double inset = panel(left + 8, window.top + 9, right - 8, window.bottom - 9)
        - panel(left + 8, (window.top + window.bottom) / 2 - 6, right - 8, (window.top + window.bottom) / 2 + 6);
    brush.Shade(inset * Lines(y, 9, 4.5, brush.cell.height), 0.66);
    brush.Shade(board - panel(left + 3, window.top + 3, right, window.bottom), 1.15);
    brush.Shade(board - panel(left, window.top, right - 3, window.bottom - 3), 0.75);
}

/// Paints sky in the upper panes, a dark room in the lower ones, and curtains or a lamp in some windows.
void PaintGlass(Brush &brush, const Window &window, double share)
{
    const double t = Clamp01((brush.cell.at.y - window.top) / (window.bottom - window.top));
    const double slant = window.x + (brush.cell.at.y - window.top) * 0.45 + 30 * Hash(1, 0, window.seed);
    const double glare = Ramp(slant, 10, 26) * Ramp(slant, 92, 70);
    Rgb glass = Mix({0.35, 0.43, 0.52}, {0.13, 0.16, 0.19}, Ramp(t, 0, 0.75));
    if (Hash(0, 0, window.seed) < 0.25)
        glass = Mix(glass, {0.93, 0.73, 0.42}, 0.75 * Ramp(t, 0.1, 0.6));
    const double drawn = window.half * (0.35 + 0.5 * Hash(2, 0, window.seed));
    const double fold =
        0.90 + 0.10 * std::sin(window.x / 3.2 + 1.5 * Noise(window.x / 9, brush.cell.at.y / 60, window.seed));
    const double curtain = Hash(3, 0, window.seed) < 0.7 ? Ramp(std::abs(window.x), drawn, drawn + 5) : 0;
    glass = Mix(glass, Rgb{0.72, 0.71, 0.68} * fold, 0.8 * curtain);
    brush.Fill(share, Mix(glass, {0.66, 0.76, 0.86}, 0.38 * glare));
}

void PaintFrame(Brush &brush, const Panel &panel, const Window &w)
{
    const double height = w.bottom - w.top;
    const double opening = panel(-w.half, w.top, w.half, w.bottom);
    PaintGlass(brush, w, opening);
    const double edge = opening - panel(-w.half + 8, w.top + 8, w.half - 8, w.bottom - 8);
    double bars = std::max(panel(-4.5, w.top, 4.5, w.bottom),
                           panel(-w.half, w.top + 0.33 * height - 4, w.half, w.top + 0.33 * height + 4));
    if (height > 150)
        bars = std::max(bars, panel(-w.half, w.top + 0.67 * height - 2, w.half, w.top + 0.67 * height + 2));
    brush.Fill(std::max(edge, bars), kFrame);
    brush.Shade(opening - panel(-w.half + 11, w.top + 14, w.half, w.bottom), kShadow);
}

void PaintHood(Brush &brush, const Panel &panel, const Window &w)
{
    const double top = w.top - 44;
    brush.Shade(panel(-w.half - 20, top + 18, w.half + 36, top + 34), kShadow);
    brush.Fill(panel(-w.half - 14, top + 18, w.half + 14, w.top - 12), kStone);
    brush.Shade(panel(-w.half - 14, top + 18, w.half + 14, top + 24), kShadow);
    const double slope = std::abs(w.x) * 0.32;
    const double gable = Span(brush.cell.at.y, top - 20 + slope, top + 18, brush.cell.height)
        * Span(w.x, -w.half - 30, w.half + 30, brush.cell.width);
    brush.Fill(gable, kStone);
    const double field = Span(brush.cell.at.y, top - 8 + slope, top + 8, brush.cell.height)
        * Span(w.x, -w.half - 12, w.half + 12, brush.cell.width);
    brush.Shade(field, {0.80, 0.80, 0.83});
}

} // namespace

void PaintWindow(Brush &brush, const Window &w)
{
    const Panel panel = {brush, w.x};
    const double reach = w.half + 12;
    if (w.shutters) {
        PaintShutter(brush, panel, w, -2 * w.half - 14);
        PaintShutter(brush, panel, w, w.half + 14);
    }
    brush.Shade(panel(-reach + 9, w.top, reach + 9, w.bottom + 30), kShadow);
    brush.Fill(panel(-reach, w.top - 12, reach, w.bottom), kStone);
    brush.Shade(panel(-reach, w.top - 12, -reach + 3, w.bottom), 1.06);
    PaintFrame(brush, panel, w);
    brush.Fill(panel(-reach - 9, w.bottom, reach + 9, w.bottom + 14), kStone);
    brush.Shade(panel(-reach - 9, w.bottom + 9, reach + 9, w.bottom + 14), 0.80);
    if (w.hood)
        PaintHood(brush, panel, w);
}

} // namespace Samples
