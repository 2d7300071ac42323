#include "ProfilePlot.h"

#include "Console.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPanelWidth = 330.0, kPanelHeight = 260.0, kLeft = 50.0, kGap = 60.0, kTop = 66.0;
constexpr double kLegendTop = kTop + kPanelHeight + 60.0, kLegendRow = 18.0;
constexpr double kSceneWidth = kLeft + 3 * kPanelWidth + 2 * kGap + 20.0;
constexpr int kLegendColumns = 8, kMaxFocals = 24; // in the legend
const QColor kInk(0x22, 0x22, 0x22), kGrid(0xdd, 0xdd, 0xdd), kBlend(0, 0, 0);

struct PanelRow {
    const char *title;
    double leastSpan; // ticks are spaced for at least this span, so that tiny differences look small
    ProfileCurve ProfileCurves::*solid;
    ProfileCurve ProfileCurves::*dashed; // may be null
};

constexpr PanelRow kPanels[] = {
    {"Distortion (%)", 0.2, &ProfileCurves::distortion, nullptr},
    {"Color shift (pixels): red solid, blue dashed", 0.2, &ProfileCurves::red, &ProfileCurves::blue},
    {"Light (EV)", 0.2, &ProfileCurves::light, nullptr},
};

/// An axis with ticks at round values.
struct Axis {
    double least, most, step;

    double Share(double value) const { return (value - least) / (most - least); }
};

Axis AxisOver(double least, double most, double leastSpan)
{
    constexpr double kTicks = 7.0; // at most
    const double rough = std::max(most - least, leastSpan) / kTicks;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    const double share = rough / power;
    const double step = power * (share > 5.0 ? 10.0 : share > 2.0 ? 5.0 : share > 1.0 ? 2.0 : 1.0);
    const double low = std::floor(least / step) * step, high = std::ceil(most / step) * step;
    return {low, high > low ? high : low + step, step};
}

class Plot {
public:
    Plot(const QVector<ProfileCurves> &entries, const ProfileCurves *blend) : m_entries(entries), m_blend(blend)
    {
        for (const ProfileCurves &entry : entries)
            m_focals.append(entry.focalMm);
        std::sort(m_focals.begin(), m_focals.end());
        m_focals.erase(std::unique(m_focals.begin(), m_focals.end()), m_focals.end());
    }

    PlotScene Draw(const QString &title)
    {
        AddText({kLeft, 24.0}, title, PlotText::Anchor::Start, true);
        for (int i = 0; i < 3; ++i)
            AddPanel(kPanels[i], kLeft + i * (kPanelWidth + kGap));
        const int rows = AddLegend();
        m_scene.width = kSceneWidth;
        m_scene.height = kLegendTop + rows * kLegendRow + 10.0;
        return m_scene;
    }

private:
    void AddText(const QPointF &at, const QString &text, PlotText::Anchor anchor, bool isBold = false)
    {
        m_scene.texts.append({at, OneLine(text), kInk, anchor, isBold});
    }

    QColor ColorOf(double focalMm) const
    {
        const auto place = std::lower_bound(m_focals.begin(), m_focals.end(), focalMm) - m_focals.begin();
        constexpr double kRed = 0.0, kViolet = 280.0 / 360.0; // hues, from the shortest to the longest focal length
        const double share = m_focals.size() > 1 ? double(place) / (m_focals.size() - 1) : 0.6;
        return QColor::fromHsvF(kRed + share * (kViolet - kRed), 0.85, 0.8);
    }

    Axis AxisOf(const PanelRow &row) const
    {
        double least = 0.0, most = 0.0;
        const auto take = [&](const ProfileCurves &curves) {
            for (const auto which : {row.solid, row.dashed}) {
                if (!which)
                    continue;
                for (const QPointF &point : curves.*which) {
                    least = std::min(least, point.y());
                    most = std::max(most, point.y());
                }
            }
        };
        std::for_each(m_entries.begin(), m_entries.end(), take);
        if (m_blend)
            take(*m_blend);
        return AxisOver(least, most, row.leastSpan);
    }

    void AddPanel(const PanelRow &row, double left)
    {
        const Axis axis = AxisOf(row);
        AddText({left, kTop - 14.0}, QLatin1String(row.title), PlotText::Anchor::Start);
        AddAxes(axis, left);
        for (const ProfileCurves &entry : m_entries)
            AddCurves(row, entry, axis, left, ColorOf(entry.focalMm), 1.0);
        if (m_blend)
            AddCurves(row, *m_blend, axis, left, kBlend, 2.5);
        const auto hasCurve = [&](const ProfileCurves &entry) {
            return !(entry.*row.solid).isEmpty() || (row.dashed && !(entry.*row.dashed).isEmpty());
        };
        if (std::none_of(m_entries.begin(), m_entries.end(), hasCurve))
            AddText({left + kPanelWidth / 2.0, kTop + kPanelHeight / 2.0}, QStringLiteral("no model"),
                    PlotText::Anchor::Middle);
    }

    void AddAxes(const Axis &axis, double left)
    {
        constexpr double kRadiusStep = 0.25;
        const double right = left + kPanelWidth, bottom = kTop + kPanelHeight;
        const int ticks = int(std::lround((axis.most - axis.least) / axis.step));
        for (int i = 0; i <= ticks; ++i) {
            const double value = axis.least + i * axis.step, y = bottom - axis.Share(value) * kPanelHeight;
            const bool isZero = std::abs(value) < axis.step / 2.0;
            m_scene.lines.append({QString(), {{left, y}, {right, y}}, isZero ? kInk : kGrid, isZero ? 0.7 : 1.0});
            AddText({left - 6.0, y + 4.0}, QString::number(isZero ? 0.0 : value, 'g', 6), PlotText::Anchor::End);
        }
        for (int i = 0; i <= 4; ++i) {
            const double x = left + i * kRadiusStep * kPanelWidth;
            m_scene.lines.append({QString(), {{x, kTop}, {x, bottom}}, kGrid, 1.0});
            AddText({x, bottom + 16.0}, QString::number(i * kRadiusStep), PlotText::Anchor::Middle);
        }
        AddText({left + kPanelWidth / 2.0, bottom + 34.0}, QStringLiteral("radius / half diagonal"),
                PlotText::Anchor::Middle);
    }

    void AddCurves(const PanelRow &row, const ProfileCurves &curves, const Axis &axis, double left, const QColor &color,
                   double width)
    {
        const auto add = [&](const ProfileCurve &curve, PlotLine::Style style) {
            PlotLine line{OneLine(curves.name), {}, color, width, style};
            for (const QPointF &point : curve)
                line.points.append(
                    {left + point.x() * kPanelWidth, kTop + (1.0 - axis.Share(point.y())) * kPanelHeight});
            if (line.points.size() > 1)
                m_scene.lines.append(line);
        };
        add(curves.*row.solid, PlotLine::Style::Solid);
        if (row.dashed)
            add(curves.*row.dashed, PlotLine::Style::Dashed);
    }

    /// Adds the legend. @return the number of its rows.
    int AddLegend()
    {
        int row = 0;
        if (m_blend)
            AddLegendItem(row++, 0, m_blend->name, kBlend, 2.5);
        const int all = m_focals.size(), shown = std::min(all, kMaxFocals);
        for (int i = 0; i < shown; ++i) {
            const double focal = m_focals[shown > 1 ? i * (all - 1) / (shown - 1) : 0];
            const QString name =
                focal > 0.0 ? QString::number(focal, 'g', 4) + QLatin1String(" mm") : QStringLiteral("no focal length");
            AddLegendItem(row + i / kLegendColumns, i % kLegendColumns, name, ColorOf(focal), 1.0);
        }
        row += (shown + kLegendColumns - 1) / kLegendColumns;
        if (all > shown)
            AddText({kLeft, kLegendTop + row++ * kLegendRow},
                    QStringLiteral("%1 of %2 focal lengths, which run from red to violet").arg(shown).arg(all),
                    PlotText::Anchor::Start);
        return row;
    }

    void AddLegendItem(int row, int column, const QString &name, const QColor &color, double width)
    {
        const double x = kLeft + column * (kSceneWidth - kLeft) / kLegendColumns, y = kLegendTop + row * kLegendRow;
        m_scene.lines.append({QString(), {{x, y - 4.0}, {x + 24.0, y - 4.0}}, color, width});
        AddText({x + 30.0, y}, name, PlotText::Anchor::Start);
    }

    const QVector<ProfileCurves> &m_entries;
    const ProfileCurves *m_blend;
    QVector<double> m_focals; // distinct, ascending
    PlotScene m_scene;
};

} // namespace

PlotScene PlotOf(const QString &title, const QVector<ProfileCurves> &entries, const ProfileCurves *blend)
{
    return Plot(entries, blend).Draw(title);
}
