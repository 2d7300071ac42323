#include "Framing.h"

#include "CorrectionTwin.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using Point = SourcePlaces::Point;

constexpr int kBisections = 40;
constexpr int kFirstSamples = 33; // of an edge

/// Positions on the four edges, @p samples evenly on each.
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

Correction Unframed(Correction correction)
{
    correction.zoom = 1.0;
    return correction;
}

/// The least zoom that leaves no pixel empty; above kMostZoom if none does.
class FillSearch {
public:
    explicit FillSearch(const Correction &correction)
        : m_twin(Unframed(correction)), m_width(correction.width), m_height(correction.height)
    {
    }

    double Zoom()
    {
        m_points = EdgePoints(m_width, m_height, kFirstSamples);
        double zoom = Bisect(kLeastZoom);
        // Pixels between the samples that are still empty join them.
        for (int round = 0; round < 8 && zoom <= kMostZoom && AddEmptyPixels(zoom); ++round)
            zoom = Bisect(zoom);
        return zoom;
    }

private:
    bool IsEmpty(const Point &pixel, double zoom) const
    {
        const double middleX = (m_width - 1) / 2.0, middleY = (m_height - 1) / 2.0;
        return m_twin.IsEmpty(m_twin.At(middleX + (pixel.x - middleX) / zoom, middleY + (pixel.y - middleY) / zoom));
    }

    bool Covers(double zoom) const
    {
        return std::none_of(m_points.begin(), m_points.end(), [&](const Point &pixel) { return IsEmpty(pixel, zoom); });
    }

    double Bisect(double low) const
    {
        double high = kMostZoom;
        if (Covers(low))
            return low;
        if (!Covers(high))
            return 2.0 * kMostZoom;
        for (int i = 0; i < kBisections; ++i) {
            const double middle = (low + high) / 2.0;
            (Covers(middle) ? high : low) = middle;
        }
        return std::min(high * (1.0 + 1e-10), kMostZoom); // the frame's own rounding shows no empty edge
    }

    bool AddEmptyPixels(double zoom)
    {
        const size_t before = m_points.size();
        const auto add = [&](double x, double y) {
            if (IsEmpty({x, y}, zoom))
                m_points.push_back({x, y});
        };
        for (int x = 0; x < m_width; ++x) {
            add(x, 0.0);
            add(x, m_height - 1);
        }
        for (int y = 0; y < m_height; ++y) {
            add(0.0, y);
            add(m_width - 1, y);
        }
        return m_points.size() > before;
    }

    const CorrectionTwin m_twin;
    const int m_width, m_height;
    std::vector<Point> m_points;
};

/// Where the corrected picture, unframed, shows a place of the source. False if nowhere.
bool Shows(const CorrectionTwin &twin, const Point &place, Point *shown)
{
    Point at = place;
    for (int i = 0; i < 100; ++i) {
        const double step = 1.0; // of the slopes
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
    const CorrectionTwin twin(Unframed(correction));
    const double halfWidth = (correction.width - 1) / 2.0, halfHeight = (correction.height - 1) / 2.0;
    double zoom = 2.0 * kMostZoom;
    for (const Point &edge : EdgePoints(correction.width, correction.height, kFirstSamples)) {
        Point shown{};
        if (!Shows(twin, edge, &shown))
            return 0.0; // beyond a fold: as much as the bound allows
        zoom = std::min({zoom, halfWidth / std::abs(shown.x - halfWidth), halfHeight / std::abs(shown.y - halfHeight)});
    }
    return zoom;
}

} // namespace

FramingZoom ZoomFor(const Correction &correction, Framing framing, double factor)
{
    double zoom = framing == Framing::Factor ? factor : 1.0;
    if (correction.geometry && framing == Framing::Fill)
        zoom = FillSearch(correction).Zoom();
    else if (correction.geometry && framing == Framing::All)
        zoom = ZoomForAll(correction);
    const double bounded = std::clamp(zoom, kLeastZoom, kMostZoom);
    // Filled at the least zoom already: a smaller one would do as well.
    return {bounded, bounded != zoom || (framing == Framing::Fill && correction.geometry && zoom == kLeastZoom)};
}

double FieldShare(const Correction &correction)
{
    constexpr int kCells = 32;
    const CorrectionTwin twin(correction);
    const double stepX = correction.width / double(kCells), stepY = correction.height / double(kCells);
    const auto at = [&](int x, int y) { return twin.At(x * stepX - 0.5, y * stepY - 0.5).green; };
    double area = 0.0;
    for (int y = 0; y < kCells; ++y) {
        for (int x = 0; x < kCells; ++x) {
            if (twin.IsEmpty(twin.At((x + 0.5) * stepX - 0.5, (y + 0.5) * stepY - 0.5)))
                continue;
            const Point a = at(x, y), b = at(x + 1, y), c = at(x + 1, y + 1), d = at(x, y + 1);
            area += ((c.x - a.x) * (d.y - b.y) - (d.x - b.x) * (c.y - a.y)) / 2.0; // of the cell in the source
        }
    }
    return std::clamp(area / correction.width / correction.height, 0.0, 1.0);
}
