// Sampling of blocks of positions between their four neighbours, and storing of pixels, for FloatWarp.
#pragma once

#include "FloatWarpModels_p.h"

#include <xmmintrin.h>

#include <cstring>

namespace {

/// Whether the first @p count positions have all four neighbours each, in memory; not for one that is not a number.
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

/// Positions that have four neighbours each: where the first of the four stands, and the shares of the others.
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

/// The rows below serve the rows of the result that follow; bent lines hide them from the processor's own foresight.
VITRELUX_INLINE void Prefetch(const FloatWarp::Pixels &source, const Corners &corners, int count)
{
    constexpr int kLinePixels = 4, kRowsAhead = 3;
    const unsigned char *ahead = source.base + kRowsAhead * source.rowBytes;
    for (int i = 0; i < count; i += kLinePixels)
        __builtin_prefetch(ahead + corners.offset[i]);
}

VITRELUX_INLINE __m128 Load(const unsigned char *pixel)
{
    return _mm_loadu_ps(reinterpret_cast<const float *>(pixel)); // any address
}

VITRELUX_INLINE __m128 Mix(__m128 a, __m128 b, __m128 aShare, __m128 bShare)
{
    return _mm_add_ps(_mm_mul_ps(a, aShare), _mm_mul_ps(b, bShare));
}

VITRELUX_INLINE __m128 SamplePixel(const FloatWarp::Pixels &source, const Corners &at, int i)
{
    const __m128 fx = _mm_set1_ps(at.fx[i]), restX = _mm_set1_ps(at.restX[i]);
    const __m128 fy = _mm_set1_ps(at.fy[i]), restY = _mm_set1_ps(at.restY[i]);
    const unsigned char *above = source.base + at.offset[i], *below = above + source.stepY;
    const __m128 top = Mix(Load(above), Load(above + source.stepX), restX, fx);
    const __m128 bottom = Mix(Load(below), Load(below + source.stepX), restX, fx);
    return Mix(top, bottom, restY, fy);
}

VITRELUX_INLINE float LoadFloat(const unsigned char *from)
{
    float value;
    std::memcpy(&value, from, sizeof value); // any address
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

/// Whether a position has four neighbours that can be read; notes it where they would have to be in memory and aren't.
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

/// For a single position, which has four neighbours.
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

/// At most 1; also for what is not a number.
VITRELUX_INLINE float Limited(float value)
{
    return value < 1.0F ? value : 1.0F;
}

VITRELUX_INLINE __m128 Limited(__m128 value)
{
    return _mm_min_ps(value, _mm_set1_ps(1.0F)); // the second wins where the first is not a number
}

VITRELUX_INLINE void StoreOpaque(unsigned char *target, __m128 colors)
{
    const __m128 mask = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    const __m128 pixel = _mm_or_ps(_mm_and_ps(mask, colors), _mm_setr_ps(0.0F, 0.0F, 0.0F, 1.0F));
    _mm_storeu_ps(reinterpret_cast<float *>(target), pixel);
}

VITRELUX_INLINE void StoreFloat(unsigned char *target, int channel, float value)
{
    std::memcpy(target + channel * int(sizeof(float)), &value, sizeof value);
}

/// Alpha is 0 where the colours sum up to 0, otherwise 1.
VITRELUX_INLINE void StoreWithAlphaOfSum(unsigned char *target, __m128 colors)
{
    const __m128 green = _mm_shuffle_ps(colors, colors, _MM_SHUFFLE(1, 1, 1, 1));
    const __m128 blue = _mm_shuffle_ps(colors, colors, _MM_SHUFFLE(2, 2, 2, 2));
    const __m128 sum = _mm_add_ss(_mm_add_ss(colors, green), blue);
    const __m128 alpha = _mm_and_ps(_mm_cmpgt_ss(sum, _mm_setzero_ps()), _mm_set_ss(1.0F));
    const __m128 blueAlpha = _mm_unpacklo_ps(blue, alpha);
    _mm_storeu_ps(reinterpret_cast<float *>(target), _mm_movelh_ps(colors, blueAlpha));
}

} // namespace
