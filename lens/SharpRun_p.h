// Sharp samples of a run of pixels out of the planes of a box: the innermost loop, per set of instructions.
#pragma once

#include "SharpBox_p.h"
#include "SharpKernel.h"

namespace {

/// Where the samples of a run lie in the planes. Of one channel, or of three with places of their own.
struct SharpRun {
    int count, stride;
    const std::int32_t *offset[3]; // of the first of 6 x 6 values
    const std::int16_t *phaseX[3], *phaseY[3];

    /// From there to the first of the middle four, for which limits stand.
    int ToMiddle() const { return SharpKernel::kBefore * (stride + 1); }
};

// All versions add in this order, and come to the same bits: pairs of rows from above, as integers; then of the
// columns' products 0 with 4, 1 with 5, then these 0 with 2, 1 with 3, then both.

constexpr float kCodeScale = 1.0F / SharpKernel::kOne; // of sums of rows: columns have shares
constexpr float kValueOfCode = 1.0F / 65535.0F;

#if VITRELUX_FITTED_VECTORS

/// The lanes of four vectors added up, one vector after the other.
VITRELUX_INLINE __m128 SumsOf(__m128 a, __m128 b, __m128 c, __m128 d)
{
    const __m128 ab = _mm_add_ps(_mm_unpacklo_ps(a, b), _mm_unpackhi_ps(a, b));
    const __m128 cd = _mm_add_ps(_mm_unpacklo_ps(c, d), _mm_unpackhi_ps(c, d));
    return _mm_add_ps(_mm_movelh_ps(ab, cd), _mm_movehl_ps(cd, ab));
}

/// Sums of three channels as values, within their limits, and a fourth of 1.
VITRELUX_INLINE __m128 ValuesOf(__m128 sums, __m128i limits)
{
    const __m128 lowest = _mm_cvtepi32_ps(_mm_srai_epi32(_mm_slli_epi32(limits, 16), 15));
    const __m128 highest = _mm_cvtepi32_ps(_mm_or_si128(_mm_srai_epi32(limits, 15), _mm_set1_epi32(1)));
    const __m128 code = _mm_mul_ps(sums, _mm_set1_ps(kCodeScale));
    const __m128 limited = _mm_min_ps(_mm_max_ps(code, lowest), highest);
    const __m128 value = _mm_mul_ps(_mm_add_ps(limited, _mm_set1_ps(32768.0F)), _mm_set1_ps(kValueOfCode));
    const __m128 colors = _mm_and_ps(value, _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0)));
    return _mm_or_ps(colors, _mm_setr_ps(0.0F, 0.0F, 0.0F, 1.0F));
}

VITRELUX_INLINE __m128i LimitsOf(const SharpRun &run, const CodePlane (&planes)[4], const std::int32_t *offset)
{
    const int middle = run.ToMiddle();
    return _mm_setr_epi32(planes[0].limits[offset[0] + middle], planes[1].limits[offset[1] + middle],
                          planes[2].limits[offset[2] + middle], 0);
}

VITRELUX_INLINE int PairAt(const std::int16_t *weights, int pair)
{
    int value;
    std::memcpy(&value, weights + 2 * pair, sizeof value);
    return value;
}

struct CodesBySse2 {
    using Shorts = std::int16_t __attribute__((vector_size(16)));

    VITRELUX_INLINE static __m128i RowsOf(const std::int32_t *pairs, int stride, const std::int16_t *weights)
    {
        const auto load = [&](int row) VITRELUX_INLINED {
            return _mm_loadu_si128(reinterpret_cast<const __m128i *>(pairs + row * stride));
        };
        const __m128i first = _mm_madd_epi16(load(0), _mm_set1_epi32(PairAt(weights, 0)));
        const __m128i second = _mm_madd_epi16(load(2), _mm_set1_epi32(PairAt(weights, 1)));
        const __m128i third = _mm_madd_epi16(load(4), _mm_set1_epi32(PairAt(weights, 2)));
        return _mm_add_epi32(_mm_add_epi32(first, second), third);
    }

    VITRELUX_INLINE static __m128 Products(const std::int32_t *pairs, int stride, const std::int16_t *weights,
                                           const float *shares)
    {
        const __m128 left = _mm_mul_ps(_mm_cvtepi32_ps(RowsOf(pairs, stride, weights)), _mm_load_ps(shares));
        const __m128 right = _mm_mul_ps(_mm_cvtepi32_ps(RowsOf(pairs + 4, stride, weights)), _mm_load_ps(shares + 4));
        return _mm_add_ps(left, right);
    }

    template <int kChannels>
    static void Sample(const SharpRun &run, const CodePlane (&planes)[4], const SharpKernel &kernel, Float4 *samples)
    {
        for (int i = 0; i < run.count; ++i) {
            __m128 products[3];
            std::int32_t offset[3];
            for (int channel = 0; channel < 3; ++channel) {
                const int at = kChannels > 1 ? channel : 0;
                offset[channel] = run.offset[at][i];
                products[channel] = Products(planes[channel].pairs.data() + offset[channel], run.stride,
                                             kernel.Weights(run.phaseY[at][i]), kernel.Shares(run.phaseX[at][i]));
            }
            const __m128 sums = SumsOf(products[0], products[1], products[2], _mm_setzero_ps());
            const __m128 value = ValuesOf(sums, LimitsOf(run, planes, offset));
            std::memcpy(&samples[i], &value, sizeof value);
        }
    }
};

struct CodesByAvx2 {
    using Shorts = std::int16_t __attribute__((vector_size(32)));

    [[gnu::target("avx2"), gnu::always_inline]] static inline __m128
    Products(const std::int32_t *pairs, int stride, const std::int16_t *weights, const float *shares)
    {
        const auto *rows = reinterpret_cast<const __m256i *>(pairs);
        const auto *below = reinterpret_cast<const __m256i *>(pairs + 2 * stride);
        const auto *bottom = reinterpret_cast<const __m256i *>(pairs + 4 * stride);
        const __m256i first = _mm256_madd_epi16(_mm256_loadu_si256(rows), _mm256_set1_epi32(PairAt(weights, 0)));
        const __m256i second = _mm256_madd_epi16(_mm256_loadu_si256(below), _mm256_set1_epi32(PairAt(weights, 1)));
        const __m256i third = _mm256_madd_epi16(_mm256_loadu_si256(bottom), _mm256_set1_epi32(PairAt(weights, 2)));
        const __m256 sums = _mm256_cvtepi32_ps(_mm256_add_epi32(_mm256_add_epi32(first, second), third));
        const __m256 products = _mm256_mul_ps(sums, _mm256_load_ps(shares));
        return _mm_add_ps(_mm256_castps256_ps128(products), _mm256_extractf128_ps(products, 1));
    }

    template <int kChannels>
    [[gnu::target("avx2")]] static void Sample(const SharpRun &run, const CodePlane (&planes)[4],
                                               const SharpKernel &kernel, Float4 *samples)
    {
        for (int i = 0; i < run.count; ++i) {
            __m128 products[3];
            std::int32_t offset[3];
            for (int channel = 0; channel < 3; ++channel) {
                const int at = kChannels > 1 ? channel : 0;
                offset[channel] = run.offset[at][i];
                products[channel] = Products(planes[channel].pairs.data() + offset[channel], run.stride,
                                             kernel.Weights(run.phaseY[at][i]), kernel.Shares(run.phaseX[at][i]));
            }
            const __m128 sums = SumsOf(products[0], products[1], products[2], _mm_setzero_ps());
            const __m128 value = ValuesOf(sums, LimitsOf(run, planes, offset));
            std::memcpy(&samples[i], &value, sizeof value);
        }
    }
};

#endif

/// For processors without pairs of 16 bits, and the definition.
struct CodesPlainly {
    using Shorts = std::int16_t __attribute__((vector_size(16)));

    VITRELUX_INLINE static float Sum(const std::int32_t *pairs, int stride, const std::int16_t *weights,
                                     const float *shares)
    {
        float products[8];
        for (int column = 0; column < 8; ++column) {
            std::int32_t sum = 0;
            for (int row = 0; row < SharpKernel::kTaps; row += 2) {
                const std::int32_t pair = pairs[row * stride + column];
                sum += static_cast<std::int16_t>(pair) * weights[row] + (pair >> 16) * weights[row + 1];
            }
            products[column] = static_cast<float>(sum) * shares[column];
        }
        for (int half = 4; half > 0; half /= 2)
            for (int i = 0; i < half; ++i)
                products[i] += products[i + half];
        return products[0];
    }

    template <int kChannels>
    static void Sample(const SharpRun &run, const CodePlane (&planes)[4], const SharpKernel &kernel, Float4 *samples)
    {
        for (int i = 0; i < run.count; ++i) {
            for (int channel = 0; channel < 3; ++channel) {
                const int at = kChannels > 1 ? channel : 0;
                const std::int32_t offset = run.offset[at][i];
                const float sum = Sum(planes[channel].pairs.data() + offset, run.stride,
                                      kernel.Weights(run.phaseY[at][i]), kernel.Shares(run.phaseX[at][i]));
                const std::int32_t limits = planes[channel].limits[offset + run.ToMiddle()];
                const auto lowest = static_cast<float>(static_cast<std::int16_t>(limits) * 2);
                const auto highest = static_cast<float>((limits >> 16) * 2 + 1);
                samples[i][channel] = (Least(Greatest(sum * kCodeScale, lowest), highest) + 32768.0F) * kValueOfCode;
            }
            samples[i][3] = 1.0F;
        }
    }
};

/// One channel of a pixel out of a float plane, within its limits. @p Floats are eight.
template <typename Floats>
VITRELUX_INLINE float SampleFloats(const FloatPlane &plane, const SharpRun &run, int place, int i,
                                   const SharpKernel &kernel)
{
    const std::int32_t offset = run.offset[place][i];
    const float *const values = plane.values.data() + offset;
    const float *const shares = kernel.Shares(run.phaseY[place][i]);
    Floats rows = LoadVector<Floats>(values) * shares[0];
    for (int row = 1; row < SharpKernel::kTaps; ++row)
        rows += LoadVector<Floats>(values + row * run.stride) * shares[row];
    const Floats products = rows * LoadVector<Floats>(kernel.Shares(run.phaseX[place][i]));
    Float4 halves[2];
    std::memcpy(halves, &products, sizeof halves);
    const Float4 sums = halves[0] + halves[1];
    const float sum = (sums[0] + sums[2]) + (sums[1] + sums[3]);
    const size_t middle = static_cast<size_t>(offset + run.ToMiddle());
    return Least(Greatest(sum, plane.lowest[middle]), plane.highest[middle]);
}

} // namespace
