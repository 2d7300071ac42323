// The loops of FloatWarp, to be compiled once for each set of instructions; for FloatWarp.cpp alone.
//
// Everything is inlined into functions that are marked for their instructions: nothing of it may be called from code
// for other processors. Positions and gains are computed for whole blocks in plain loops that vectorise; formulas and
// their order of operations are those of LensParam, to the bit.
#pragma once

#include "Arctangent_p.h"
#include "FloatWarp.h"

#include <xmmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#define VITRELUX_INLINE [[gnu::always_inline]] inline
#define VITRELUX_INLINED __attribute__((always_inline)) // of a lambda

constexpr int kBlockPixels = 64; // positions, gains and samples of a block take 3 KiB
constexpr int kPixelBytes = 16;

struct FloatWarp::Band {
    Radial main, red, blue;
    Vignette vignette;
    Path path;
    Frame frame;
    Unwritten unwritten;
    Pixels source;             // in the frame of the models
    const unsigned char *same; // the source at the first pixel of the band, as both lie in memory
    std::int64_t sameStride;   // bytes
    unsigned char *target;
    std::int64_t targetStride;
    int width, rows; // of the band
    int firstRow;
    bool *missed; // set where neighbours are not in memory
};

namespace {

struct Positions {
    alignas(64) float x[kBlockPixels];
    alignas(64) float y[kBlockPixels];
};

struct Values {
    alignas(64) float v[kBlockPixels];
};

// --- Models ---

template <int kTerms> VITRELUX_INLINE float RadialFactor(const float *c, float r2)
{
    const float r4 = r2 * r2;
    if constexpr (kTerms == 1)
        return static_cast<float>(1.0 + c[0] * r2);
    else if constexpr (kTerms == 2)
        return static_cast<float>(1.0 + c[0] * r2 + c[1] * r4);
    else if constexpr (kTerms == 3)
        return static_cast<float>(1.0 + c[0] * r2 + c[1] * r4 + c[2] * r2 * r4);
    else
        return 1.0F;
}

template <int kTerms, bool kTangential>
VITRELUX_INLINE void WarpPerspective(const FloatWarp::Radial &model, const Positions &in, Positions *out)
{
    const FloatWarp::Radial m = model; // in registers: the stores below might change the original
    for (int i = 0; i < kBlockPixels; ++i) {
        const float u = (in.x[i] - m.cx) / m.f;
        const float v = (in.y[i] - m.cy) / m.f;
        const float u2 = u * u;
        const float v2 = v * v;
        const float r2 = u2 + v2;
        const float k = RadialFactor<kTerms>(m.c, r2);
        float towardX = k * u, towardY = k * v;
        if constexpr (kTangential) {
            const double t = (2.0 * u) * v;
            towardX = towardX + static_cast<float>((2.0 * u2 + r2) * m.t2 + t * m.t1);
            towardY = towardY + static_cast<float>((2.0 * v2 + r2) * m.t1 + t * m.t2);
        }
        out->x[i] = m.cx + m.f * towardX;
        out->y[i] = m.cy + m.f * towardY;
    }
}

template <int kTerms>
VITRELUX_INLINE void WarpFisheye(const FloatWarp::Radial &model, const Positions &in, Positions *out)
{
    const FloatWarp::Radial m = model;
    for (int i = 0; i < kBlockPixels; ++i) {
        const float u = (in.x[i] - m.cx) / m.f;
        const float v = (in.y[i] - m.cy) / m.f;
        float g = 0.0F;
        if constexpr (kTerms > 0) {
            const float r = std::sqrt(u * u + v * v);
            const float a = Arctangent(r);
            const float a3 = a * a * a;
            g = (a + (kTerms == 1 ? m.c[0] : m.c[0] + m.c[1] * (a * a)) * a3) / r;
        }
        out->x[i] = m.cx + g * (m.f * u);
        out->y[i] = m.cy + g * (m.f * v);
    }
}

VITRELUX_INLINE void WarpBlock(const FloatWarp::Radial &model, const Positions &in, Positions *out)
{
    using Form = FloatWarp::Radial::Form;
    constexpr int kForms = 4; // of terms
    switch (static_cast<int>(model.form) * kForms + model.terms) {
    case static_cast<int>(Form::Perspective) * kForms + 0:
        return WarpPerspective<0, false>(model, in, out);
    case static_cast<int>(Form::Perspective) * kForms + 1:
        return WarpPerspective<1, false>(model, in, out);
    case static_cast<int>(Form::Perspective) * kForms + 2:
        return WarpPerspective<2, false>(model, in, out);
    case static_cast<int>(Form::Perspective) * kForms + 3:
        return WarpPerspective<3, false>(model, in, out);
    case static_cast<int>(Form::Tangential) * kForms + 0:
        return WarpPerspective<0, true>(model, in, out);
    case static_cast<int>(Form::Tangential) * kForms + 1:
        return WarpPerspective<1, true>(model, in, out);
    case static_cast<int>(Form::Tangential) * kForms + 2:
        return WarpPerspective<2, true>(model, in, out);
    case static_cast<int>(Form::Tangential) * kForms + 3:
        return WarpPerspective<3, true>(model, in, out);
    case static_cast<int>(Form::Fisheye) * kForms + 1:
        return WarpFisheye<1>(model, in, out);
    case static_cast<int>(Form::Fisheye) * kForms + 2:
        return WarpFisheye<2>(model, in, out);
    default:
        return WarpFisheye<0>(model, in, out);
    }
}

VITRELUX_INLINE void GainBlock(const FloatWarp::Vignette &vignette, const Positions &at, Values *gain)
{
    const FloatWarp::Vignette m = vignette;
    if (!m.found) {
        std::fill_n(gain->v, kBlockPixels, 1.0F);
        return;
    }
    for (int i = 0; i < kBlockPixels; ++i) {
        const float u = (at.x[i] - m.cx) / m.fx;
        const float v = (at.y[i] - m.cy) / m.fy;
        const float r2 = u * u + v * v;
        const float x2 = r2 * r2;
        gain->v[i] = 1.0F - m.a1 * r2 + m.a2 * x2 - m.a3 * (x2 * r2) + m.a4 * (x2 * x2);
    }
}

// --- Sampling ---

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

// --- The four paths, a block each ---

/// A stretch of a row: where it is written, and the source at the same place.
struct Block {
    const unsigned char *same;
    unsigned char *target;
    int count;
};

VITRELUX_INLINE void Preset(const FloatWarp::Band &band, const Block &block)
{
    const auto bytes = static_cast<size_t>(block.count) * kPixelBytes;
    if (band.unwritten == FloatWarp::Unwritten::Cleared)
        std::memset(block.target, 0, bytes);
    else if (band.unwritten == FloatWarp::Unwritten::FromSource)
        std::memcpy(block.target, block.same, bytes);
}

VITRELUX_INLINE void GainOnlyBlock(const Block &block, const Values &gain)
{
    for (int i = 0; i < block.count; ++i) {
        const __m128 value = _mm_mul_ps(_mm_set1_ps(gain.v[i]), Load(block.same + i * kPixelBytes));
        StoreOpaque(block.target + i * kPixelBytes, Limited(_mm_max_ps(value, _mm_setzero_ps())));
    }
}

VITRELUX_INLINE void OneWarpBlock(const FloatWarp::Band &band, const Block &block, const Positions &at,
                                  const Values &gain)
{
    const FloatWarp::Pixels source = band.source;
    if (AllBetweenFour(source, at, block.count)) {
        Corners corners;
        FindCorners(source, at, block.count, &corners);
        Prefetch(source, corners, block.count);
        for (int i = 0; i < block.count; ++i)
            StoreOpaque(block.target + i * kPixelBytes,
                        Limited(_mm_mul_ps(_mm_set1_ps(gain.v[i]), SamplePixel(source, corners, i))));
        return;
    }
    for (int i = 0; i < block.count; ++i) {
        unsigned char *target = block.target + i * kPixelBytes;
        if (IsInside(source, at.x[i], at.y[i])) {
            __m128 sample = _mm_setzero_ps(); // in the last column and row
            if (CanSample(band, at.x[i], at.y[i]))
                sample = SamplePixel(source, OneCorner(source, at.x[i], at.y[i]), 0);
            StoreOpaque(target, Limited(_mm_mul_ps(_mm_set1_ps(gain.v[i]), sample)));
        } else {
            std::memset(target, 0, kPixelBytes);
        }
    }
}

/// Samples one channel, stores it with the gain, and tells whether it was inside.
VITRELUX_INLINE bool MoveChannel(const FloatWarp::Band &band, float x, float y, int channel, float gain,
                                 unsigned char *target)
{
    const bool inside = IsInside(band.source, x, y);
    float sample = 0.0F; // in the last column and row
    if (CanSample(band, x, y))
        sample = SampleChannel(band.source, OneCorner(band.source, x, y), 0, channel);
    StoreFloat(target, channel, inside ? Limited(gain * sample) : 0.0F);
    return inside;
}

/// Three channels, each at its own place; @p green is null where green stays.
VITRELUX_INLINE void ThreeChannelsWithCare(const FloatWarp::Band &band, const Block &block, const Positions &red,
                                           const Positions *green, const Positions &blue, const Values &gain)
{
    Preset(band, block);
    for (int i = 0; i < block.count; ++i) {
        unsigned char *target = block.target + i * kPixelBytes;
        if (!MoveChannel(band, red.x[i], red.y[i], 0, gain.v[i], target))
            continue; // the channels behind it stay as they were
        if (!green)
            StoreFloat(target, 1, Limited(gain.v[i] * LoadFloat(block.same + i * kPixelBytes + 4)));
        else if (!MoveChannel(band, green->x[i], green->y[i], 1, gain.v[i], target))
            continue;
        if (!MoveChannel(band, blue.x[i], blue.y[i], 2, gain.v[i], target))
            continue;
        const float sum = LoadFloat(target) + LoadFloat(target + 4) + LoadFloat(target + 8);
        StoreFloat(target, 3, sum > 0.0F ? 1.0F : 0.0F);
    }
}

/// The first channel of @p red, the second of @p green, the third of @p blue.
VITRELUX_INLINE __m128 Join(__m128 red, __m128 green, __m128 blue)
{
    return _mm_shuffle_ps(_mm_move_ss(green, red), blue, _MM_SHUFFLE(3, 2, 1, 0));
}

/// The corners of three channels.
struct ColorCorners {
    Corners red, green, blue;
};

/// Each colour of a pixel from its own place. @p load gives the joined neighbours by their step from the corner.
template <typename Loader>
VITRELUX_INLINE __m128 SampleJoined(const FloatWarp::Pixels &source, __m128 fx, __m128 fy, Loader load)
{
    const __m128 one = _mm_set1_ps(1.0F), restX = _mm_sub_ps(one, fx), restY = _mm_sub_ps(one, fy);
    const __m128 top = Mix(load(0), load(source.stepX), restX, fx);
    const __m128 bottom = Mix(load(source.stepY), load(source.stepX + source.stepY), restX, fx);
    return Mix(top, bottom, restY, fy);
}

VITRELUX_INLINE __m128 SampleColors(const FloatWarp::Pixels &source, const ColorCorners &at, int i)
{
    const __m128 fx = _mm_setr_ps(at.red.fx[i], at.green.fx[i], at.blue.fx[i], 0.0F);
    const __m128 fy = _mm_setr_ps(at.red.fy[i], at.green.fy[i], at.blue.fy[i], 0.0F);
    const unsigned char *red = source.base + at.red.offset[i], *green = source.base + at.green.offset[i],
                        *blue = source.base + at.blue.offset[i];
    return SampleJoined(source, fx, fy, [&](std::int64_t step) VITRELUX_INLINED {
        return Join(Load(red + step), Load(green + step), Load(blue + step));
    });
}

/// The same where green stays as it is in @p same.
VITRELUX_INLINE __m128 SampleRedAndBlue(const FloatWarp::Pixels &source, const ColorCorners &at, int i, __m128 same)
{
    const __m128 fx = _mm_setr_ps(at.red.fx[i], 0.0F, at.blue.fx[i], 0.0F);
    const __m128 fy = _mm_setr_ps(at.red.fy[i], 0.0F, at.blue.fy[i], 0.0F);
    const unsigned char *red = source.base + at.red.offset[i], *blue = source.base + at.blue.offset[i];
    const __m128 moved = SampleJoined(source, fx, fy, [&](std::int64_t step) VITRELUX_INLINED {
        return _mm_shuffle_ps(Load(red + step), Load(blue + step), _MM_SHUFFLE(3, 2, 1, 0));
    });
    return Join(moved, same, moved);
}

VITRELUX_INLINE void ThreeChannelsBlock(const FloatWarp::Band &band, const Block &block, const Positions &red,
                                        const Positions *green, const Positions &blue, const Values &gain)
{
    const FloatWarp::Pixels source = band.source;
    if (!AllBetweenFour(source, red, block.count) || !AllBetweenFour(source, blue, block.count)
        || (green && !AllBetweenFour(source, *green, block.count)))
        return ThreeChannelsWithCare(band, block, red, green, blue, gain);
    ColorCorners corners;
    FindCorners(source, red, block.count, &corners.red);
    FindCorners(source, blue, block.count, &corners.blue);
    if (green)
        FindCorners(source, *green, block.count, &corners.green);
    Prefetch(source, corners.red, block.count);
    for (int i = 0; i < block.count; ++i) {
        const __m128 sample = green ? SampleColors(source, corners, i)
                                    : SampleRedAndBlue(source, corners, i, Load(block.same + i * kPixelBytes));
        StoreWithAlphaOfSum(block.target + i * kPixelBytes, Limited(_mm_mul_ps(_mm_set1_ps(gain.v[i]), sample)));
    }
}

/// The positions of a block's pixels in the frame of the models.
VITRELUX_INLINE void Start(const FloatWarp::Band &band, int x, int y, Positions *at)
{
    const bool turned = band.frame == FloatWarp::Frame::Turned;
    for (int i = 0; i < kBlockPixels; ++i) {
        at->x[i] = static_cast<float>(turned ? y : x + i);
        at->y[i] = static_cast<float>(turned ? band.width - 1 - x - i : y);
    }
}

/// @p Set has the two functions that are marked for its instructions: Warp(model, in, out) and Rows(band).
template <typename Set>
VITRELUX_INLINE void RenderBlock(const FloatWarp::Band &band, const Block &block, const Positions &start)
{
    Positions main, red, blue;
    Values gain;
    switch (band.path) {
    case FloatWarp::Path::Nothing:
        return Preset(band, block);
    case FloatWarp::Path::GainOnly:
        GainBlock(band.vignette, start, &gain);
        return GainOnlyBlock(block, gain);
    case FloatWarp::Path::OneWarp:
        Set::Warp(band.main, start, &main);
        GainBlock(band.vignette, main, &gain);
        return OneWarpBlock(band, block, main, gain);
    case FloatWarp::Path::RedAndBlue:
        Set::Warp(band.red, start, &red);
        Set::Warp(band.blue, start, &blue);
        GainBlock(band.vignette, red, &gain);
        return ThreeChannelsBlock(band, block, red, nullptr, blue, gain);
    case FloatWarp::Path::ThreeWarps:
        Set::Warp(band.main, start, &main);
        Set::Warp(band.red, main, &red);
        Set::Warp(band.blue, main, &blue);
        GainBlock(band.vignette, main, &gain);
        return ThreeChannelsBlock(band, block, red, &main, blue, gain);
    }
}

/// Whole rows: narrower strips keep more of the source in the caches and are slower all the same, since no stretch is
/// then long enough for the processor to read ahead.
template <typename Set> VITRELUX_INLINE void RenderRows(const FloatWarp::Band &band)
{
    for (int row = 0; row < band.rows; ++row) {
        for (int x = 0; x < band.width; x += kBlockPixels) {
            const std::int64_t column = std::int64_t(x) * kPixelBytes;
            const Block block = {band.same + row * band.sameStride + column,
                                 band.target + row * band.targetStride + column,
                                 std::min(kBlockPixels, band.width - x)};
            Positions start;
            Start(band, x, band.firstRow + row, &start);
            RenderBlock<Set>(band, block, start);
        }
    }
}

} // namespace
