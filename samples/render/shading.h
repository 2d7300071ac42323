/// Building blocks of the painted scenes: colors, edges averaged over a footprint, and repeatable noise.
///
/// Colors are display-encoded values of 0 to 1; the scenes mix them like paint, not like light, so that an edge between
/// two colors has its halfway value exactly on the edge in each channel.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "lens_reference.h"

namespace Samples {

struct Rgb {
    double r = 0;
    double g = 0;
    double b = 0;
};

inline Rgb operator*(Rgb c, double f)
{
    return {c.r * f, c.g * f, c.b * f};
}
inline Rgb operator*(Rgb c, Rgb f)
{
    return {c.r * f.r, c.g * f.g, c.b * f.b};
}
inline Rgb operator+(Rgb c, Rgb d)
{
    return {c.r + d.r, c.g + d.g, c.b + d.b};
}

/// Returns a mixture of two colors: @p a at t = 0, @p b at t = 1.
inline Rgb Mix(Rgb a, Rgb b, double t)
{
    return a * (1 - t) + b * t;
}
inline double Clamp01(double v)
{
    return std::clamp(v, 0.0, 1.0);
}

/// Returns 0 at and below @p lo, 1 at and above @p hi, smooth in between; @p lo may exceed @p hi.
inline double Ramp(double v, double lo, double hi)
{
    const double t = Clamp01((v - lo) / (hi - lo));
    return t * t * (3 - 2 * t);
}

/// Returns the share of the interval of length @p size around @p v that lies in [lo, hi].
inline double Span(double v, double lo, double hi, double size)
{
    return Clamp01((std::min(v + size / 2, hi) - std::max(v - size / 2, lo)) / size);
}

/// Returns the mean, over the interval of length @p size around @p v, of the wave that is +1 in the first half of each
/// period of 2 and -1 in the second.
inline double SquareWave(double v, double size)
{
    const auto integral = [](double s) { return std::abs(s - 2 * std::floor(s / 2) - 1); };
    return -(integral(v + size / 2) - integral(v - size / 2)) / size;
}

/// Returns the share of the interval of length @p size around @p v that is covered by lines of @p thickness around the
/// multiples of @p period.
inline double Lines(double v, double period, double thickness, double size)
{
    const auto integral = [&](double s) {
        const double n = std::floor(s / period);
        return n * thickness + std::min(s - n * period, thickness);
    };
    const double at = v + thickness / 2;
    return Clamp01((integral(at + size / 2) - integral(at - size / 2)) / size);
}

/// Returns a hash of a cell: uniformly distributed in [0, 1), and the same on every machine.
inline double Hash(int64_t x, int64_t y, uint32_t seed)
{
    uint64_t h = static_cast<uint64_t>(x) * 0x9E3779B97F4A7C15u ^ static_cast<uint64_t>(y) * 0xC2B2AE3D27D4EB4Fu
        ^ uint64_t(seed) * 0x165667B19E3779F9u;
    h = (h ^ (h >> 31)) * 0xBF58476D1CE4E5B9u;
    h = (h ^ (h >> 29)) * 0x94D049BB133111EBu;
    return static_cast<double>((h ^ (h >> 32)) >> 11) * 0x1p-53;
}

/// Returns smooth noise in [-1, 1] with mean 0 and one bump per unit.
inline double Noise(double x, double y, uint32_t seed)
{
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const auto ix = static_cast<int64_t>(fx);
    const auto iy = static_cast<int64_t>(fy);
    const double tx = Ramp(x - fx, 0, 1);
    const double ty = Ramp(y - fy, 0, 1);
    const double top = Hash(ix, iy, seed) * (1 - tx) + Hash(ix + 1, iy, seed) * tx;
    const double bottom = Hash(ix, iy + 1, seed) * (1 - tx) + Hash(ix + 1, iy + 1, seed) * tx;
    return 2 * (top * (1 - ty) + bottom * ty) - 1;
}

/// Returns the sum of @p octaves layers of noise, each with bumps half as wide and half as high as the previous one's.
inline double Cloud(double x, double y, int octaves, uint32_t seed)
{
    double sum = 0;
    double weight = 0.5;
    for (int i = 0; i < octaves; ++i, weight /= 2, x *= 2.03, y *= 2.03)
        sum += weight * Noise(x, y, seed + static_cast<uint32_t>(i));
    return sum;
}

/// A small cell of the corrected picture: its center and the lengths of its sides.
struct Footprint {
    Point at;
    double width = 1;
    double height = 1;
};

/// The color of one footprint while it is being painted: each call paints over the previous ones.
class Brush {
public:
    explicit Brush(const Footprint &footprint) : cell(footprint) { }

    /// Returns the share of the footprint inside a rectangle.
    double Box(double x0, double y0, double x1, double y1) const
    {
        return Span(cell.at.x, x0, x1, cell.width) * Span(cell.at.y, y0, y1, cell.height);
    }
    /// Returns the share of the footprint inside an ellipse, accurate if the ellipse is far larger than the footprint.
    double Ellipse(double cx, double cy, double rx, double ry) const
    {
        const double r = std::hypot((cell.at.x - cx) / rx, (cell.at.y - cy) / ry);
        return Clamp01((1 - r) * std::min(rx, ry) / cell.width + 0.5);
    }
    void Fill(double share, Rgb c) { color = Mix(color, c, share); }
    void Shade(double share, Rgb factor) { color = Mix(color, color * factor, share); }
    void Shade(double share, double factor) { Shade(share, Rgb{factor, factor, factor}); }

    const Footprint cell;
    Rgb color;
};

/// The factor by which shade under a clear sky darkens a color.
constexpr Rgb kShadow = {0.56, 0.60, 0.68};

} // namespace Samples
