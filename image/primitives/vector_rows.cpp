#include "vector_rows.h"

#include "vectors.h"

#if VITRELUX_VECTORS
#include <tmmintrin.h>
#endif

namespace primitives {

#if VITRELUX_VECTORS

namespace {

__m128i Load16(const void *from)
{
    return _mm_loadu_si128(static_cast<const __m128i *>(from));
}

void Store16(void *to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i *>(to), value);
}

/// Function object that computes Saturate of (v - low) * factor for four floats, as 32-bit integers.
struct Rounding {
    __m128 low;
    __m128 factor;
    __m128 limit;

    __m128i operator()(const Ipp32f *src) const
    {
        const __m128 scaled = _mm_mul_ps(_mm_sub_ps(_mm_loadu_ps(src), low), factor);
        // The maximum is its second operand if the first is NaN.
        const __m128 inRange = _mm_min_ps(_mm_max_ps(scaled, _mm_setzero_ps()), limit);
        return _mm_cvttps_epi32(_mm_add_ps(inRange, _mm_set1_ps(0.5f)));
    }
};

using Weights = plain::GrayWeights<Ipp8u>;

/// Computes four gray values, in 32 bits each, from the first 12 of 16 readable bytes.
__attribute__((target("ssse3"))) inline __m128i FourGrays(const Ipp8u *src)
{
    const __m128i redGreen = _mm_setr_epi8(0, -1, 1, -1, 3, -1, 4, -1, 6, -1, 7, -1, 9, -1, 10, -1);
    const __m128i blue = _mm_setr_epi8(2, -1, -1, -1, 5, -1, -1, -1, 8, -1, -1, -1, 11, -1, -1, -1);
    const __m128i redGreenWeights = _mm_set1_epi32(Weights::kRed | Weights::kGreen << 16);
    // Each blue is paired with a 1, whose weight is the half for rounding.
    const __m128i ones = _mm_set1_epi32(1 << 16);
    const __m128i blueWeights = _mm_set1_epi32(Weights::kBlue | 1 << (Weights::kShift - 1 + 16));

    const __m128i bytes = Load16(src);
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(_mm_shuffle_epi8(bytes, redGreen), redGreenWeights),
                                      _mm_madd_epi16(_mm_or_si128(_mm_shuffle_epi8(bytes, blue), ones), blueWeights));
    return _mm_srli_epi32(sum, Weights::kShift);
}

/// Converts pixels in groups of 16 as long as all reads stay within the row. Returns the number converted.
__attribute__((target("ssse3"))) std::int64_t Rgb8ToGrayInVectors(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels)
{
    std::int64_t x = 0;
    for (; x + 18 <= pixels; x += 16) { // the last load of a group reaches 4 bytes into the next
        const Ipp8u *from = src + 3 * x;
        const __m128i first = _mm_packs_epi32(FourGrays(from), FourGrays(from + 12));
        const __m128i second = _mm_packs_epi32(FourGrays(from + 24), FourGrays(from + 36));
        Store16(dst + x, _mm_packus_epi16(first, second));
    }
    return x;
}

/// Scales a pixel of 32-bit integers, the fourth of which is 0, and stores it with alpha 1.
void StoreOpaque(Ipp32f *dst, __m128i pixel, __m128 factor)
{
    const __m128 alpha = _mm_setr_ps(0.0f, 0.0f, 0.0f, 1.0f);
    _mm_storeu_ps(dst, _mm_or_ps(_mm_mul_ps(_mm_cvtepi32_ps(pixel), factor), alpha));
}

/// Converts pixels in groups of 4 as long as all reads stay within the row. Returns the number converted.
__attribute__((target("ssse3"))) std::int64_t OpaqueFloatsInVectors(const Ipp8u *src, Ipp32f *dst, std::int64_t pixels)
{
    const __m128 factor = _mm_set1_ps(1.0f / 255.0f);
    const __m128i toPixel[] = {_mm_setr_epi8(0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, -1, -1, -1, -1),
                               _mm_setr_epi8(3, -1, -1, -1, 4, -1, -1, -1, 5, -1, -1, -1, -1, -1, -1, -1),
                               _mm_setr_epi8(6, -1, -1, -1, 7, -1, -1, -1, 8, -1, -1, -1, -1, -1, -1, -1),
                               _mm_setr_epi8(9, -1, -1, -1, 10, -1, -1, -1, 11, -1, -1, -1, -1, -1, -1, -1)};
    std::int64_t x = 0;
    for (; x + 6 <= pixels; x += 4) { // a load reaches 4 bytes into the next group
        const __m128i bytes = Load16(src + 3 * x);
        for (int i = 0; i < 4; ++i)
            StoreOpaque(dst + 4 * (x + i), _mm_shuffle_epi8(bytes, toPixel[i]), factor);
    }
    return x;
}

} // namespace

void OpaqueFloats(const Ipp8u *src, Ipp32f *dst, std::int64_t pixels)
{
    static const bool s_hasShuffle = __builtin_cpu_supports("ssse3");
    const std::int64_t done = s_hasShuffle ? OpaqueFloatsInVectors(src, dst, pixels) : 0;
    plain::OpaqueFloats(src + 3 * done, dst + 4 * done, pixels - done);
}

void OpaqueFloats(const Ipp16u *src, Ipp32f *dst, std::int64_t pixels)
{
    const __m128 factor = _mm_set1_ps(1.0f / 65535.0f);
    const __m128i colors = _mm_setr_epi32(-1, -1, -1, 0);
    std::int64_t x = 0;
    for (; x + 2 <= pixels; ++x) { // each load also reads the first channel of the next pixel
        const __m128i values = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(src + 3 * x));
        StoreOpaque(dst + 4 * x, _mm_and_si128(_mm_unpacklo_epi16(values, _mm_setzero_si128()), colors), factor);
    }
    plain::OpaqueFloats(src + 3 * x, dst + 4 * x, pixels - x);
}

void FloatToInteger(const Ipp32f *src, Ipp8u *dst, std::int64_t count, float low, float factor)
{
    const Rounding round = {_mm_set1_ps(low), _mm_set1_ps(factor), _mm_set1_ps(255.0f)};
    std::int64_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m128i first = _mm_packs_epi32(round(src + i), round(src + i + 4));
        const __m128i second = _mm_packs_epi32(round(src + i + 8), round(src + i + 12));
        Store16(dst + i, _mm_packus_epi16(first, second));
    }
    plain::FloatToInteger(src + i, dst + i, count - i, low, factor);
}

void FloatToInteger(const Ipp32f *src, Ipp16u *dst, std::int64_t count, float low, float factor)
{
    const Rounding round = {_mm_set1_ps(low), _mm_set1_ps(factor), _mm_set1_ps(65535.0f)};
    // SSE2 packs only to signed 16-bit numbers: shift the range down first, and flip the sign bit afterward.
    const __m128i half = _mm_set1_epi32(32768), signBit = _mm_set1_epi16(-32768);
    std::int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m128i packed =
            _mm_packs_epi32(_mm_sub_epi32(round(src + i), half), _mm_sub_epi32(round(src + i + 4), half));
        Store16(dst + i, _mm_xor_si128(packed, signBit));
    }
    plain::FloatToInteger(src + i, dst + i, count - i, low, factor);
}

void Rgb8ToGray(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels)
{
    static const bool s_hasShuffle = __builtin_cpu_supports("ssse3");
    const std::int64_t done = s_hasShuffle ? Rgb8ToGrayInVectors(src, dst, pixels) : 0;
    plain::RgbToGray<Ipp8u, 3>(src + 3 * done, dst + done, pixels - done);
}

void CopyOpaqueFloat3(const Ipp32f *src, Ipp32f *dst, std::int64_t pixels, Ipp32f alpha)
{
    const __m128 colors = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    const __m128 alphas = _mm_setr_ps(0.0f, 0.0f, 0.0f, alpha);
    std::int64_t x = 0;
    for (; x + 2 <= pixels; ++x) // each load also reads the first channel of the next pixel
        _mm_storeu_ps(dst + 4 * x, _mm_or_ps(_mm_and_ps(_mm_loadu_ps(src + 3 * x), colors), alphas));
    plain::CopyOpaque<Ipp32f, 3>(src + 3 * x, dst + 4 * x, pixels - x, alpha);
}

#else // no vector code: the plain functions

void OpaqueFloats(const Ipp8u *src, Ipp32f *dst, std::int64_t pixels)
{
    plain::OpaqueFloats(src, dst, pixels);
}

void OpaqueFloats(const Ipp16u *src, Ipp32f *dst, std::int64_t pixels)
{
    plain::OpaqueFloats(src, dst, pixels);
}

void FloatToInteger(const Ipp32f *src, Ipp8u *dst, std::int64_t count, float low, float factor)
{
    plain::FloatToInteger(src, dst, count, low, factor);
}

void FloatToInteger(const Ipp32f *src, Ipp16u *dst, std::int64_t count, float low, float factor)
{
    plain::FloatToInteger(src, dst, count, low, factor);
}

void Rgb8ToGray(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels)
{
    plain::RgbToGray<Ipp8u, 3>(src, dst, pixels);
}

void CopyOpaqueFloat3(const Ipp32f *src, Ipp32f *dst, std::int64_t pixels, Ipp32f alpha)
{
    plain::CopyOpaque<Ipp32f, 3>(src, dst, pixels, alpha);
}

#endif

} // namespace primitives
