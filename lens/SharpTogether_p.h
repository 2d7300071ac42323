// Sharp sampling of a run of pixels from one plane with the colors of each pixel together, for colors that share their
// positions: the 18 values of a row fill five vectors instead of the six that three planes need, and hardly need to be
// rearranged.
#pragma once

#include "SharpRun_p.h"

#if VITRELUX_FITTED_VECTORS

namespace {

/// Returns the sums of the products of six columns, given r0 g0 b0 r1, g1 b1 r2 g2, b2 r3 g3 b3, r4 g4 b4 r5 and g5 b5;
/// the last value is meaningless. Below, r04 stands for r0 + r4.
VITRELUX_INLINE __m128 SumsOfColumns(__m128 a, __m128 b, __m128 c, __m128 d, __m128 e)
{
    const __m128 start = _mm_add_ps(a, d), second = _mm_add_ps(b, e); // r04 g04 b04 r15, g15 b15 r2 g2
    const __m128 even = _mm_add_ps(start, _mm_shuffle_ps(second, c, _MM_SHUFFLE(0, 0, 3, 2)));
    const __m128 odd = _mm_add_ps(c, _mm_shuffle_ps(start, second, _MM_SHUFFLE(1, 0, 3, 3))); // from lane 1 on
    return _mm_add_ps(even, _mm_shuffle_ps(odd, odd, _MM_SHUFFLE(3, 3, 2, 1)));
}

VITRELUX_INLINE __m128 Opaque(__m128 value)
{
    const __m128 colors = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    return _mm_or_ps(_mm_and_ps(value, colors), _mm_setr_ps(0.0F, 0.0F, 0.0F, 1.0F));
}

struct TogetherBySse2 {
    static void Sample(SharpRun run, CodePlanes planes, const SharpKernel &kernel, Float4 *samples)
    {
        const std::int32_t *const limits = planes.limits[0] + run.ToMiddle(kTogether);
        for (int i = 0; i < run.count; ++i) {
            const std::int32_t offset = run.offset[0][i];
            const auto *weights = reinterpret_cast<const __m128i *>(kernel.Weights() + run.phaseY[0][i]);
            const __m128i first = _mm_shuffle_epi32(*weights, 0x00), second = _mm_shuffle_epi32(*weights, 0x55),
                          third = _mm_shuffle_epi32(*weights, 0xaa);
            const auto load = [&](int row, int vector) VITRELUX_INLINED {
                const std::int32_t *pairs = planes.pairs[0] + offset + row * run.stride + 4 * vector;
                return _mm_loadu_si128(reinterpret_cast<const __m128i *>(pairs));
            };
            const auto rows = [&](int vector) VITRELUX_INLINED {
                const __m128i upper =
                    _mm_add_epi32(_mm_madd_epi16(load(0, vector), first), _mm_madd_epi16(load(2, vector), second));
                return _mm_cvtepi32_ps(_mm_add_epi32(upper, _mm_madd_epi16(load(4, vector), third)));
            };
            const float *shares = kernel.Shares() + run.phaseX[0][i];
            const __m128 left = _mm_load_ps(shares), right = _mm_load_ps(shares + 4);
            const __m128 a = _mm_mul_ps(rows(0), _mm_shuffle_ps(left, left, _MM_SHUFFLE(1, 0, 0, 0)));
            const __m128 d = _mm_mul_ps(rows(3), _mm_shuffle_ps(right, right, _MM_SHUFFLE(1, 0, 0, 0)));
            const __m128 b = _mm_mul_ps(rows(1), _mm_shuffle_ps(left, left, _MM_SHUFFLE(2, 2, 1, 1)));
            const __m128 e = _mm_mul_ps(rows(4), _mm_shuffle_ps(right, right, _MM_SHUFFLE(2, 2, 1, 1)));
            const __m128 c = _mm_mul_ps(rows(2), _mm_shuffle_ps(left, left, _MM_SHUFFLE(3, 3, 3, 2)));
            const __m128i range = _mm_loadu_si128(reinterpret_cast<const __m128i *>(limits + offset));
            const __m128 value = Opaque(ValuesOf(SumsOfColumns(a, b, c, d, e), range));
            std::memcpy(&samples[i], &value, sizeof value);
        }
    }
};

struct TogetherByAvx2 {
    /// Products of one pixel's columns: r0 g0 b0 r1 g1 b1 r2 g2, b2 r3 g3 b3 r4 g4 b4 r5, g5 b5.
    struct Products {
        __m256 first, second;
        __m128 third;
    };

    [[gnu::target("avx2"), gnu::always_inline]] static inline Products
    ProductsOf(const std::int32_t *pairs, int stride, const std::int16_t *weights, const float *shares)
    {
        const __m256i top = _mm256_set1_epi32(PairAt(weights, 0)), middle = _mm256_set1_epi32(PairAt(weights, 1)),
                      bottom = _mm256_set1_epi32(PairAt(weights, 2));
        const auto at = [&](int row, int vector) VITRELUX_INLINED {
            return reinterpret_cast<const __m256i *>(pairs + row * stride + 8 * vector);
        };
        const auto rows = [&](int vector) __attribute__((target("avx2"), always_inline))
        {
            const __m256i upper = _mm256_add_epi32(_mm256_madd_epi16(_mm256_loadu_si256(at(0, vector)), top),
                                                   _mm256_madd_epi16(_mm256_loadu_si256(at(2, vector)), middle));
            const __m256i lower = _mm256_madd_epi16(_mm256_loadu_si256(at(4, vector)), bottom);
            return _mm256_cvtepi32_ps(_mm256_add_epi32(upper, lower));
        };
        const auto half = [&](int row) __attribute__((target("avx2"), always_inline))
        {
            return _mm_loadu_si128(reinterpret_cast<const __m128i *>(at(row, 2)));
        };
        const __m128i upper = _mm_add_epi32(_mm_madd_epi16(half(0), _mm256_castsi256_si128(top)),
                                            _mm_madd_epi16(half(2), _mm256_castsi256_si128(middle)));
        const __m128i lower = _mm_madd_epi16(half(4), _mm256_castsi256_si128(bottom));
        const __m256 share = _mm256_load_ps(shares);
        const __m128 last = _mm_load_ps(shares + 4);
        return {_mm256_mul_ps(rows(0), _mm256_permutevar8x32_ps(share, _mm256_setr_epi32(0, 0, 0, 1, 1, 1, 2, 2))),
                _mm256_mul_ps(rows(1), _mm256_permutevar8x32_ps(share, _mm256_setr_epi32(2, 3, 3, 3, 4, 4, 4, 5))),
                _mm_mul_ps(_mm_cvtepi32_ps(_mm_add_epi32(upper, lower)),
                           _mm_shuffle_ps(last, last, _MM_SHUFFLE(2, 2, 1, 1)))};
    }

    /// Two-pixel version of the SumsOfColumns above.
    [[gnu::target("avx2"), gnu::always_inline]] static inline __m256 SumsOfColumns(const Products &left,
                                                                                   const Products &right)
    {
        const __m256 a = _mm256_permute2f128_ps(left.first, right.first, 0x20),
                     b = _mm256_permute2f128_ps(left.first, right.first, 0x31),
                     c = _mm256_permute2f128_ps(left.second, right.second, 0x20),
                     d = _mm256_permute2f128_ps(left.second, right.second, 0x31);
        const __m256 e = _mm256_set_m128(right.third, left.third);
        const __m256 start = _mm256_add_ps(a, d), second = _mm256_add_ps(b, e);
        const __m256 even = _mm256_add_ps(start, _mm256_shuffle_ps(second, c, _MM_SHUFFLE(0, 0, 3, 2)));
        const __m256 odd = _mm256_add_ps(c, _mm256_shuffle_ps(start, second, _MM_SHUFFLE(1, 0, 3, 3)));
        return _mm256_add_ps(even, _mm256_shuffle_ps(odd, odd, _MM_SHUFFLE(3, 3, 2, 1)));
    }

    /// Samples two pixels at once. If @p run.count is odd, the last pixel is written twice; @p samples must have room
    /// for it.
    [[gnu::target("avx2")]] static void Sample(SharpRun run, CodePlanes planes, const SharpKernel &kernel,
                                               Float4 *samples)
    {
        const std::int32_t *const limits = planes.limits[0] + run.ToMiddle(kTogether);
        for (int i = 0; i < run.count; i += 2) {
            Products products[2];
            __m128i range[2];
            for (int pixel = 0; pixel < 2; ++pixel) {
                const int j = pixel == 0 || i + 1 == run.count ? i : i + 1;
                const std::int32_t offset = run.offset[0][j];
                products[pixel] = ProductsOf(planes.pairs[0] + offset, run.stride, kernel.Weights() + run.phaseY[0][j],
                                             kernel.Shares() + run.phaseX[0][j]);
                range[pixel] = _mm_loadu_si128(reinterpret_cast<const __m128i *>(limits + offset));
            }
            const __m256 values =
                CodesByAvx2::ValuesOf(SumsOfColumns(products[0], products[1]), _mm256_set_m128i(range[1], range[0]));
            _mm256_storeu_ps(reinterpret_cast<float *>(samples + i),
                             _mm256_blend_ps(values, _mm256_set1_ps(1.0F), 0x88));
        }
    }
};

} // namespace

#endif
