// Rows of pixels as 16-bit codes for sharp sampling: one plane per color, or the three colors of a pixel together.
#pragma once

#include "SharpLimits_p.h"

#include <limits>

namespace {

constexpr int kTogether = 3; // codes of a pixel without alpha

VITRELUX_INLINE float LoadChannel(const unsigned char *pixel, int channel)
{
    float value;
    std::memcpy(&value, pixel + channel * int(sizeof value), sizeof value); // may be unaligned
    return value;
}

VITRELUX_INLINE std::int16_t CodeOf(float value)
{
    constexpr float kLowest = -32768.0F, kHighest = 32767.0F;
    float code = value * 65535.0F - 32768.0F;
    code = code > kLowest ? code : kLowest; // also for NaN
    code = code < kHighest ? code : kHighest;
    return static_cast<std::int16_t>(std::lrint(code));
}

VITRELUX_INLINE std::int32_t PairOf(std::int16_t low, std::int16_t high)
{
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(high) << 16)
                                     | (static_cast<std::uint32_t>(low) & 0xffffU));
}

#if VITRELUX_FITTED_VECTORS

/// Returns the codes of two pixels, eight including alpha's.
VITRELUX_INLINE __m128i CodesOfTwo(const unsigned char *pixels)
{
    const __m128 scale = _mm_set1_ps(65535.0F), lowest = _mm_set1_ps(-32768.0F);
    const __m128 first = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(reinterpret_cast<const float *>(pixels)), scale), lowest);
    const __m128 second =
        _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(reinterpret_cast<const float *>(pixels + kPixelBytes)), scale), lowest);
    return _mm_packs_epi32(_mm_cvtps_epi32(first), _mm_cvtps_epi32(second)); // saturates to 16 bits
}

VITRELUX_INLINE void StoreEight(std::int16_t *to, __m128i codes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), codes);
}

/// Stores the codes of eight pixels in one row per color.
VITRELUX_INLINE void SplitEight(const unsigned char *pixels, std::int16_t *red, std::int16_t *green, std::int16_t *blue)
{
    __m128i redGreen[2], blueAlpha[2]; // of four pixels each
    for (int half = 0; half < 2; ++half) {
        const __m128i first = CodesOfTwo(pixels + 4 * half * kPixelBytes),
                      second = CodesOfTwo(pixels + (4 * half + 2) * kPixelBytes);
        const __m128i even = _mm_unpacklo_epi16(first, second), odd = _mm_unpackhi_epi16(first, second);
        redGreen[half] = _mm_unpacklo_epi16(even, odd);
        blueAlpha[half] = _mm_unpackhi_epi16(even, odd);
    }
    StoreEight(red, _mm_unpacklo_epi64(redGreen[0], redGreen[1]));
    StoreEight(green, _mm_unpackhi_epi64(redGreen[0], redGreen[1]));
    StoreEight(blue, _mm_unpacklo_epi64(blueAlpha[0], blueAlpha[1]));
}

/// Stores the codes of eight pixels, the colors of each together, followed by one meaningless code.
VITRELUX_INLINE void PackEight(const unsigned char *pixels, std::int16_t *to)
{
    for (int i = 0; i < 8; i += 2, to += 2 * kTogether) {
        const __m128i codes = CodesOfTwo(pixels + i * kPixelBytes);
        _mm_storel_epi64(reinterpret_cast<__m128i *>(to), codes); // the next pixel overwrites alpha
        _mm_storeh_pi(reinterpret_cast<__m64 *>(to + kTogether), _mm_castsi128_ps(codes)); // may be unaligned
    }
}

VITRELUX_INLINE void PairEight(const std::int16_t *low, const std::int16_t *high, std::int32_t *pairs)
{
    const __m128i lows = _mm_loadu_si128(reinterpret_cast<const __m128i *>(low));
    const __m128i highs = _mm_loadu_si128(reinterpret_cast<const __m128i *>(high));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs), _mm_unpacklo_epi16(lows, highs));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs + 4), _mm_unpackhi_epi16(lows, highs));
}

#else

VITRELUX_INLINE void SplitEight(const unsigned char *pixels, std::int16_t *red, std::int16_t *green, std::int16_t *blue)
{
    for (int i = 0; i < 8; ++i) {
        red[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 0));
        green[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 1));
        blue[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 2));
    }
}

VITRELUX_INLINE void PackEight(const unsigned char *pixels, std::int16_t *to)
{
    for (int i = 0; i < 8; ++i)
        for (int channel = 0; channel < kTogether; ++channel)
            to[i * kTogether + channel] = CodeOf(LoadChannel(pixels + i * kPixelBytes, channel));
}

VITRELUX_INLINE void PairEight(const std::int16_t *low, const std::int16_t *high, std::int32_t *pairs)
{
    for (int i = 0; i < 8; ++i)
        pairs[i] = PairOf(low[i], high[i]);
}

#endif

/// Returns the code of an integer, which equals that of the same value as a float.
template <typename Sample> VITRELUX_INLINE std::int16_t CodeOfStored(Sample stored)
{
    constexpr unsigned kScale = 65535U / std::numeric_limits<Sample>::max(), kHalf = 32768U;
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(stored * kScale - kHalf));
}

/// Stores the codes of @p count integer RGB pixels in one row per color.
template <typename Sample>
VITRELUX_INLINE void SplitStored(const unsigned char *pixels, int count, std::int16_t *__restrict red,
                                 std::int16_t *__restrict green, std::int16_t *__restrict blue)
{
    const auto *__restrict samples = reinterpret_cast<const Sample *>(pixels);
    for (int i = 0; i < count; ++i) {
        red[i] = CodeOfStored(samples[3 * i]);
        green[i] = CodeOfStored(samples[3 * i + 1]);
        blue[i] = CodeOfStored(samples[3 * i + 2]);
    }
}

/// Stores the codes of @p count integer RGB pixels, the colors of each together.
template <typename Sample>
VITRELUX_INLINE void PackStored(const unsigned char *pixels, int count, std::int16_t *__restrict to)
{
    const auto *__restrict samples = reinterpret_cast<const Sample *>(pixels);
    for (int i = 0; i < count * kTogether; ++i)
        to[i] = CodeOfStored(samples[i]);
}

/// Prefetches the eight pixels of float RGBA three rows below, at @p stride bytes per row, because the hardware
/// prefetcher doesn't follow curved lines.
VITRELUX_INLINE void PrefetchBelow(const unsigned char *pixels, std::int64_t stride)
{
    constexpr int kLineBytes = 64, kRowsAhead = 3;
    __builtin_prefetch(pixels + kRowsAhead * stride);
    __builtin_prefetch(pixels + kRowsAhead * stride + kLineBytes);
}

/// Stores the codes of @p count pixels of float RGBA in one row per color. Prefetches the next rows, @p stride bytes
/// apart.
VITRELUX_INLINE void SplitRow(const unsigned char *pixels, std::int64_t stride, int count, std::int16_t *red,
                              std::int16_t *green, std::int16_t *blue)
{
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        PrefetchBelow(pixels + i * kPixelBytes, stride);
        SplitEight(pixels + i * kPixelBytes, red + i, green + i, blue + i);
    }
    for (; i < count; ++i) {
        red[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 0));
        green[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 1));
        blue[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 2));
    }
}

/// Like SplitRow, but stores the colors of each pixel together. May also write one meaningless code after the last
/// pixel.
VITRELUX_INLINE void PackRow(const unsigned char *pixels, std::int64_t stride, int count, std::int16_t *to)
{
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        PrefetchBelow(pixels + i * kPixelBytes, stride);
        PackEight(pixels + i * kPixelBytes, to + i * kTogether);
    }
    for (; i < count; ++i)
        for (int channel = 0; channel < kTogether; ++channel)
            to[i * kTogether + channel] = CodeOf(LoadChannel(pixels + i * kPixelBytes, channel));
}

} // namespace
