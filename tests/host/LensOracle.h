// Computes the source of every channel and pixel of a corrected picture from the lens models, in double precision.
#pragma once

#include <array>

#include "lens_reference.h"

enum Correction { Distortion = 1, Chromatic = 2, Vignetting = 4 };

/// Error bound of float arithmetic in pictures of a few hundred pixels: a few rounding errors of 600 * 6e-8. Positions
/// closer than this to a border may count as inside or outside.
constexpr double kTolerancePx = 0.001;

/// Content of one channel of a corrected pixel.
enum class Content {
    Sampled, ///< sampled from the source
    Border,  ///< black: the position has no neighbor to the right or below
    Outside, ///< black: the position is outside the source
    Kept,    ///< the previous value, because an earlier channel was outside
    Unsure,  ///< too close to a border to decide
};

struct OracleChannel {
    Content content = Content::Kept;
    Samples::Point from = {}; ///< in the profile's frame
};

struct OraclePixel {
    std::array<OracleChannel, 3> channels = {};
    Samples::Point gainAt = {}; ///< where the vignetting gain is evaluated

    bool Holds(Content content) const;
};

/// Oracle for pictures of the profile's size, in its landscape frame.
class LensOracle {
public:
    /// @param corrections  flags of Correction; @p profile must outlive the oracle
    LensOracle(const Samples::LensProfile &profile, int corrections)
        : m_profile(profile), m_corrections(corrections) { }

    /// @param at  a pixel of the corrected picture, in the profile's frame
    OraclePixel At(Samples::Point at) const;

private:
    Content RegionOf(Samples::Point p) const;
    Samples::Point Main(const Samples::LensModel &model, Samples::Point at) const;

    const Samples::LensProfile &m_profile;
    int m_corrections;
};

/// Returns the orientation in which a picture of this upright size is corrected; a square counts as portrait.
Samples::Hold HoldOf(int width, int height);
