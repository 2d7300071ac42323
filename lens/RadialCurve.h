// A function of the distance from a center, as a table.
#pragma once

#include <vector>

/// A smooth function of the radius in pixels of the picture, tabulated in double over the squared radius: lens models
/// are smooth in it, and no root per pixel is needed. Between nodes the function is the cubic through the four nearest,
/// or linear if there are only two or three; beyond the last node it keeps that node's value.
///
/// Value type: copies are independent. Several threads may call the const functions of one object at the same time.
class RadialCurve {
public:
    /// Makes the constant @p value.
    explicit RadialCurve(double value = 1.0);
    /// @p nodes: values at the squared radii 0, step, 2 step, ... (step > 0, in square pixels). At least two nodes.
    RadialCurve(double step, std::vector<double> nodes);

    double AtSquared(double squaredRadius) const;
    double Step() const { return m_step; }
    const std::vector<double> &Nodes() const { return m_nodes; }
    /// The squared radius of the last node; infinite for a constant.
    double EndSquared() const;

private:
    double m_step = 0.0; // 0: constant
    std::vector<double> m_nodes;
};
