// Weights of sharp sampling.
#pragma once

#include <array>
#include <cstdint>

/// Weights of the six neighbors along one axis, the third being the one at or before the place, for each of 1,024
/// phases between it and the next.
///
/// Least squares: of all weights whose sum is 1 and whose first moment is the phase, those whose response is nearest to
/// a pure shift over all frequencies up to 0.37 cycles per pixel. They are rounded to integers that keep sum and moment
/// exactly, so that areas stay flat and ramps stay ramps to the last bit.
class SharpKernel {
public:
    static constexpr int kTaps = 6;
    static constexpr int kPadded = 8; ///< with zeros
    static constexpr int kBefore = 2; ///< taps before the pixel at or before the place
    static constexpr int kPhaseBits = 10;
    static constexpr int kPhases = 1 << kPhaseBits;
    static constexpr int kOne = 1 << 14; ///< sum of the integer weights

    /// Made at first use. Any thread.
    static const SharpKernel &Get();

    /// Those of phase 0, followed by two zeros; those of phase p, from 0 to kPhases - 1, begin p * kPadded behind.
    const std::int16_t *Weights() const { return m_weights.data(); }
    /// The same over kOne.
    const float *Shares() const { return m_shares.data(); }

private:
    SharpKernel();

    alignas(64) std::array<float, kPhases * kPadded> m_shares;
    alignas(64) std::array<std::int16_t, kPhases * kPadded> m_weights;
};
