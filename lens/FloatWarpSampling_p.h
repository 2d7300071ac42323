// Bilinear sampling at blocks of positions, and storing of pixels, for FloatWarp.
#pragma once

#include "FourFloats_p.h"

#include <cstring>

namespace {

/// Returns whether each of the first @p count positions has four neighbors in memory; false if one is NaN.
VITRELUX_INLINE bool AllBetweenFour(const FloatWarp::Pixels &source, const Positions &at, int count)
{
    int beyond = 0;
    for (int i = 0; i < count; ++i) {
        const bool good =
            (at.x[i] > source.fromX) & (at.x[i] < source.toX) & (at.y[i] > source.fromY) & (at.y[i] < source.toY);
        beyond |= !good;
    }
    return beyond == 0;
}

/// First of the four neighbors of each position, and the interpolation weights.
struct Corners {
    alignas(64) std::int64_t offset[kBlockPixels]; // bytes from the source's base
    alignas(64) float fx[kBlockPixels], restX[kBlockPixels];
    alignas(64) float fy[kBlockPixels], restY[kBlockPixels];
};

VITRELUX_INLINE void FindCorners(const FloatWarp::Pixels &source, const Positions &at, int count, Corners *corners)
{
    const std::int64_t stepX = source.stepX, stepY = source.stepY;
    for (int i = 0; i < count; ++i) {
        const int ix = static_cast<int>(at.x[i]), iy = static_cast<int>(at.y[i]);
        const float fx = at.x[i] - static_cast<float>(ix), fy = at.y[i] - static_cast<float>(iy);
        corners->offset[i] = ix * stepX + iy * stepY;
        corners->fx[i] = fx;
        corners->restX[i] = 1.0F - fx;
        corners->fy[i] = fy;
        corners->restY[i] = 1.0F - fy;
    }
}

/// Prefetches source pixels for the next rows of the result, because the hardware prefetcher doesn't follow curved
/// lines.
VITRELUX_INLINE void Prefetch(const FloatWarp::Pixels &source, const Corners &corners, int count)
{
    constexpr int kLinePixels = 4, kRowsAhead = 3;
    const unsigned char *ahead = source.base + kRowsAhead * source.rowBytes;
    for (int i = 0; i < count; i += kLinePixels)
        __builtin_prefetch(ahead + corners.offset[i]);
}

VITRELUX_INLINE FourFloats Mix(FourFloats a, FourFloats b, FourFloats aShare, FourFloats bShare)
{
    return a * aShare + b * bShare;
}

VITRELUX_INLINE FourFloats SamplePixel(const FloatWarp::Pixels &source, const Corners &at, int i)
{
    const FourFloats fx = All(at.fx[i]), restX = All(at.restX[i]);
    const FourFloats fy = All(at.fy[i]), restY = All(at.restY[i]);
    const unsigned char *above = source.base + at.offset[i], *below = above + source.stepY;
    const FourFloats top = Mix(Load(above), Load(above + source.stepX), restX, fx);
    const FourFloats bottom = Mix(Load(below), Load(below + source.stepX), restX, fx);
    return Mix(top, bottom, restY, fy);
}

VITRELUX_INLINE float LoadFloat(const unsigned char *from)
{
    float value;
    std::memcpy(&value, from, sizeof value); // may be unaligned
    return value;
}

VITRELUX_INLINE float SampleChannel(const FloatWarp::Pixels &source, const Corners &at, int i, int channel)
{
    const unsigned char *above = source.base + at.offset[i] + channel * int(sizeof(float));
    const unsigned char *below = above + source.stepY;
    const float top = LoadFloat(above) * at.restX[i] + LoadFloat(above + source.stepX) * at.fx[i];
    const float bottom = LoadFloat(below) * at.restX[i] + LoadFloat(below + source.stepX) * at.fx[i];
    return top * at.restY[i] + bottom * at.fy[i];
}

VITRELUX_INLINE bool IsInside(const FloatWarp::Pixels &source, float x, float y)
{
    return x > -1.0F && x < source.width && y > -1.0F && y < source.height;
}

VITRELUX_INLINE bool IsBetweenFour(const FloatWarp::Pixels &source, float x, float y)
{
    return x > -1.0F && x < source.betweenX && y > -1.0F && y < source.betweenY;
}

/// Returns whether a position has four neighbors that can be read; sets `missed` if they exist but are not loaded.
VITRELUX_INLINE bool CanSample(const FloatWarp::Band &band, float x, float y)
{
    const FloatWarp::Pixels &source = band.source;
    if (!IsBetweenFour(source, x, y))
        return false;
    const bool there = x > source.fromX && x < source.toX && y > source.fromY && y < source.toY;
    if (!there)
        *band.missed = true;
    return there;
}

/// FindCorners for a single position, which must have four neighbors.
VITRELUX_INLINE Corners OneCorner(const FloatWarp::Pixels &source, float x, float y)
{
    Positions at;
    at.x[0] = x;
    at.y[0] = y;
    Corners corner;
    FindCorners(source, at, 1, &corner);
    return corner;
}

// --- Storing ---

/// Limits to 1; NaN becomes 1.
VITRELUX_INLINE float Limited(float value)
{
    return value < 1.0F ? value : 1.0F;
}

VITRELUX_INLINE FourFloats Limited(FourFloats value)
{
    return AtMost(value, All(1.0F));
}

VITRELUX_INLINE void StoreOpaque(unsigned char *target, FourFloats colors)
{
    Store(target, WithAlphaOne(colors));
}

VITRELUX_INLINE void StoreFloat(unsigned char *target, int channel, float value)
{
    std::memcpy(target + channel * int(sizeof(float)), &value, sizeof value);
}

} // namespace
