#include "EdgeMeter.h"

#include <algorithm>
#include <cmath>
#include <vector>

using Samples::Point;

namespace {

constexpr double kStepPx = 6;   // along the edge
constexpr double kReachPx = 4;  // across it, on both sides of the expected position
constexpr double kCorePx = 2.5; // half the width of the measured change
constexpr double kSamplePx = 0.25;
constexpr int kAlong = 3;            // averages 2 * 3 + 1 lines across the edge, to reduce noise
constexpr double kWhole = 0.72;      // of the usual contrast; less means that something covers the edge
constexpr double kCornerReach = 0.3; // of the picture's diagonal
constexpr int kEnough = 5;           // minimum number of points for a mean

struct EdgePoint {
    double along;     // pixels from the edge's start
    double across[3]; // pixels from the line of the edge to the change of red, green and blue
    double contrast;  // of green, in levels of the picture
    Point place;      // in the picture
};

double Bilinear(const TiffRaster &picture, Point p, int channel)
{
    const int x = std::clamp(static_cast<int>(p.x), 0, picture.width - 2);
    const int y = std::clamp(static_cast<int>(p.y), 0, picture.height - 2);
    const auto row = [&, fx = p.x - x](int at) {
        return double(picture.At(x, at, channel)) * (1 - fx) + double(picture.At(x + 1, at, channel)) * fx;
    };
    return row(y) + (row(y + 1) - row(y)) * (p.y - y);
}

Point Shift(Point p, Point direction, double distance)
{
    return {p.x + direction.x * distance, p.y + direction.y * distance};
}

/// The change across an edge within @p reach of the offset @p from: its sum, its center, and the offset where it is
/// steepest.
struct Change {
    double sum = 0, center = 0, steepest = 0;

    Change(const TiffRaster &picture, Point place, Point along, int channel, double from, double reach)
    {
        const auto level = [&](double offset) {
            const Point middle = Shift(place, {-along.y, along.x}, offset);
            double lines = 0;
            for (int i = -kAlong; i <= kAlong; ++i)
                lines += Bilinear(picture, Shift(middle, along, i), channel);
            return lines / (2 * kAlong + 1);
        };
        double moment = 0, largest = 0;
        for (double t = from - reach; t < from + reach; t += kSamplePx) {
            const double step = level(t + kSamplePx) - level(t);
            sum += step;
            moment += step * (t + kSamplePx / 2);
            if (std::abs(step) > largest) {
                largest = std::abs(step);
                steepest = t + kSamplePx / 2;
            }
        }
        center = sum == 0 ? from : std::clamp(moment / sum, -2 * kReachPx, 2 * kReachPx);
    }
};

std::vector<EdgePoint> FollowEdge(const TiffRaster &picture, const Samples::StraightEdge &edge,
                                  const Placement &placement)
{
    const double length = std::hypot(edge.to.x - edge.from.x, edge.to.y - edge.from.y);
    const Point along = {(edge.to.x - edge.from.x) / length, (edge.to.y - edge.from.y) / length};
    std::vector<EdgePoint> points;
    for (double s = 0; s <= length; s += kStepPx) {
        const Point place = placement(Shift(edge.from, along, s));
        const double dx = place.x - edge.from.x, dy = place.y - edge.from.y;
        EdgePoint point = {dx * along.x + dy * along.y, {}, 0, place};
        const double start = Change(picture, place, along, 1, 0, kReachPx).steepest;
        for (int c : {0, 1, 2}) {
            Change change(picture, place, along, c, start, kCorePx);
            for (int i = 0; i < 2; ++i) // recenters on the main change
                change = Change(picture, place, along, c, change.center, kCorePx);
            point.across[c] = change.center + dy * along.x - dx * along.y;
            if (c == 1)
                point.contrast = change.sum;
        }
        points.push_back(point);
    }
    std::vector<EdgePoint> sorted = points;
    const auto middle = sorted.begin() + long(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end(),
                     [](const EdgePoint &a, const EdgePoint &b) { return a.contrast < b.contrast; });
    const auto covered = [usual = middle->contrast](const EdgePoint &p) { return p.contrast / usual < kWhole; };
    points.erase(std::remove_if(points.begin(), points.end(), covered), points.end());
    return points;
}

double LargestBend(const std::vector<EdgePoint> &points)
{
    double n = double(points.size()), sumS = 0, sumT = 0, sumSS = 0, sumST = 0;
    for (const EdgePoint &p : points) {
        sumS += p.along;
        sumT += p.across[1];
        sumSS += p.along * p.along;
        sumST += p.along * p.across[1];
    }
    const double slope = (n * sumST - sumS * sumT) / (n * sumSS - sumS * sumS);
    const double offset = (sumT - slope * sumS) / n;
    double largest = 0;
    for (const EdgePoint &p : points)
        largest = std::max(largest, std::abs(p.across[1] - offset - slope * p.along));
    return largest / std::hypot(1, slope);
}

} // namespace

EdgeFigures MeasureEdge(const TiffRaster &picture, const Samples::StraightEdge &edge, const Placement &placement)
{
    const std::vector<EdgePoint> points = FollowEdge(picture, edge, placement);
    EdgeFigures figures = {LargestBend(points)};
    const double right = picture.width - 1, bottom = picture.height - 1;
    for (const Point corner : {Point{0, 0}, Point{right, 0}, Point{0, bottom}, Point{right, bottom}}) {
        double sum[3] = {};
        int count = 0;
        for (const EdgePoint &p : points) {
            if (std::hypot(p.place.x - corner.x, p.place.y - corner.y) > kCornerReach * std::hypot(right, bottom))
                continue;
            for (int c : {0, 2})
                sum[c] += p.across[c] - p.across[1];
            ++count;
        }
        for (int c = 0; c < 3 && count >= kEnough; ++c)
            figures.fringe[c] = std::max(figures.fringe[c], std::abs(sum[c] / count));
    }
    return figures;
}

double MeanLevel(const TiffRaster &picture, Point center, double halfSize)
{
    double sum = 0;
    int count = 0;
    for (int y = int(std::ceil(center.y - halfSize)); y <= center.y + halfSize; ++y)
        for (int x = int(std::ceil(center.x - halfSize)); x <= center.x + halfSize; ++x, count += 3)
            for (int c = 0; c < 3; ++c)
                sum += double(picture.At(x, y, c));
    return sum / count;
}
