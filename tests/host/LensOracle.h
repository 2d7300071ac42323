// Computes the source of each channel of each pixel of a corrected picture from the lens models, in double precision.
#pragma once

#include <array>
#include <cmath>

#include "lens_reference.h"

enum Correction { Distortion = 1, Chromatic = 2, Vignetting = 4 };

/// Error bound of float arithmetic in pictures 600 pixels wide: about thirty rounding errors of 600 * 6e-8. Positions
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

    /// Updates the channels after the first one outside: the warp checks red, green and blue in this order and stops
    /// there.
    void EndAtOutside()
    {
        Content rest = Content::Sampled;
        for (OracleChannel &channel : channels) {
            if (rest != Content::Sampled)
                channel.content = rest;
            else if (channel.content == Content::Outside)
                rest = Content::Kept;
            else if (channel.content == Content::Unsure)
                rest = Content::Unsure;
        }
    }
};

/// Oracle for pictures of the profile's size, in its landscape frame.
class LensOracle {
public:
    /// @param corrections  flags of Correction; @p profile must outlive the oracle
    LensOracle(const Samples::LensProfile &profile, int corrections)
        : m_profile(profile), m_corrections(corrections) { }

    /// @param at  a pixel of the corrected picture, in the profile's frame
    OraclePixel At(Samples::Point at) const
    {
        const auto channel = [this](Samples::Point from) { return OracleChannel{RegionOf(from), from}; };
        const int warps = m_corrections & (Distortion | Chromatic);
        if (!(warps & Chromatic)) {
            const Samples::Point from = warps ? Main(m_profile.distortion, at) : at;
            const OracleChannel all = warps ? channel(from) : OracleChannel{Content::Sampled, at};
            return {{all, all, all}, from};
        }
        // Without distortion, green is copied from the same position and never sampled, so borders don't affect it.
        const bool copied = warps == Chromatic;
        const Samples::Point green = copied ? at : Main(m_profile.green.value(), at);
        const auto shifted = [&](const std::optional<Samples::LensModel> &model) {
            return channel(ToSource(m_profile, model.value(), Samples::Projection::Perspective, green));
        };
        const OracleChannel red = shifted(m_profile.redGreen), blue = shifted(m_profile.blueGreen);
        OraclePixel pixel = {{red, copied ? OracleChannel{Content::Sampled, at} : channel(green), blue},
                             copied ? red.from : green};
        pixel.EndAtOutside();
        return pixel;
    }

private:
    Content RegionOf(Samples::Point p) const
    {
        Content region = Content::Sampled;
        for (const auto &[value, size] : {std::pair(p.x, m_profile.width), std::pair(p.y, m_profile.height)}) {
            for (double border : {-1.0, size - 1.0, double(size)})
                if (std::abs(value - border) < kTolerancePx)
                    return Content::Unsure;
            if (value < -1 || value > size) // between -1 and 0 counts as column or row 0
                region = Content::Outside;
            else if (value > size - 1 && region == Content::Sampled)
                region = Content::Border;
        }
        return region;
    }

    Samples::Point Main(const Samples::LensModel &model, Samples::Point at) const
    {
        const Samples::Point center = {model.centerX * (m_profile.width - 1), model.centerY * (m_profile.height - 1)};
        if (m_profile.fisheye && at.x == center.x && at.y == center.y)
            return {-9, -9}; // 0 / 0 in the model counts as outside
        return ToSource(m_profile, model, MainProjection(m_profile), at);
    }

    const Samples::LensProfile &m_profile;
    int m_corrections;
};

/// Returns the orientation in which a picture of this upright size is corrected; a square counts as portrait.
inline Samples::Hold HoldOf(int width, int height)
{
    return width > height ? Samples::Hold::Landscape : Samples::Hold::Portrait;
}
