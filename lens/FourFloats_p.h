// Float RGBA pixel in one vector register, or as four numbers in builds without vector code; for FloatWarp.
#pragma once

#include "FloatWarpModels_p.h"
#include "vectors.h"

#include <cstring>

#if VITRELUX_VECTORS
#include <xmmintrin.h>
#endif

namespace {

#if VITRELUX_VECTORS

using FourFloats = __m128; // the compiler supports + - * for it

VITRELUX_INLINE FourFloats Each(float red, float green, float blue, float alpha)
{
    return _mm_setr_ps(red, green, blue, alpha);
}

VITRELUX_INLINE FourFloats All(float value)
{
    return _mm_set1_ps(value);
}

/// Loads a pixel. Neither this nor Store() needs alignment.
VITRELUX_INLINE FourFloats Load(const unsigned char *pixel)
{
    return _mm_loadu_ps(reinterpret_cast<const float *>(pixel));
}

VITRELUX_INLINE void Store(unsigned char *target, FourFloats value)
{
    _mm_storeu_ps(reinterpret_cast<float *>(target), value);
}

/// Returns the smaller of @p value and @p limit; @p limit if @p value is NaN.
VITRELUX_INLINE FourFloats AtMost(FourFloats value, FourFloats limit)
{
    return _mm_min_ps(value, limit);
}

/// Returns the greater of @p value and @p limit; @p limit if @p value is NaN.
VITRELUX_INLINE FourFloats AtLeast(FourFloats value, FourFloats limit)
{
    return _mm_max_ps(value, limit);
}

/// Joins the first channel of @p red, the second of @p green, and the third and fourth of @p blue.
VITRELUX_INLINE FourFloats Join(FourFloats red, FourFloats green, FourFloats blue)
{
    return _mm_shuffle_ps(_mm_move_ss(green, red), blue, _MM_SHUFFLE(3, 2, 1, 0));
}

VITRELUX_INLINE FourFloats WithAlphaOne(FourFloats colors)
{
    const FourFloats mask = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    return _mm_or_ps(_mm_and_ps(mask, colors), _mm_setr_ps(0.0F, 0.0F, 0.0F, 1.0F));
}

/// Sets alpha to 1 if the sum of the colors is above 0, otherwise to 0.
VITRELUX_INLINE FourFloats WithAlphaOfSum(FourFloats colors)
{
    const FourFloats green = _mm_shuffle_ps(colors, colors, _MM_SHUFFLE(1, 1, 1, 1));
    const FourFloats blue = _mm_shuffle_ps(colors, colors, _MM_SHUFFLE(2, 2, 2, 2));
    const FourFloats sum = _mm_add_ss(_mm_add_ss(colors, green), blue);
    const FourFloats alpha = _mm_and_ps(_mm_cmpgt_ss(sum, _mm_setzero_ps()), _mm_set_ss(1.0F));
    return _mm_movelh_ps(colors, _mm_unpacklo_ps(blue, alpha));
}

#else

struct FourFloats {
    float c[4];
};

VITRELUX_INLINE FourFloats Each(float red, float green, float blue, float alpha)
{
    return {{red, green, blue, alpha}};
}

VITRELUX_INLINE FourFloats All(float value)
{
    return {{value, value, value, value}};
}

VITRELUX_INLINE FourFloats Load(const unsigned char *pixel)
{
    FourFloats value;
    std::memcpy(value.c, pixel, sizeof value.c);
    return value;
}

VITRELUX_INLINE void Store(unsigned char *target, FourFloats value)
{
    std::memcpy(target, value.c, sizeof value.c);
}

template <typename Operation> VITRELUX_INLINE FourFloats ForEach(FourFloats a, FourFloats b, Operation of)
{
    return {{of(a.c[0], b.c[0]), of(a.c[1], b.c[1]), of(a.c[2], b.c[2]), of(a.c[3], b.c[3])}};
}

VITRELUX_INLINE FourFloats operator+(FourFloats a, FourFloats b)
{
    return ForEach(a, b, [](float x, float y) { return x + y; });
}

VITRELUX_INLINE FourFloats operator-(FourFloats a, FourFloats b)
{
    return ForEach(a, b, [](float x, float y) { return x - y; });
}

VITRELUX_INLINE FourFloats operator*(FourFloats a, FourFloats b)
{
    return ForEach(a, b, [](float x, float y) { return x * y; });
}

VITRELUX_INLINE FourFloats AtMost(FourFloats value, FourFloats limit)
{
    return ForEach(value, limit, [](float x, float y) { return x < y ? x : y; });
}

VITRELUX_INLINE FourFloats AtLeast(FourFloats value, FourFloats limit)
{
    return ForEach(value, limit, [](float x, float y) { return x > y ? x : y; });
}

VITRELUX_INLINE FourFloats Join(FourFloats red, FourFloats green, FourFloats blue)
{
    return Each(red.c[0], green.c[1], blue.c[2], blue.c[3]);
}

VITRELUX_INLINE FourFloats WithAlphaOne(FourFloats colors)
{
    return Each(colors.c[0], colors.c[1], colors.c[2], 1.0F);
}

VITRELUX_INLINE FourFloats WithAlphaOfSum(FourFloats colors)
{
    const float sum = colors.c[0] + colors.c[1] + colors.c[2];
    return Each(colors.c[0], colors.c[1], colors.c[2], sum > 0.0F ? 1.0F : 0.0F);
}

#endif

} // namespace
