// Stretching the range of 8-bit samples.
#pragma once

#include "types.h"

namespace primitives {

/// Least and greatest sample of pixels of 3 or 4 channels, of which the first three count.
class ColorRange {
public:
    explicit ColorRange(int channels);

    void Add(const Ipp8u *pixels, std::int64_t count);
    Ipp8u Low() const;
    Ipp8u High() const;

private:
    static constexpr int kLanes = 48; // a whole number of pixels of either kind, and of vectors

    bool IsColor(int lane) const { return lane % m_channels < 3; }

    int m_channels;
    Ipp8u m_low[kLanes], m_high[kLanes]; // of the samples at these places, which keeps alpha apart
};

/// Sends each of a row's samples v to 255 (v - low) / (high - low), truncated and limited to 0 to 255; to 0 where low
/// is high. The target may be the source.
class Stretch {
public:
    Stretch(Ipp8u low, Ipp8u high);

    /// By a table of all values: the definition.
    void RunPlain(const Ipp8u *src, Ipp8u *dst, std::int64_t count) const;
    /// The same by multiplication, which vectorises.
    void Run(const Ipp8u *src, Ipp8u *dst, std::int64_t count) const;

    bool IsByMultiplication() const { return m_factor != 0; }

private:
    Ipp8u m_table[256];
    Ipp8u m_low, m_range;
    Ipp16u m_factor = 0; // 0: no factor gives the table
    Ipp16u m_rounding = 0;
    int m_shift = 0;

    Ipp8u Multiplied(Ipp8u value) const
    {
        const auto above = static_cast<Ipp8u>(value > m_low ? value - m_low : 0);
        const unsigned limited = above < m_range ? above : m_range;
        const auto high = static_cast<Ipp16u>((limited << 8) * m_factor >> 16);
        return static_cast<Ipp8u>(static_cast<Ipp16u>(high + m_rounding) >> m_shift);
    }
    bool GivesTable() const;
    void FindFactor();
};

} // namespace primitives
