// Function of the distance from a center, as a table.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// Smooth function of the radius in pixels of the picture, tabulated in double precision over the squared radius: lens
/// models are smooth in it, and pixels need no square root. Between nodes, the function is the cubic through the
/// nearest four, or linear if there are only two or three; beyond the last node, it keeps that node's value.
///
/// Value type: copies are independent. Several threads may call the const functions of one object at the same time.
class RadialCurve {
public:
    /// Constructs the constant @p value.
    explicit RadialCurve(double value = 1.0);
    /// Constructs a table: @p nodes, at least two, are the values at the squared radii 0, step, 2 step, ... (step > 0,
    /// in square pixels).
    RadialCurve(double step, std::vector<double> nodes);

    double AtSquared(double squaredRadius) const; // inline, because it runs for every corner of a cell
    /// Returns the squared radius of the last node; infinite for a constant.
    double EndSquared() const;

private:
    double m_step = 0.0; // 0: constant
    std::vector<double> m_nodes;
};

inline double RadialCurve::AtSquared(double squaredRadius) const
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
