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
