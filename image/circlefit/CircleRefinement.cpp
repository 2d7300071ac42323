#include "CircleRefinement.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kTolerances[] = {0.025, 0.015, 0.01, 0.007, 0.005, 0.005, 0.005};

/// Normal equations for corrections to (radius, centerX, centerY): the residual of an edge in direction u from the
/// current center is correction . (1, u).
class NormalEquations {
public:
    void Add(double ux, double uy, double residual)
    {
        const double row[3] = {1, ux, uy};
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                m_matrix[i][j] += row[i] * row[j];
            m_right[i] += row[i] * residual;
        }
        ++m_count;
    }

    int Count() const { return m_count; }

    /// Solves the equations by Cramer's rule. Returns false if there are too few edges, or if their directions hardly
    /// differ.
    bool Solve(double correction[3]) const
    {
        const double all = Determinant(m_matrix);
        const double n = m_count;
        if (!(std::fabs(all) > 1e-6 * n * n * n))
            return false;
        for (int column = 0; column < 3; ++column) {
            double replaced[3][3];
            for (int i = 0; i < 3; ++i) {
                for (int j = 0; j < 3; ++j)
                    replaced[i][j] = j == column ? m_right[i] : m_matrix[i][j];
            }
            correction[column] = Determinant(replaced) / all;
        }
        return true;
    }

private:
    static double Determinant(const double (&m)[3][3])
    {
        return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0])
            + m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    }

    double m_matrix[3][3] = {};
    double m_right[3] = {};
    int m_count = 0;
};

NormalEquations Gather(const RansacFisheye &fit, const RansacFisheye::Model &model, double tolerancePx)
{
    NormalEquations equations;
    for (const RansacFisheye::Data &edge : fit.data) {
        const double x = edge.distance * edge.directionX - model.centerX;
        const double y = edge.distance * edge.directionY - model.centerY;
        const double length = std::sqrt(x * x + y * y);
        if (!edge.inside && length > 0 && std::fabs(length - model.radius) < tolerancePx)
            equations.Add(x / length, y / length, length - model.radius);
    }
    return equations;
}

} // namespace

RefinedCircle RefineCircle(const RansacFisheye &fit)
{
    RansacFisheye::Model model = fit.best;
    const double smallerSide = std::min(fit.width, fit.height);
    for (const double tolerance : kTolerances) {
        double correction[3];
        if (!Gather(fit, model, tolerance * smallerSide).Solve(correction))
            break;
        model.radius += correction[0];
        model.centerX += correction[1];
        model.centerY += correction[2];
    }
    return {model, Gather(fit, model, kTolerances[std::size(kTolerances) - 1] * smallerSide).Count()};
}
