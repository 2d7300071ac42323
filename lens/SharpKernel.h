// Weights for sharp sampling.
#pragma once

#include <array>
#include <cstdint>

/// Weights of the six neighbors along one axis, for 1,024 phases between two pixels. The third neighbor is the pixel at
/// or before the sampling position.
///
/// Least squares: of all weights whose sum is 1 and whose first moment is the phase, these have the response nearest to
/// a pure shift over all frequencies up to 0.37 cycles per pixel. They are rounded to integers that keep sum and moment
/// exactly, so that flat areas stay flat and ramps stay ramps to the last bit.
class SharpKernel {
public:
    static constexpr int kTaps = 6;
    static constexpr int kPadded = 8; ///< taps, padded with zeros
    static constexpr int kBefore = 2; ///< taps before the pixel at or before the sampling position
    static constexpr int kPhaseBits = 10;
    static constexpr int kPhases = 1 << kPhaseBits;
    static constexpr int kOne = 1 << 14; ///< sum of the integer weights

    /// Returns the single instance, computed by the first call. Thread-safe.
    static const SharpKernel &Get();

    /// Returns the weights of all phases, each set followed by two zeros: those of phase p, 0 to kPhases - 1, start at
    /// p * kPadded.
    const std::int16_t *Weights() const { return m_weights.data(); }
    /// Returns the same weights divided by kOne.
    const float *Shares() const { return m_shares.data(); }

private:
    SharpKernel();

    alignas(64) std::array<float, kPhases * kPadded> m_shares;
    alignas(64) std::array<std::int16_t, kPhases * kPadded> m_weights;
};
