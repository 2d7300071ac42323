#include "hall.h"

namespace Samples {
namespace {

constexpr double kWall = 5.0; ///< half the width of the hall
constexpr double kFloor = 1.7;
constexpr double kCeiling = -4.3;
constexpr double kEnd = 19;
constexpr double kPoolHalf = 2.9;
constexpr double kPoolNear = 3.3;
constexpr double kPoolFar = 16.2;
constexpr double kSkyHalf = 1.5; ///< half the width of the glass roof
constexpr double kBay = 2.4;     ///< distance between windows, and between beams

constexpr Rgb kTile = {0.87, 0.88, 0.84};
constexpr Rgb kTeal = {0.16, 0.42, 0.45};
constexpr Rgb kOchre = {0.80, 0.60, 0.30};

/// A footprint on one face of the room: the coordinates of its center, and the lengths of its sides, in meters.
struct Spot {
    double s;
    double t;
    double sSize;
    double tSize;

    double Box(double s0, double t0, double s1, double t1) const
    {
        return Span(s, s0, s1, sSize) * Span(t, t0, t1, tSize);
    }
};

double Grout(const Spot &at, double width, double height, double thickness)
{
    return std::max(Lines(at.s, width, thickness, at.sSize), Lines(at.t, height, thickness, at.tSize));
}

/// Returns a brightness factor, which falls toward an edge where two faces meet.
double Corner(double distance)
{
    return 1 - 0.30 * std::exp(-std::abs(distance) / 0.55);
}

double TileTone(const Spot &at, double width, double height, uint32_t seed)
{
    const double fade = Ramp(std::max(at.sSize / width, at.tSize / height), 1.2, 0.4);
    return 1
        + 0.07 * fade
        * (Hash(static_cast<int64_t>(std::floor(at.s / width)), static_cast<int64_t>(std::floor(at.t / height)), seed)
           - 0.5);
}

/// Returns the signed distance of @p z from the middle of its bay.
double InBay(double z)
{
    return z - kBay * std::floor(z / kBay) - kBay / 2;
}

Rgb Water(const Spot &at)
{
    const double wave = Cloud(at.s * 1.9, at.t * 1.3, 3, 301);
    const double wave2 = Cloud(at.s * 1.9 + 31, at.t * 1.3, 3, 307);
    const Spot bottom = {at.s + 0.12 * wave, at.t + 0.16 * wave2, at.sSize * 1.5, at.tSize * 1.5};
    Rgb color = Mix({0.30, 0.68, 0.70}, {0.16, 0.52, 0.60}, Ramp(at.t, kPoolNear, kPoolFar));
    color = Mix(color, color * 0.82, 0.5 * Grout(bottom, 0.5, 0.5, 0.06));
    for (double lane : {-1.45, 0.0, 1.45})
        color = Mix(color, {0.10, 0.24, 0.36}, 0.8 * Span(bottom.s, lane - 0.11, lane + 0.11, bottom.sSize));
    const double caustic = std::abs(Cloud(at.s * 3.1 + wave, at.t * 2.2 + wave2, 3, 311));
    color = color * (1 + 0.30 * Ramp(caustic, 0.13, 0.0));
    const double glint = Ramp(std::abs(at.s + 0.7 * wave), kSkyHalf, 0.4 * kSkyHalf) * Ramp(at.t, 3, 12);
    return Mix(color, {0.90, 0.95, 0.96}, 0.42 * glint);
}

Rgb FloorColor(const Spot &at)
{
    const double checker = 0.5 - 0.5 * SquareWave(at.s / 0.5, at.sSize / 0.5) * SquareWave(at.t / 0.5, at.tSize / 0.5);
    Rgb color = Mix({0.84, 0.78, 0.68}, {0.68, 0.52, 0.42}, checker) * TileTone(at, 0.5, 0.5, 321);
    color = Mix(color, color * 0.72, Grout(at, 0.5, 0.5, 0.018));
    color = Mix(color, kTeal, at.Box(-kPoolHalf - 0.5, kPoolNear - 0.5, kPoolHalf + 0.5, kPoolFar + 0.5));
    color =
        Mix(color, {0.93, 0.92, 0.88}, at.Box(-kPoolHalf - 0.35, kPoolNear - 0.35, kPoolHalf + 0.35, kPoolFar + 0.35));
    color = color * (Corner(kWall - std::abs(at.s)) * Corner(kEnd - at.t));
    const double pool = at.Box(-kPoolHalf, kPoolNear, kPoolHalf, kPoolFar);
    color = Mix(color, Water(at), pool);
    return Mix(color, color * 0.6, pool - at.Box(-kPoolHalf, kPoolNear, kPoolHalf, kPoolFar - 0.12));
}

/// Returns how brightly the sun lights the floor, from 0 to 1: its light falls through the left windows in slanted
/// patches.
double SunOnFloor(const Spot &at)
{
    const double slant = InBay(at.t - 0.45 * (at.s + kWall));
    return Ramp(std::abs(slant), 0.75, 0.62) * Ramp(at.s, -2.4, -3.2) * Ramp(at.s, -kWall + 0.5, -kWall + 0.9);
}

Rgb CeilingColor(const Spot &at)
{
    Rgb color = Rgb{0.86, 0.84, 0.78} * (Corner(kWall - std::abs(at.s)) * Corner(kEnd - at.t));
    color = color * (1 - 0.25 * Ramp(std::abs(at.s), kSkyHalf, kWall));
    const double beam = Lines(at.t, kBay, 0.36, at.tSize);
    color = Mix(color, Rgb{0.43, 0.45, 0.43}, beam);
    color = Mix(color, {0.95, 0.95, 0.93}, Span(std::abs(at.s), kSkyHalf - 0.05, kSkyHalf + 0.22, at.sSize));
    const double cloud = Cloud(at.s / 2.2, at.t / 3.1, 4, 331);
    const Rgb sky = Mix({0.52, 0.70, 0.90}, {0.98, 0.98, 0.98}, Ramp(cloud, -0.1, 0.4));
    const double bars = std::max(Lines(at.s, 0.75, 0.06, at.sSize), Lines(at.t, kBay / 2, 0.08, at.tSize));
    return Mix(color, Mix(sky, {0.28, 0.32, 0.33}, bars), Span(std::abs(at.s), -1, kSkyHalf, at.sSize));
}

/// Returns the color of a wall: tiles up to the frieze, plaster above; t runs from the ceiling down to the floor.
/// The color darkens toward adjacent faces; @p length is the distance to the corner with the next wall.
Rgb WallBase(const Spot &at, double length)
{
    Rgb color = Rgb{0.88, 0.80, 0.64} * (1 + 0.05 * Cloud(at.s, at.t, 3, 341));
    Rgb tiles = kTile * TileTone(at, 0.3, 0.15, 343);
    tiles = Mix(tiles, tiles * 0.78, Grout(at, 0.3, 0.15, 0.008));
    tiles = Mix(tiles, kTeal, Span(at.t, -0.70, -0.55, at.tSize));
    tiles = Mix(tiles, kTeal, Span(at.t, 1.25, kFloor, at.tSize));
    tiles = Mix(tiles, kOchre, Span(at.t, 1.10, 1.16, at.tSize));
    color = Mix(color, tiles, Span(at.t, -0.78, kFloor, at.tSize));
    color = Mix(color, {0.55, 0.38, 0.25}, Span(at.t, -0.86, -0.78, at.tSize));
    color = Mix(color, {0.93, 0.90, 0.83}, Span(at.t, kCeiling, kCeiling + 0.25, at.tSize));
    return color * (Corner(at.t - kCeiling) * Corner(kFloor - at.t) * Corner(length));
}

Rgb LeftWall(const Spot &at)
{
    Rgb color = WallBase(at, kEnd - at.s) * 0.86;
    const Spot bay = {InBay(at.s), at.t, at.sSize, at.tSize};
    color = Mix(color, {0.95, 0.93, 0.88}, bay.Box(-0.83, -3.63, 0.83, -0.97));
    const Rgb sky = Mix({0.98, 0.99, 1.0}, {0.72, 0.83, 0.93}, Ramp(at.t, -1.2, -3.4));
    const Rgb trees = Mix({0.52, 0.63, 0.38}, {0.30, 0.43, 0.24}, Clamp01(0.5 + Cloud(at.s * 3, at.t * 3, 3, 351)));
    const Rgb view = Mix(sky, trees, Ramp(at.t + 0.4 * Noise(at.s * 1.3, 0, 353), -1.9, -1.75));
    const double glass = bay.Box(-0.70, -3.5, 0.70, -1.1);
    color = Mix(color, view, glass);
    const double bars = std::max(Span(bay.s, -0.035, 0.035, at.sSize), Span(at.t, -2.75, -2.68, at.tSize));
    return Mix(color, {0.30, 0.33, 0.33}, glass * bars);
}

Rgb RightWall(const Spot &at)
{
    Rgb color = WallBase(at, kEnd - at.s);
    const Spot bay = {InBay(at.s), at.t, at.sSize, at.tSize};
    const Rgb paint = Mix({0.72, 0.30, 0.22}, {0.22, 0.40, 0.52}, std::fmod(std::abs(std::floor(at.s / kBay)), 2));
    color = Mix(color, {0.95, 0.94, 0.90}, bay.Box(-0.62, -0.45, 0.62, kFloor));
    color = Mix(color, paint, bay.Box(-0.52, -0.35, 0.52, kFloor));
    color = Mix(color, paint * 0.72, bay.Box(-0.40, -0.22, 0.40, 0.55) - bay.Box(-0.36, -0.18, 0.36, 0.51));
    color = Mix(color, {0.95, 0.85, 0.55}, bay.Box(0.34, 0.66, 0.44, 0.74));
    const double sun = bay.Box(-0.55, -3.2, 0.75, -1.3) * (1 - Span(bay.s, 0.06, 0.13, at.sSize));
    return Mix(color, color * Rgb{1.18, 1.15, 1.06}, sun);
}

Rgb EndWall(const Spot &at)
{
    Rgb color = WallBase(at, kWall - std::abs(at.s)) * 0.94;
    const double r = std::hypot(at.s, at.t + 1.6);
    const auto arch = [&](double radius) {
        return Clamp01(0.5 + (radius - r) / at.sSize) * Span(at.t, -9, -1.6, at.tSize)
            + at.Box(-radius, -1.6, radius, -1.1);
    };
    color = Mix(color, {0.95, 0.93, 0.88}, Clamp01(arch(2.15)));
    const Rgb sky = Mix({0.98, 0.98, 0.96}, {0.62, 0.78, 0.92}, Ramp(at.t, -1.1, -3.6));
    color = Mix(color, sky, Clamp01(arch(1.98)));
    const double bars = std::max(Lines(at.s, 0.66, 0.07, at.sSize), Span(at.t, -1.66, -1.58, at.tSize));
    color = Mix(color, {0.28, 0.32, 0.33}, Clamp01(arch(1.98)) * bars);
    return color;
}

} // namespace

Rgb Hall::At(const Footprint &cell) const
{
    const double dx = (cell.at.x - m_center.x) / m_focalPx;
    const double dy = (cell.at.y - m_center.y) / m_focalPx;
    const double size = std::max(cell.width, cell.height) / m_focalPx;
    // Depths at which the ray meets the side walls, and the floor or ceiling.
    const double side = kWall / std::max(std::abs(dx), 1e-9);
    const double level = (dy > 0 ? kFloor : -kCeiling) / std::max(std::abs(dy), 1e-9);
    const double z = std::min({side, level, kEnd});
    // On a face that recedes from the viewer, a sideways step of the ray also changes the depth.
    const double across = z * cell.width / m_focalPx;
    const double down = z * cell.height / m_focalPx;
    if (z == kEnd)
        return EndWall({dx * z, dy * z, across, down});
    if (z == side) {
        const Spot spot = {z, dy * z, z * size / std::abs(dx), down + std::abs(dy / dx) * across};
        return dx < 0 ? LeftWall(spot) : RightWall(spot);
    }
    const Spot spot = {dx * z, z, across + std::abs(dx / dy) * down, z * size / std::abs(dy)};
    if (dy < 0)
        return CeilingColor(spot);
    const Rgb color = FloorColor(spot);
    return Mix(color, color * Rgb{1.22, 1.17, 1.05}, SunOnFloor(spot));
}

Point Hall::Project(Place place) const
{
    return {m_center.x + m_focalPx * place.x / place.z, m_center.y + m_focalPx * place.y / place.z};
}

std::vector<StraightEdge> Hall::Edges() const
{
    const auto edge = [this](const char *name, Place from, Place to) {
        return StraightEdge{name, Project(from), Project(to)};
    };
    const double rim = kPoolHalf + 0.35;
    const double beam = 3 * kBay - 0.18;
    const double door = 2.5 * kBay - 0.52;
    return {
        edge("pool rim, near", {-rim + 0.1, kFloor, kPoolNear - 0.35}, {rim - 0.1, kFloor, kPoolNear - 0.35}),
        edge("pool rim, left", {-rim, kFloor, 3.2}, {-rim, kFloor, 12}),
        edge("pool rim, right", {rim, kFloor, 3.2}, {rim, kFloor, 12}),
        edge("top of the dado, left", {-kWall, 1.25, 4.7}, {-kWall, 1.25, 16}),
        edge("below the band, left", {-kWall, -0.55, 4.7}, {-kWall, -0.55, 11}),
        edge("beam, left", {-kWall + 0.4, kCeiling, beam}, {-kSkyHalf - 0.4, kCeiling, beam}),
        edge("beam, right", {kSkyHalf + 0.4, kCeiling, beam}, {kWall - 0.4, kCeiling, beam}),
        edge("door", {kWall, -0.3, door}, {kWall, kFloor - 0.1, door}),
    };
}

std::vector<EvenPatch> Hall::Patches() const
{
    const double rim = kPoolHalf + 0.18;
    return {
        {"middle", Project({0, 0.3, kEnd}), 12},           {"top left", Project({-kWall, -3, 2 * kBay}), 10},
        {"top right", Project({kWall, -3, 2 * kBay}), 10}, {"bottom left", Project({-rim, kFloor, 3.2}), 12},
        {"bottom right", Project({rim, kFloor, 3.2}), 12},
    };
}

} // namespace Samples
