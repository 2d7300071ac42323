// Bilinear sampling of blocks whose source pixels are all in memory, one or four pixels at a time.
#pragma once

#include "FittedWarpSampling_p.h"

namespace {

/// Plain version, which defines the result.
struct PixelByPixel {
    template <bool kAlpha, bool kSplit>
    VITRELUX_INLINE static void Sample(const FittedWarp::Band &band, const ColorNeighbors &at, int first, int count,
                                       Float4 *samples)
    {
        for (int i = first; i < count; ++i)
            samples[i] = kSplit ? SampleSplit<kAlpha>(band, at, i) : SampleHeld<kAlpha>(band, at[kGreen], i);
    }
};

#if VITRELUX_FITTED_VECTORS

/// Four pixels per vector: each neighbor is loaded directly into its lanes, and interpolation takes a quarter of
/// the instructions. Only for pixels without alpha.
struct FourByAvx512 {
    static constexpr int kPixels = 4;
    static constexpr __mmask16 kGreens = 0x2222, kBlues = 0x4444, kAlphas = 0x8888;

    /// Neighbors of four positions. Each vector holds the left and right neighbors of two positions.
    struct Square {
        __m512 top[2], bottom[2];
    };

    /// Loads the left and right neighbors of two positions, with one load per position, because loads limit the speed.
    [[gnu::target("avx512f,avx512dq"), gnu::always_inline]] static inline __m512 LoadTwo(const unsigned char *row,
                                                                                         const std::int64_t *corners)
    {
        const __m256 first = _mm256_loadu_ps(reinterpret_cast<const float *>(row + corners[0]));
        const __m256 second = _mm256_loadu_ps(reinterpret_cast<const float *>(row + corners[1]));
        return _mm512_mask_broadcast_f32x8(_mm512_castps256_ps512(first), 0xff00, second);
    }

    [[gnu::target("avx512f,avx512dq"), gnu::always_inline]] static inline Square
    LoadSquare(const FittedWarp::Band &band, const std::int64_t *corners)
    {
        const unsigned char *const top = band.source, *const bottom = band.source + band.sourceStride;
        return {{LoadTwo(top, corners), LoadTwo(top, corners + 2)},
                {LoadTwo(bottom, corners), LoadTwo(bottom, corners + 2)}};
    }

    /// Replaces the lanes of one color.
    [[gnu::target("avx512f"), gnu::always_inline]] static inline void Replace(Square *square, __mmask16 lanes,
                                                                              const Square &by)
    {
        for (int i = 0; i < 2; ++i) {
            square->top[i] = _mm512_mask_mov_ps(square->top[i], lanes, by.top[i]);
            square->bottom[i] = _mm512_mask_mov_ps(square->bottom[i], lanes, by.bottom[i]);
        }
    }

    /// Writes one value per pixel into the lanes selected by @p lanes.
    [[gnu::target("avx512f"), gnu::always_inline]] static inline __m512 Spread(__m512 others, __mmask16 lanes,
                                                                               const float *values)
    {
        const __m512i pixelOfLane = _mm512_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3);
        return _mm512_mask_permutexvar_ps(others, lanes, pixelOfLane, _mm512_castps128_ps512(_mm_loadu_ps(values)));
    }

    /// Interpolates between left and right neighbors.
    [[gnu::target("avx512f"), gnu::always_inline]] static inline __m512 MixRow(const __m512 (&row)[2], __m512 x,
                                                                               __m512 rest)
    {
        const __m512 left =
            __builtin_shufflevector(row[0], row[1], 0, 1, 2, 3, 8, 9, 10, 11, 16, 17, 18, 19, 24, 25, 26, 27);
        const __m512 right =
            __builtin_shufflevector(row[0], row[1], 4, 5, 6, 7, 12, 13, 14, 15, 20, 21, 22, 23, 28, 29, 30, 31);
        return _mm512_add_ps(_mm512_mul_ps(left, rest), _mm512_mul_ps(right, x));
    }

    [[gnu::target("avx512f"), gnu::always_inline]] static inline __m512 Mix(const Square &square, __m512 x, __m512 y)
    {
        const __m512 one = _mm512_set1_ps(1.0F), restX = _mm512_sub_ps(one, x), restY = _mm512_sub_ps(one, y);
        return _mm512_add_ps(_mm512_mul_ps(MixRow(square.top, x, restX), restY),
                             _mm512_mul_ps(MixRow(square.bottom, x, restX), y));
    }

    template <bool kSplit>
    [[gnu::target("avx512f,avx512dq"), gnu::always_inline]] static inline __m512
    SampleFour(const FittedWarp::Band &band, const ColorNeighbors &at, int i)
    {
        constexpr __mmask16 kLanes[kColors] = {0xffff, static_cast<__mmask16>(~(kGreens | kBlues | kAlphas)), kBlues};
        Square square = LoadSquare(band, at[kGreen].corner + i);
        __m512 x = Spread(_mm512_setzero_ps(), kLanes[kGreen], at[kGreen].fx + i);
        __m512 y = Spread(_mm512_setzero_ps(), kLanes[kGreen], at[kGreen].fy + i);
        for (int color = kRed; kSplit && color < kColors; ++color) {
            Replace(&square, kLanes[color], LoadSquare(band, at[color].corner + i));
            x = Spread(x, kLanes[color], at[color].fx + i);
            y = Spread(y, kLanes[color], at[color].fy + i);
        }
        return _mm512_mask_mov_ps(Mix(square, x, y), kAlphas, _mm512_set1_ps(1.0F));
    }

    /// Not inlined: its callers are templates that are not compiled for this target, so compilers refuse to inline it.
    template <bool kAlpha, bool kSplit>
    [[gnu::target("avx512f,avx512dq")]] static void Sample(const FittedWarp::Band &band, const ColorNeighbors &at,
                                                           int first, int count, Float4 *samples)
    {
        int i = first;
        for (; !kAlpha && i + kPixels <= count; i += kPixels)
            _mm512_storeu_ps(reinterpret_cast<float *>(samples + i), SampleFour<kSplit>(band, at, i));
        PixelByPixel::Sample<kAlpha, kSplit>(band, at, i, count, samples);
    }
};

#endif

} // namespace
