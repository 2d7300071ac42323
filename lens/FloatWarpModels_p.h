// Lens models for blocks of positions, and the description of a band of rows; for FloatWarp.
//
// Everything here and in the headers that include it is inlined into functions that are compiled once per instruction
// set, and must not be called from code compiled for another. Positions and gains are computed for whole blocks in
// plain loops that vectorize; formulas and their order of operations are those of LensParam, so results are
// bit-identical.
#pragma once

#include "Arctangent_p.h"
#include "FloatWarp.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#define VITRELUX_INLINE [[gnu::always_inline]] inline
#define VITRELUX_INLINED __attribute__((always_inline)) // for lambdas

constexpr int kBlockPixels = 64; // positions, gains and corners of a block take at most 7 KiB
constexpr int kPixelBytes = 16;

struct FloatWarp::Band {
    Radial main, red, blue;
    Vignette vignette;
    Path path;
    Frame frame;
    Unwritten unwritten;
    Pixels source;             // in the models' frame
    const unsigned char *same; // source pixel at the position of the band's first pixel, as stored
    std::int64_t sameStride;   // bytes
    unsigned char *target;
    std::int64_t targetStride;
    int width, rows; // of the band
    int firstRow;
    bool *missed; // set if neighbors are not in memory
};

namespace {

struct Positions {
    alignas(64) float x[kBlockPixels];
    alignas(64) float y[kBlockPixels];
};

struct Values {
    alignas(64) float v[kBlockPixels];
};

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
    const FloatWarp::Radial m = model; // in registers: the stores below might alias the original
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
    constexpr int kForms = 4; // by number of terms
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

} // namespace
