#include "stretch.h"

#include <algorithm>

namespace primitives {

ColorRange::ColorRange(int channels) : m_channels(channels)
{
    std::fill_n(m_low, kLanes, Ipp8u(255));
    std::fill_n(m_high, kLanes, Ipp8u(0));
}

void ColorRange::Add(const Ipp8u *pixels, std::int64_t count)
{
    const auto add = [&](const Ipp8u *from, int lane) {
        m_low[lane] = std::min(m_low[lane], from[lane]);
        m_high[lane] = std::max(m_high[lane], from[lane]);
    };
    const std::int64_t samples = count * m_channels;
    std::int64_t i = 0;
    for (; i + kLanes <= samples; i += kLanes) {
        for (int lane = 0; lane < kLanes; ++lane)
            add(pixels + i, lane);
    }
    for (int lane = 0; lane < samples - i; ++lane)
        add(pixels + i, lane);
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

Stretch::Stretch(Ipp8u low, Ipp8u high) : m_low(low), m_range(static_cast<Ipp8u>(high > low ? high - low : 0))
{
    for (int v = 0; v < 256; ++v) // flat: 0 / 0 is not a number, which Truncate turns into 0
        m_table[v] = Truncate<Ipp8u>(v <= low ? 0.0f : static_cast<float>(v - low) / m_range * 255.0f);
    if (m_range > 0)
        FindFactor();
}

bool Stretch::GivesTable() const
{
    for (int v = 0; v < 256; ++v) {
        if (Multiplied(static_cast<Ipp8u>(v)) != m_table[v])
            return false;
    }
    return true;
}

/// The factor has as many bits as fit; a search close to its ideal value, with all ways to round, finds one for all but
/// two ranges.
void Stretch::FindFactor()
{
    while (m_range >> (m_shift + 1))
        ++m_shift;
    const unsigned ideal = (255u << (8 + m_shift)) / m_range;
    for (unsigned factor = ideal - 2; factor <= ideal + 3; ++factor) {
        for (m_rounding = 0; m_rounding < 32 && factor < 65536; ++m_rounding) {
            m_factor = static_cast<Ipp16u>(factor);
            if (GivesTable())
                return;
        }
    }
    m_factor = 0;
}

void Stretch::RunPlain(const Ipp8u *src, Ipp8u *dst, std::int64_t count) const
{
    for (std::int64_t i = 0; i < count; ++i)
        dst[i] = m_table[src[i]];
}

void Stretch::Run(const Ipp8u *src, Ipp8u *dst, std::int64_t count) const
{
    if (!IsByMultiplication())
        return RunPlain(src, dst, count);
    const Stretch my = *this; // in registers: the target might be this object, for all the compiler knows
    ForSamples(count, [=](std::int64_t i) { dst[i] = my.Multiplied(src[i]); });
}

} // namespace primitives
