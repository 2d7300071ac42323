#include "EdgeMeter.h"

#include <algorithm>
#include <cmath>

using Samples::Point;

namespace {

constexpr double kStepPx = 6;   // along the edge
constexpr double kReachPx = 4;  // across it, to both sides of the expected place
constexpr double kCorePx = 2.5; // half the width of the change that counts
constexpr double kSamplePx = 0.25;
constexpr int kAlong = 3;       // mean of 2 * 3 + 1 lines across, against noise
constexpr double kWhole = 0.72; // of the usual contrast: less means that something covers the edge

double Bilinear(const TiffRaster &picture, Point p, int channel)
{
    const int x = std::clamp(static_cast<int>(p.x), 0, picture.width - 2);
    const int y = std::clamp(static_cast<int>(p.y), 0, picture.height - 2);
    const double fx = p.x - x;
    const double fy = p.y - y;
    const auto at = [&](int dx, int dy) { return double(picture.At(x + dx, y + dy, channel)); };
    return (at(0, 0) * (1 - fx) + at(1, 0) * fx) * (1 - fy) + (at(0, 1) * (1 - fx) + at(1, 1) * fx) * fy;
}

Point Shift(Point p, Point direction, double distance)
{
    return {p.x + direction.x * distance, p.y + direction.y * distance};
}

/// The slope of the picture across an edge, at steps of kSamplePx around a place.
class Slope {
public:
    Slope(const TiffRaster &picture, Point center, Point normal, int channel)
    {
        const Point along = {-normal.y, normal.x};
        const auto level = [&](double t) {
            double sum = 0;
            for (int i = -kAlong; i <= kAlong; ++i)
                sum += Bilinear(picture, Shift(Shift(center, normal, t), along, i), channel);
            return sum / (2 * kAlong + 1);
        };
        for (double t = -kReach; t < kReach; t += kSamplePx)
            m_steps.push_back(level(t + kSamplePx / 2) - level(t - kSamplePx / 2));
    }

    /// Offset of the steepest place within kReachPx.
    double Steepest() const
    {
        size_t best = Index(-kReachPx);
        for (size_t i = best; i <= Index(kReachPx); ++i)
            if (std::abs(m_steps[i]) > std::abs(m_steps[best]))
                best = i;
        return Offset(best);
    }

    /// Centre of the change around @p offset, and the change itself.
    double Center(double offset, double *change) const
    {
        double sum = 0;
        double moment = 0;
        for (size_t i = Index(offset - kCorePx); i <= Index(offset + kCorePx); ++i) {
            sum += m_steps[i];
            moment += m_steps[i] * Offset(i);
        }
        *change = sum;
        return sum == 0 ? offset : moment / sum;
    }

private:
    static constexpr double kReach = kReachPx + 2 * kCorePx;

    static double Offset(size_t index) { return -kReach + double(index) * kSamplePx; }
    size_t Index(double offset) const
    {
        const long index = std::lround((offset + kReach) / kSamplePx);
        return static_cast<size_t>(std::clamp(index, 0l, long(m_steps.size()) - 1));
    }

    std::vector<double> m_steps;
};

EdgePoint Measure(const TiffRaster &picture, Point expected, Point normal)
{
    EdgePoint point = {{}, normal, 0};
    const double start = Slope(picture, expected, normal, 1).Steepest();
    for (int channel : {0, 1, 2}) {
        const Slope slope(picture, expected, normal, channel);
        double change = 0;
        double offset = start;
        for (int i = 0; i < 3; ++i)
            offset = std::clamp(slope.Center(offset, &change), start - kReachPx, start + kReachPx);
        point.at[channel] = Shift(expected, normal, offset);
        if (channel == 1)
            point.contrast = change;
    }
    return point;
}

double Median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + long(values.size() / 2), values.end());
    return values[values.size() / 2];
}

} // namespace

std::vector<EdgePoint> FollowEdge(const TiffRaster &picture, const Samples::StraightEdge &edge,
                                  const Placement &placement)
{
    const double length = std::hypot(edge.to.x - edge.from.x, edge.to.y - edge.from.y);
    const Point along = {(edge.to.x - edge.from.x) / length, (edge.to.y - edge.from.y) / length};
    const Point normal = {-along.y, along.x};
    std::vector<EdgePoint> points;
    std::vector<double> contrasts;
    for (double s = 0; s <= length; s += kStepPx) {
        points.push_back(Measure(picture, placement(Shift(edge.from, along, s)), normal));
        contrasts.push_back(points.back().contrast);
    }
    const double usual = Median(contrasts);
    points.erase(
        std::remove_if(points.begin(), points.end(), [&](const EdgePoint &p) { return p.contrast / usual < kWhole; }),
        points.end());
    return points;
}

double LargestBend(const std::vector<EdgePoint> &points)
{
    const Point normal = points.front().normal;
    double n = double(points.size()), sumS = 0, sumT = 0, sumSS = 0, sumST = 0;
    const auto along = [&](const EdgePoint &p) { return p.at[1].y * normal.x - p.at[1].x * normal.y; };
    const auto across = [&](const EdgePoint &p) { return p.at[1].x * normal.x + p.at[1].y * normal.y; };
    for (const EdgePoint &p : points) {
        sumS += along(p);
        sumT += across(p);
        sumSS += along(p) * along(p);
        sumST += along(p) * across(p);
    }
    const double slope = (n * sumST - sumS * sumT) / (n * sumSS - sumS * sumS);
    const double offset = (sumT - slope * sumS) / n;
    double largest = 0;
    for (const EdgePoint &p : points)
        largest = std::max(largest, std::abs(across(p) - offset - slope * along(p)));
    return largest / std::hypot(1, slope);
}

double Fringe(const std::vector<EdgePoint> &points, int channel, Point corner, double reach)
{
    double sum = 0;
    int count = 0;
    for (const EdgePoint &p : points) {
        if (std::hypot(p.at[1].x - corner.x, p.at[1].y - corner.y) > reach)
            continue;
        sum += (p.at[channel].x - p.at[1].x) * p.normal.x + (p.at[channel].y - p.at[1].y) * p.normal.y;
        ++count;
    }
    return count < 5 ? 0 : std::abs(sum / count);
}

Samples::Rgb MeanColor(const TiffRaster &picture, Point center, double halfSize)
{
    double sum[3] = {};
    int count = 0;
    for (int y = int(std::ceil(center.y - halfSize)); y <= center.y + halfSize; ++y)
        for (int x = int(std::ceil(center.x - halfSize)); x <= center.x + halfSize; ++x, ++count)
            for (int c = 0; c < 3; ++c)
                sum[c] += double(picture.At(x, y, c));
    return {sum[0] / count, sum[1] / count, sum[2] / count};
}
