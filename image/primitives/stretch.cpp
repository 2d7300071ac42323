#include "stretch.h"

#include "vectors.h"

#include <algorithm>

#if VITRELUX_VECTORS
#include <emmintrin.h>
#endif

namespace primitives {

#if VITRELUX_VECTORS
namespace {

__m128i Load(const Ipp8u *from)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
}

void Store(Ipp8u *to, __m128i value)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), value);
}

} // namespace
#endif

ColorRange::ColorRange(int channels) : m_channels(channels)
{
    std::fill_n(m_low, kLanes, Ipp8u(255));
    std::fill_n(m_high, kLanes, Ipp8u(0));
}

#if VITRELUX_VECTORS
std::int64_t ColorRange::AddVectors(const Ipp8u *pixels, std::int64_t samples)
{
    constexpr int kVectors = kLanes / 16;
    __m128i low[kVectors], high[kVectors];
    for (int v = 0; v < kVectors; ++v) {
        low[v] = Load(m_low + 16 * v);
        high[v] = Load(m_high + 16 * v);
    }
    std::int64_t i = 0;
    for (; i + kLanes <= samples; i += kLanes) {
        for (int v = 0; v < kVectors; ++v) {
            low[v] = _mm_min_epu8(low[v], Load(pixels + i + 16 * v));
            high[v] = _mm_max_epu8(high[v], Load(pixels + i + 16 * v));
        }
    }
    for (int v = 0; v < kVectors; ++v) {
        Store(m_low + 16 * v, low[v]);
        Store(m_high + 16 * v, high[v]);
    }
    return i;
}
#else
std::int64_t ColorRange::AddVectors(const Ipp8u *, std::int64_t)
{
    return 0;
}
#endif

void ColorRange::Add(const Ipp8u *pixels, std::int64_t count)
{
    const std::int64_t samples = count * m_channels;
    for (std::int64_t i = AddVectors(pixels, samples); i < samples; ++i) {
        const auto lane = static_cast<int>(i % kLanes);
        m_low[lane] = std::min(m_low[lane], pixels[i]);
        m_high[lane] = std::max(m_high[lane], pixels[i]);
    }
}

Ipp8u ColorRange::Low() const
{
    Ipp8u low = 255;
    for (int lane = 0; lane < kLanes; ++lane)
        low = IsColor(lane) ? std::min(low, m_low[lane]) : low;
    return low;
}

Ipp8u ColorRange::High() const
{
    Ipp8u high = 0;
    for (int lane = 0; lane < kLanes; ++lane)
        high = IsColor(lane) ? std::max(high, m_high[lane]) : high;
    return high;
}

void MapColors(const Ipp8u *table, int channels, const Ipp8u *src, Ipp8u *dst, std::int64_t pixels)
{
    for (const Ipp8u *end = src + pixels * channels; src != end; src += channels, dst += channels) {
        for (int c = 0; c < channels; ++c)
            dst[c] = c < 3 ? table[src[c]] : src[c];
    }
}

Stretch::Stretch(Ipp8u low, Ipp8u high, int channels)
    : m_low(low), m_range(static_cast<Ipp8u>(high > low ? high - low : 0)), m_channels(channels)
{
    for (int v = 0; v < 256; ++v) // a flat image holds only `low`, which gives 0
        m_table[v] = Truncate<Ipp8u>(v <= low ? 0.0f : static_cast<float>(v - low) / m_range * 255.0f);
    if (m_range > 0)
        FindFactor();
}

Ipp8u Stretch::Multiplied(Ipp8u value) const
{
    const unsigned limited = std::min<unsigned>(value > m_low ? value - m_low : 0, m_range);
    return static_cast<Ipp8u>((((limited << 8) * m_factor >> 16) + m_rounding) >> m_shift);
}

bool Stretch::GivesTable() const
{
    for (int v = 0; v < 256; ++v) {
        if (Multiplied(static_cast<Ipp8u>(v)) != m_table[v])
            return false;
    }
    return true;
}

/// Uses a factor with as many bits as fit. A search near the ideal value, with every rounding, finds a factor for all
/// but two ranges.
void Stretch::FindFactor()
{
    while (m_range >> (m_shift + 1))
        ++m_shift;
    const unsigned ideal = (255u << (8 + m_shift)) / m_range;
    for (unsigned factor = ideal - 2; factor <= ideal + 3 && factor < 65536; ++factor) {
        for (m_rounding = 0; m_rounding < 32; ++m_rounding) {
            m_factor = factor;
            if (GivesTable())
                return;
        }
    }
    m_factor = 0;
}

#if VITRELUX_VECTORS
std::int64_t Stretch::RunVectors(const Ipp8u *src, Ipp8u *dst, std::int64_t samples) const
{
    const __m128i low = _mm_set1_epi8(static_cast<char>(m_low)), range = _mm_set1_epi8(static_cast<char>(m_range));
    const __m128i factor = _mm_set1_epi16(static_cast<short>(m_factor)), zero = _mm_setzero_si128();
    const __m128i rounding = _mm_set1_epi16(static_cast<short>(m_rounding)), shift = _mm_cvtsi32_si128(m_shift);
    const __m128i alpha = m_channels == 4 ? _mm_set1_epi32(static_cast<int>(0xFF000000u)) : zero;
    const auto multiplied = [=](__m128i shiftedBy8) {
        return _mm_srl_epi16(_mm_add_epi16(_mm_mulhi_epu16(shiftedBy8, factor), rounding), shift);
    };
    std::int64_t i = 0;
    for (; i + 16 <= samples; i += 16) {
        const __m128i values = Load(src + i);
        const __m128i limited = _mm_min_epu8(_mm_subs_epu8(values, low), range);
        // Interleaving samples with zero low bytes multiplies them by 256.
        const __m128i stretched = _mm_packus_epi16(multiplied(_mm_unpacklo_epi8(zero, limited)),
                                                   multiplied(_mm_unpackhi_epi8(zero, limited)));
        Store(dst + i, _mm_or_si128(_mm_andnot_si128(alpha, stretched), _mm_and_si128(alpha, values)));
    }
    return i;
}
#else
std::int64_t Stretch::RunVectors(const Ipp8u *, Ipp8u *, std::int64_t) const
{
    return 0;
}
#endif

void Stretch::Run(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels) const
{
    // If the last vector ends within a three-channel pixel, the plain loop completes the pixel.
    const std::int64_t samples = pixels * m_channels, done = m_factor ? RunVectors(src, dst, samples) : 0;
    for (std::int64_t i = done; i < samples; ++i)
        dst[i] = m_channels == 4 && i % 4 == 3 ? src[i] : m_table[src[i]];
}

} // namespace primitives
