#include "RadialCurve.h"

#include <QtGlobal>

#include <algorithm>
#include <limits>
#include <utility>

RadialCurve::RadialCurve(double value) : m_nodes{value} { }

RadialCurve::RadialCurve(double step, std::vector<double> nodes) : m_step(step), m_nodes(std::move(nodes))
{
    Q_ASSERT(m_step > 0.0 && m_nodes.size() >= 2);
    if (!(m_step > 0.0) || m_nodes.size() < 2) {
        m_step = 0.0;
        m_nodes.resize(1, 1.0);
    }
}

double RadialCurve::EndSquared() const
{
    return m_step > 0.0 ? m_step * static_cast<double>(m_nodes.size() - 1) : std::numeric_limits<double>::infinity();
}

double RadialCurve::AtSquared(double squaredRadius) const
{
    const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(m_nodes.size()) - 1;
    const double at = squaredRadius / m_step;
    if (last == 0 || !(at < static_cast<double>(last))) // also NaN
        return m_nodes.back();
    const double *node = m_nodes.data();
    auto before = static_cast<std::ptrdiff_t>(std::max(at, 0.0));
    if (last < 3) {
        const double share = at - static_cast<double>(before);
        return node[before] + share * (node[before + 1] - node[before]);
    }
    before = std::clamp<std::ptrdiff_t>(before, 1, last - 2); // the outermost intervals use the stencil next to them
    const double t = at - static_cast<double>(before);
    const double a = node[before - 1], b = node[before], c = node[before + 1], d = node[before + 2];
    const double cubic = (d - a) / 6.0 + (b - c) / 2.0, square = (a + c) / 2.0 - b;
    const double slope = c - b / 2.0 - a / 3.0 - d / 6.0;
    return b + t * (slope + t * (square + t * cubic)); // the cubic through all four (Lagrange)
}
