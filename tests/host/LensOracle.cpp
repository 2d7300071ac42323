#include "LensOracle.h"

#include <algorithm>
#include <cmath>

using Samples::LensModel;
using Samples::Point;

namespace {

/// Updates the channels after the first one outside: the warp checks red, green and blue in this order and stops there.
void EndAtOutside(OraclePixel *pixel)
{
    Content rest = Content::Sampled;
    for (OracleChannel &channel : pixel->channels) {
        if (rest != Content::Sampled)
            channel.content = rest;
        else if (channel.content == Content::Outside)
            rest = Content::Kept;
        else if (channel.content == Content::Unsure)
            rest = Content::Unsure;
    }
}

} // namespace

bool OraclePixel::Holds(Content content) const
{
    return std::any_of(channels.begin(), channels.end(), [=](const OracleChannel &c) { return c.content == content; });
}

Content LensOracle::RegionOf(Point p) const
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

Point LensOracle::Main(const LensModel &model, Point at) const
{
    const Point center = {model.centerX * (m_profile.width - 1), model.centerY * (m_profile.height - 1)};
    if (m_profile.fisheye && at.x == center.x && at.y == center.y)
        return {-9, -9}; // 0 / 0 in the model counts as outside
    return ToSource(m_profile, model, MainProjection(m_profile), at);
}

OraclePixel LensOracle::At(Point at) const
{
    const auto channel = [this](Point from) { return OracleChannel{RegionOf(from), from}; };
    const int warps = m_corrections & (Distortion | Chromatic);
    if (!(warps & Chromatic)) {
        const Point from = warps ? Main(m_profile.distortion, at) : at;
        const OracleChannel all = warps ? channel(from) : OracleChannel{Content::Sampled, at};
        return {{all, all, all}, from};
    }
    // Without distortion, green is copied from the same position and never sampled, so borders don't affect it.
    const bool copied = warps == Chromatic;
    const Point green = copied ? at : Main(m_profile.green.value(), at);
    const auto shifted = [&](const std::optional<LensModel> &model) {
        return channel(ToSource(m_profile, model.value(), Samples::Projection::Perspective, green));
    };
    const OracleChannel red = shifted(m_profile.redGreen), blue = shifted(m_profile.blueGreen);
    OraclePixel pixel = {{red, copied ? OracleChannel{Content::Sampled, at} : channel(green), blue},
                         copied ? red.from : green};
    EndAtOutside(&pixel);
    return pixel;
}

Samples::Hold HoldOf(int width, int height)
{
    return width > height ? Samples::Hold::Landscape : Samples::Hold::Portrait;
}
