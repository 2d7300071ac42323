// Sharp sampling of a run of pixels from the planes of a box, one per channel: the innermost loop, with one version per
// instruction set. SharpTogether_p.h has the versions for one plane with all colors.
#pragma once

#include "SharpBox_p.h"
#include "SharpKernel.h"

namespace {

/// Positions of a run's samples in the planes: shared by the channels, or one per channel.
struct SharpRun {
    int count, stride;
    const std::int32_t *offset[3];             // of the first of 6 x 6 values
    const std::int32_t *phaseX[3], *phaseY[3]; // times SharpKernel::kPadded

    /// Returns the distance from `offset` to the first of the middle four values, where the limits are stored. Pixels
    /// have @p step values each.
    int ToMiddle(int step = 1) const { return SharpKernel::kBefore * (stride + step); }
};

/// Pointers to the first values of red, green and blue, in three planes or together in the first one. Passed by value,
/// like the run, so that the compiler knows that stores don't modify them.
struct CodePlanes {
    CodePlanes(const CodePlane (&planes)[4], int step)
    {
        for (int color = 0; color < 3; ++color) {
            const CodePlane &plane = planes[step == kTogether ? 0 : color];
            const int first = step == kTogether ? color : 0;
            pairs[color] = plane.pairs.data() + first;
            limits[color] = plane.limits.data() + first;
        }
    }

    const std::int32_t *pairs[3], *limits[3];
};

// All versions add in this order, so results are bit-identical: pairs of rows from the top, as integers; then the
// products of columns 0 + 4 and 1 + 5; then sums 0 + 2 and 1 + 3; then these two.

constexpr float kCodeScale = 1.0F / SharpKernel::kOne; // for sums of rows; columns use Shares()
constexpr float kValueOfCode = 1.0F / 65535.0F;
constexpr float kQuarterOfWhite = 32767.0F / kCodeScale / 4.0F; // four such lanes add up to an opaque fourth channel
constexpr int kAnyCode = 0x3fffc000;                            // a pair of limits that admits all codes

#if VITRELUX_FITTED_VECTORS

/// Returns the sum of the lanes of each of four vectors.
VITRELUX_INLINE __m128 SumsOf(__m128 a, __m128 b, __m128 c, __m128 d)
{
    const __m128 ab = _mm_add_ps(_mm_unpacklo_ps(a, b), _mm_unpackhi_ps(a, b));
    const __m128 cd = _mm_add_ps(_mm_unpacklo_ps(c, d), _mm_unpackhi_ps(c, d));
    return _mm_add_ps(_mm_movelh_ps(ab, cd), _mm_movehl_ps(cd, ab));
}

/// Converts the channels' sums to values within their limits.
VITRELUX_INLINE __m128 ValuesOf(__m128 sums, __m128i limits)
{
    const __m128 lowest = _mm_cvtepi32_ps(_mm_srai_epi32(_mm_slli_epi32(limits, 16), 15));
    const __m128 highest = _mm_cvtepi32_ps(_mm_or_si128(_mm_srai_epi32(limits, 15), _mm_set1_epi32(1)));
    const __m128 code = _mm_mul_ps(sums, _mm_set1_ps(kCodeScale));
    const __m128 limited = _mm_min_ps(_mm_max_ps(code, lowest), highest);
    return _mm_mul_ps(_mm_add_ps(limited, _mm_set1_ps(32768.0F)), _mm_set1_ps(kValueOfCode));
}

VITRELUX_INLINE __m128i LimitsOf(const CodePlanes &planes, int middle, const std::int32_t *offset)
{
    return _mm_setr_epi32(planes.limits[0][offset[0] + middle], planes.limits[1][offset[1] + middle],
                          planes.limits[2][offset[2] + middle], kAnyCode);
}

VITRELUX_INLINE int PairAt(const std::int16_t *weights, int pair)
{
    int value;
    std::memcpy(&value, weights + 2 * pair, sizeof value);
    return value;
}

struct CodesBySse2 {
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

    static void Sample(SharpRun run, CodePlanes planes, const SharpKernel &kernel, Float4 *samples)
    {
        const int middle = run.ToMiddle();
        for (int i = 0; i < run.count; ++i) {
            __m128 products[3];
            std::int32_t offset[3];
            for (int channel = 0; channel < 3; ++channel) {
                offset[channel] = run.offset[channel][i];
                products[channel] =
                    Products(planes.pairs[channel] + offset[channel], run.stride,
                             kernel.Weights() + run.phaseY[channel][i], kernel.Shares() + run.phaseX[channel][i]);
            }
            const __m128 sums = SumsOf(products[0], products[1], products[2], _mm_set1_ps(kQuarterOfWhite));
            const __m128 value = ValuesOf(sums, LimitsOf(planes, middle, offset));
            std::memcpy(&samples[i], &value, sizeof value);
        }
    }
};

struct CodesByAvx2 {
    [[gnu::target("avx2"), gnu::always_inline]] static inline __m256
    Products(const std::int32_t *pairs, int stride, const std::int16_t *weights, const float *shares)
    {
        const auto *rows = reinterpret_cast<const __m256i *>(pairs);
        const auto *below = reinterpret_cast<const __m256i *>(pairs + 2 * stride);
        const auto *bottom = reinterpret_cast<const __m256i *>(pairs + 4 * stride);
        const __m256i first = _mm256_madd_epi16(_mm256_loadu_si256(rows), _mm256_set1_epi32(PairAt(weights, 0)));
        const __m256i second = _mm256_madd_epi16(_mm256_loadu_si256(below), _mm256_set1_epi32(PairAt(weights, 1)));
        const __m256i third = _mm256_madd_epi16(_mm256_loadu_si256(bottom), _mm256_set1_epi32(PairAt(weights, 2)));
        const __m256 sums = _mm256_cvtepi32_ps(_mm256_add_epi32(_mm256_add_epi32(first, second), third));
        return _mm256_mul_ps(sums, _mm256_load_ps(shares));
    }

    /// Two-pixel version of the SumsOf above.
    [[gnu::target("avx2"), gnu::always_inline]] static inline __m256 SumsOf(__m256 a, __m256 b, __m256 c, __m256 d)
    {
        const __m256 ab = _mm256_add_ps(_mm256_unpacklo_ps(a, b), _mm256_unpackhi_ps(a, b));
        const __m256 cd = _mm256_add_ps(_mm256_unpacklo_ps(c, d), _mm256_unpackhi_ps(c, d));
        return _mm256_add_ps(_mm256_shuffle_ps(ab, cd, 0x44), _mm256_shuffle_ps(ab, cd, 0xee));
    }

    /// Two-pixel version of the ValuesOf above.
    [[gnu::target("avx2"), gnu::always_inline]] static inline __m256 ValuesOf(__m256 sums, __m256i limits)
    {
        const __m256 lowest = _mm256_cvtepi32_ps(_mm256_srai_epi32(_mm256_slli_epi32(limits, 16), 15));
        const __m256 highest = _mm256_cvtepi32_ps(_mm256_or_si256(_mm256_srai_epi32(limits, 15), _mm256_set1_epi32(1)));
        const __m256 code = _mm256_mul_ps(sums, _mm256_set1_ps(kCodeScale));
        const __m256 limited = _mm256_min_ps(_mm256_max_ps(code, lowest), highest);
        return _mm256_mul_ps(_mm256_add_ps(limited, _mm256_set1_ps(32768.0F)), _mm256_set1_ps(kValueOfCode));
    }

    /// Samples two pixels at once. If @p run.count is odd, the last pixel is written twice; @p samples must have room
    /// for it.
    [[gnu::target("avx2")]] static void Sample(SharpRun run, CodePlanes planes, const SharpKernel &kernel,
                                               Float4 *samples)
    {
        const int middle = run.ToMiddle();
        for (int i = 0; i < run.count; i += 2) {
            __m256 products[3]; // of both pixels; columns 4 to 7 are added to columns 0 to 3
            std::int32_t offset[2][3];
            for (int channel = 0; channel < 3; ++channel) {
                __m256 whole[2];
                for (int pixel = 0; pixel < 2; ++pixel) {
                    const int j = pixel == 0 || i + 1 == run.count ? i : i + 1;
                    offset[pixel][channel] = run.offset[channel][j];
                    whole[pixel] =
                        Products(planes.pairs[channel] + offset[pixel][channel], run.stride,
                                 kernel.Weights() + run.phaseY[channel][j], kernel.Shares() + run.phaseX[channel][j]);
                }
                products[channel] = _mm256_add_ps(_mm256_permute2f128_ps(whole[0], whole[1], 0x20),
                                                  _mm256_permute2f128_ps(whole[0], whole[1], 0x31));
            }
            const __m256 sums = SumsOf(products[0], products[1], products[2], _mm256_set1_ps(kQuarterOfWhite));
            const __m256i limits =
                _mm256_set_m128i(LimitsOf(planes, middle, offset[1]), LimitsOf(planes, middle, offset[0]));
            _mm256_storeu_ps(reinterpret_cast<float *>(samples + i), ValuesOf(sums, limits));
        }
    }
};

#endif

/// Plain version, which defines the result; used in builds without vector code. Pixels are @p kStep values apart.
template <int kStep> struct CodesPlainly {
    VITRELUX_INLINE static float Sum(const std::int32_t *pairs, int stride, const std::int16_t *weights,
                                     const float *shares)
    {
        float products[SharpKernel::kPadded] = {};
        for (int column = 0; column < SharpKernel::kTaps; ++column) {
            std::int32_t sum = 0;
            for (int row = 0; row < SharpKernel::kTaps; row += 2) {
                const std::int32_t pair = pairs[row * stride + column * kStep];
                sum += static_cast<std::int16_t>(pair) * weights[row] + (pair >> 16) * weights[row + 1];
            }
            products[column] = static_cast<float>(sum) * shares[column];
        }
        for (int half = 4; half > 0; half /= 2)
            for (int i = 0; i < half; ++i)
                products[i] += products[i + half];
        return products[0];
    }

    static void Sample(SharpRun run, CodePlanes planes, const SharpKernel &kernel, Float4 *samples)
    {
        for (int i = 0; i < run.count; ++i) {
            for (int channel = 0; channel < 3; ++channel) {
                const std::int32_t offset = run.offset[channel][i];
                const float sum =
                    Sum(planes.pairs[channel] + offset, run.stride, kernel.Weights() + run.phaseY[channel][i],
                        kernel.Shares() + run.phaseX[channel][i]);
                const std::int32_t limits = planes.limits[channel][offset + run.ToMiddle(kStep)];
                const auto lowest = static_cast<float>(static_cast<std::int16_t>(limits) * 2);
                const auto highest = static_cast<float>((limits >> 16) * 2 + 1);
                samples[i][channel] = (Least(Greatest(sum * kCodeScale, lowest), highest) + 32768.0F) * kValueOfCode;
            }
            samples[i][3] = 1.0F;
        }
    }
};

/// Samples one channel of a pixel from a float plane, within its limits.
template <typename Floats>
VITRELUX_INLINE float SampleFloats(const FloatPlane &plane, const SharpRun &run, int place, int i,
                                   const SharpKernel &kernel)
{
    constexpr int kLanes = sizeof(Floats) / sizeof(float);
    const std::int32_t offset = run.offset[place][i];
    const float *const shareY = kernel.Shares() + run.phaseY[place][i],
                       *const shareX = kernel.Shares() + run.phaseX[place][i];
    float products[SharpKernel::kPadded];
    for (int column = 0; column < SharpKernel::kPadded; column += kLanes) {
        const float *values = plane.values.data() + offset + column;
        Floats rows = LoadVector<Floats>(values) * shareY[0];
        for (int row = 1; row < SharpKernel::kTaps; ++row)
            rows += LoadVector<Floats>(values + row * run.stride) * shareY[row];
        rows *= LoadVector<Floats>(shareX + column);
        std::memcpy(products + column, &rows, sizeof rows);
    }
    const Float4 sums = LoadVector<Float4>(products) + LoadVector<Float4>(products + 4);
    const float sum = (sums[0] + sums[2]) + (sums[1] + sums[3]);
    const size_t middle = static_cast<size_t>(offset + run.ToMiddle());
    return Least(Greatest(sum, plane.lowest[middle]), plane.highest[middle]);
}

} // namespace
