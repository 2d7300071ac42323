// Stretches the range of 8-bit colors. Pixels have 3 or 4 channels, of which the first three are colors.
#pragma once

#include "types.h"

namespace primitives {

/// Least and greatest color samples of the added pixels.
class ColorRange {
public:
    explicit ColorRange(int channels);

    void Add(const Ipp8u *pixels, std::int64_t count);
    Ipp8u Low() const;
    Ipp8u High() const;

private:
    static constexpr int kLanes = 48; // a whole number of 3- and of 4-channel pixels, and of vectors

    /// Adds whole groups of kLanes samples; returns the number of samples added, 0 without vector code.
    std::int64_t AddVectors(const Ipp8u *pixels, std::int64_t samples);
    bool IsColor(int lane) const { return lane % m_channels < 3; }

    int m_channels;
    Ipp8u m_low[kLanes], m_high[kLanes]; // per position in a group, so that alpha stays separate
};

/// Maps the colors of a row of pixels through a table of 256 values; alpha is copied. The target may be the source.
void MapColors(const Ipp8u *table, int channels, const Ipp8u *src, Ipp8u *dst, std::int64_t pixels);

/// Mapping from colors v to 255 (v - low) / (high - low), truncated and limited to [0, 255]. If low equals high,
/// that value maps to 0.
class Stretch {
public:
    Stretch(Ipp8u low, Ipp8u high, int channels);

    /// Maps through a table of all values, which defines the result.
    void RunPlain(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels) const
    {
        MapColors(m_table, m_channels, src, dst, pixels);
    }
    /// Gives the same result as RunPlain, by vector multiplication if a factor reproduces the table.
    void Run(const Ipp8u *src, Ipp8u *dst, std::int64_t pixels) const;

private:
    /// Returns (((limited << 8) * factor >> 16) + rounding) >> shift; limited is value - low, clamped to the range.
    Ipp8u Multiplied(Ipp8u value) const;
    bool GivesTable() const;
    void FindFactor();
    /// Processes whole vectors of a row; returns the number of samples processed, 0 without vector code.
    std::int64_t RunVectors(const Ipp8u *src, Ipp8u *dst, std::int64_t samples) const;

    Ipp8u m_table[256];
    Ipp8u m_low, m_range;
    int m_channels;
    unsigned m_factor = 0; // 16 bits; 0: no factor reproduces the table
    unsigned m_rounding = 0;
    int m_shift = 0;
};

} // namespace primitives
