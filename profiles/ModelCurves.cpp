#include "ModelCurves_p.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRectilinearEnd = 85.0 / 180.0 * kPi; // the tangent is limited, because it is infinite at 90 degrees
constexpr int kFirstSteps = 32, kMaxSteps = 8192;      // of a table

/// Returns 1 + c0 x + c1 x^2 + c2 x^3; missing coefficients are 0.
double Polynomial(const QVector<double> &coefficients, double x)
{
    double sum = 0.0;
    for (int i = coefficients.size(); i-- > 0;)
        sum = (sum + coefficients[i]) * x;
    return 1.0 + sum;
}

} // namespace

double AngleOf(Projection projection, double radius)
{
    switch (projection) {
    case Projection::Rectilinear:
        return std::atan(radius);
    case Projection::Equidistant:
        break;
    case Projection::Stereographic:
        return 2.0 * std::atan(radius / 2.0);
    case Projection::Equisolid:
        return 2.0 * std::asin(std::min(radius / 2.0, 1.0));
    }
    return radius;
}

double RadiusOf(Projection projection, double angle)
{
    switch (projection) {
    case Projection::Rectilinear:
        return std::tan(std::min(angle, kRectilinearEnd));
    case Projection::Equidistant:
        break;
    case Projection::Stereographic:
        return angle < kPi ? 2.0 * std::tan(angle / 2.0) : std::numeric_limits<double>::infinity();
    case Projection::Equisolid:
        return 2.0 * std::sin(angle / 2.0);
    }
    return angle;
}

double PerspectiveFactor(const ProfileModel &model, double x)
{
    return Polynomial(model.coefficients, x);
}

double LightShare(const ProfileModel &model, double x)
{
    return Polynomial(model.coefficients, x);
}

double FisheyeFactor(const ProfileModel &model, Projection projection, double radius)
{
    if (radius < 1e-9)
        return 1.0; // all projections agree at the axis
    const double angle = AngleOf(projection, radius);
    return angle * Polynomial(model.coefficients, angle * angle) / radius;
}

double FisheyeEnd(const ProfileModel &model, Projection projection)
{
    const double fold =
        FoldRadius([&model](double angle) { return Polynomial(model.coefficients, angle * angle); }, kPi);
    return RadiusOf(projection, fold);
}

double FoldRadius(const std::function<double(double)> &factor, double endRadius)
{
    constexpr int kSteps = 512;
    const auto place = [&](double radius) { return radius * factor(radius); };
    const double step = endRadius / kSteps;
    double before = 0.0;
    int fold = 1;
    for (; fold <= kSteps; ++fold) {
        const double here = place(fold * step);
        if (!(here > before))
            break;
        before = here;
    }
    // A fold in the last step shows only in the slope at the end.
    if (fold > kSteps && place(endRadius) >= place(endRadius * (1.0 - 1e-7)))
        return endRadius;
    // Find the maximum between the neighbors by ternary search.
    double low = std::max(0, fold - 2) * step, high = std::min(fold, kSteps) * step;
    for (int i = 0; i < 60; ++i) {
        const double third = (high - low) / 3.0;
        if (place(low + third) < place(high - third))
            low += third;
        else
            high -= third;
    }
    return low;
}

RadialCurve Tabulate(const std::function<double(double)> &value, double endRadius,
                     const std::function<double(double)> &tolerance)
{
    if (!(endRadius > 1e-3)) // nothing to tabulate
        return RadialCurve(value(0.0));
    const double endSquared = endRadius * endRadius;
    const auto at = [&](double squared) { return value(std::min(std::sqrt(squared), endRadius)); };
    std::vector<double> nodes;
    for (int steps = kFirstSteps;; steps *= 2) {
        const double step = endSquared / steps;
        std::vector<double> finer(static_cast<size_t>(steps) + 1);
        for (size_t i = 0; i < finer.size(); ++i)
            finer[i] = !nodes.empty() && i % 2 == 0 ? nodes[i / 2] : at(static_cast<double>(i) * step);
        if (!nodes.empty()) { // the new nodes lie between those of the previous table
            const RadialCurve table(2.0 * step, nodes);
            bool isFine = true;
            for (size_t i = 1; i < finer.size() && isFine; i += 2) {
                const double squared = static_cast<double>(i) * step;
                isFine = std::abs(table.AtSquared(squared) - finer[i]) <= tolerance(std::sqrt(squared));
            }
            if (isFine || steps >= kMaxSteps)
                return RadialCurve(step, std::move(finer));
        }
        nodes = std::move(finer);
    }
}
