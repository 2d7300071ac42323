#include "Framing.h"

#include "CorrectionTwin.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using Point = SourcePlaces::Point;

constexpr int kBisections = 36;
constexpr int kFirstSamples = 33; // per edge

/// Returns @p samples evenly spaced positions on each of the four edges.
std::vector<Point> EdgePoints(double width, double height, int samples)
{
    std::vector<Point> points;
    for (int i = 0; i < samples; ++i) {
        const double share = double(i) / (samples - 1), x = share * (width - 1), y = share * (height - 1);
        for (const Point &point : {Point{x, 0.0}, Point{x, height - 1}, Point{0.0, y}, Point{width - 1, y}})
            points.push_back(point);
    }
    return points;
}

/// Returns a CorrectionTwin of the unframed correction, for positions only.
CorrectionTwin Unframed(Correction correction)
{
    correction.zoom = 1.0;
    correction.light.reset();
    return CorrectionTwin(correction);
}

/// Search for the smallest zoom that leaves no pixel empty. The result is above kMaxZoom if there is none.
class FillSearch {
public:
    explicit FillSearch(const Correction &correction)
        : m_twin(Unframed(correction)), m_width(correction.width), m_height(correction.height)
    {
    }

    FramingZoom Run()
    {
        m_points = EdgePoints(m_width, m_height, kFirstSamples);
        double zoom = Bisect(kMinZoom);
        // Add the pixels on the edges that are still empty: first test every 16th pixel, then all pixels, in at most
        // three rounds.
        for (int step : {16, 1, 1, 1}) {
            if (zoom > kMaxZoom)
                break;
            if (AddEmptyPixels(zoom, step))
                zoom = Bisect(zoom);
            else if (step == 1)
                return {zoom, false, /*isFull=*/true};
        }
        return {zoom, false, false};
    }

private:
    /// Returns whether a position is within the outer edges of the source's pixels. The margin that the twin allows
    /// beyond them absorbs rounding.
    bool Contains(const Point &place) const
    {
        return place.x >= -0.5 && place.x <= m_width - 0.5 && place.y >= -0.5 && place.y <= m_height - 0.5;
    }

    SourcePlaces PlacesOf(const Point &pixel, double zoom) const
    {
        const double middleX = (m_width - 1) / 2.0, middleY = (m_height - 1) / 2.0;
        return m_twin.At(middleX + (pixel.x - middleX) / zoom, middleY + (pixel.y - middleY) / zoom);
    }

    bool Covers(double zoom) const
    {
        return std::all_of(m_points.begin(), m_points.end(), [&](const Point &pixel) {
            const SourcePlaces places = PlacesOf(pixel, zoom);
            return !places.folded && Contains(places.red) && Contains(places.green) && Contains(places.blue);
        });
    }

    double Bisect(double low) const
    {
        double high = kMaxZoom;
        if (Covers(low))
            return low;
        if (!Covers(high))
            return 2.0 * kMaxZoom;
        for (int i = 0; i < kBisections; ++i) {
            const double middle = (low + high) / 2.0;
            (Covers(middle) ? high : low) = middle;
        }
        return high;
    }

    bool AddEmptyPixels(double zoom, int step)
    {
        const size_t before = m_points.size();
        const auto add = [&](int x, int y) {
            const Point pixel{double(x), double(y)};
            if (m_twin.IsEmpty(PlacesOf(pixel, zoom)))
                m_points.push_back(pixel);
        };
        for (int x = 0; x < m_width; x += step) {
            add(x, 0);
            add(x, m_height - 1);
        }
        for (int y = 0; y < m_height; y += step) {
            add(0, y);
            add(m_width - 1, y);
        }
        return m_points.size() > before;
    }

    const CorrectionTwin m_twin;
    const int m_width, m_height;
    std::vector<Point> m_points;
};

/// Finds the position in the unframed corrected picture that shows source position @p place, by Newton's method.
/// @return false if there is none.
bool FindShown(const CorrectionTwin &twin, const Point &place, Point *shown)
{
    Point at = place;
    for (int i = 0; i < 100; ++i) {
        const double step = 1.0; // px, for finite differences
        const Point here = twin.At(at.x, at.y).green, right = twin.At(at.x + step, at.y).green,
                    below = twin.At(at.x, at.y + step).green;
        const double a = right.x - here.x, b = below.x - here.x, c = right.y - here.y, d = below.y - here.y;
        const double determinant = a * d - b * c, dx = place.x - here.x, dy = place.y - here.y;
        if (!(determinant > 1e-9))
            return false; // at a fold
        if (std::abs(dx) + std::abs(dy) < 1e-3) {
            *shown = at;
            return !twin.At(at.x, at.y).folded;
        }
        at.x += std::clamp((d * dx - b * dy) / determinant, -1000.0, 1000.0);
        at.y += std::clamp((a * dy - c * dx) / determinant, -1000.0, 1000.0);
    }
    return false;
}

double ZoomForAll(const Correction &correction)
{
    const CorrectionTwin twin = Unframed(correction);
    const double halfWidth = (correction.width - 1) / 2.0, halfHeight = (correction.height - 1) / 2.0;
    double zoom = 2.0 * kMaxZoom;
    for (const Point &edge : EdgePoints(correction.width, correction.height, kFirstSamples)) {
        Point shown{};
        if (!FindShown(twin, edge, &shown))
            return 0.0; // beyond a fold: zoom out to the bound
        zoom = std::min({zoom, halfWidth / std::abs(shown.x - halfWidth), halfHeight / std::abs(shown.y - halfHeight)});
    }
    return zoom;
}

} // namespace

FramingZoom ZoomFor(const Correction &correction, Framing framing, double factor)
{
    FramingZoom found;
    if (framing == Framing::Factor && factor > 0.0)
        found.zoom = factor;
    else if (correction.geometry && framing == Framing::Fill)
        found = FillSearch(correction).Run();
    else if (correction.geometry && framing == Framing::All)
        found.zoom = ZoomForAll(correction);
    const double bounded = std::clamp(found.zoom, kMinZoom, kMaxZoom);
    // A picture without empty pixels at kMinZoom might have none at smaller zooms either, so the bound limits the zoom.
    found.isBounded = bounded != found.zoom || (found.isFull && bounded == kMinZoom);
    found.zoom = bounded;
    return found;
}

bool LeavesEmpty(const Correction &correction)
{
    Correction positions = correction;
    positions.light.reset(); // not needed, and costly to evaluate
    return CorrectionTwin(positions).LeavesEmpty();
}

double FieldShare(const Correction &correction)
{
    constexpr int kCells = 32;
    Correction positions = correction;
    positions.light.reset();
    const CorrectionTwin twin(positions);
    const double stepX = correction.width / double(kCells), stepY = correction.height / double(kCells);
    const auto at = [&](double x, double y) { return twin.At(x * stepX - 0.5, y * stepY - 0.5); };
    std::vector<Point> corners;
    for (int y = 0; y <= kCells; ++y)
        for (int x = 0; x <= kCells; ++x)
            corners.push_back(at(x, y).green);
    double area = 0.0;
    for (int y = 0; y < kCells; ++y) {
        for (int x = 0; x < kCells; ++x) {
            if (twin.IsEmpty(at(x + 0.5, y + 0.5)))
                continue;
            const Point *above = &corners[size_t(y) * (kCells + 1) + size_t(x)], *below = above + kCells + 1;
            // Area of the cell in the source, from its diagonals.
            area += ((below[1].x - above[0].x) * (below[0].y - above[1].y)
                     - (below[0].x - above[1].x) * (below[1].y - above[0].y))
                / 2.0;
        }
    }
    return std::clamp(area / correction.width / correction.height, 0.0, 1.0);
}
