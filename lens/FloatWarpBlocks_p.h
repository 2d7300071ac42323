// Loops of FloatWarp, compiled once per instruction set; only for FloatWarp.cpp.
#pragma once

#include "FloatWarpSampling_p.h"

#include <algorithm>
#include <cstring>

namespace {

// --- The four paths, one block at a time ---

/// Part of a row: where it is written, and the source pixels at the same position.
struct Block {
    const unsigned char *same;
    unsigned char *target;
    int count;
};

VITRELUX_INLINE void Preset(const FloatWarp::Band &band, const Block &block)
{
    const auto bytes = static_cast<size_t>(block.count) * kPixelBytes;
    if (band.unwritten == FloatWarp::Unwritten::Cleared)
        std::memset(block.target, 0, bytes);
    else if (band.unwritten == FloatWarp::Unwritten::FromSource)
        std::memcpy(block.target, block.same, bytes);
}

VITRELUX_INLINE void GainOnlyBlock(const Block &block, const Values &gain)
{
    for (int i = 0; i < block.count; ++i) {
        const FourFloats value = All(gain.v[i]) * Load(block.same + i * kPixelBytes);
        StoreOpaque(block.target + i * kPixelBytes, Limited(AtLeast(value, All(0.0F))));
    }
}

VITRELUX_INLINE void OneWarpBlock(const FloatWarp::Band &band, const Block &block, const Positions &at,
                                  const Values &gain)
{
    const FloatWarp::Pixels source = band.source;
    if (AllBetweenFour(source, at, block.count)) {
        Corners corners;
        FindCorners(source, at, block.count, &corners);
        Prefetch(source, corners, block.count);
        for (int i = 0; i < block.count; ++i)
            StoreOpaque(block.target + i * kPixelBytes, Limited(All(gain.v[i]) * SamplePixel(source, corners, i)));
        return;
    }
    for (int i = 0; i < block.count; ++i) {
        unsigned char *target = block.target + i * kPixelBytes;
        if (IsInside(source, at.x[i], at.y[i])) {
            FourFloats sample = All(0.0F); // for the last column and row
            if (CanSample(band, at.x[i], at.y[i]))
                sample = SamplePixel(source, OneCorner(source, at.x[i], at.y[i]), 0);
            StoreOpaque(target, Limited(All(gain.v[i]) * sample));
        } else {
            std::memset(target, 0, kPixelBytes);
        }
    }
}

/// Samples one channel and stores it, multiplied by the gain. Returns whether its position is inside the picture.
VITRELUX_INLINE bool MoveChannel(const FloatWarp::Band &band, float x, float y, int channel, float gain,
                                 unsigned char *target)
{
    const bool inside = IsInside(band.source, x, y);
    float sample = 0.0F; // for the last column and row
    if (CanSample(band, x, y))
        sample = SampleChannel(band.source, OneCorner(band.source, x, y), 0, channel);
    StoreFloat(target, channel, inside ? Limited(gain * sample) : 0.0F);
    return inside;
}

/// Samples three channels, each at its position; @p green is null if green isn't moved.
VITRELUX_INLINE void ThreeChannelsWithCare(const FloatWarp::Band &band, const Block &block, const Positions &red,
                                           const Positions *green, const Positions &blue, const Values &gain)
{
    Preset(band, block);
    for (int i = 0; i < block.count; ++i) {
        unsigned char *target = block.target + i * kPixelBytes;
        if (!MoveChannel(band, red.x[i], red.y[i], 0, gain.v[i], target))
            continue; // the following channels keep their values
        if (!green)
            StoreFloat(target, 1, Limited(gain.v[i] * LoadFloat(block.same + i * kPixelBytes + 4)));
        else if (!MoveChannel(band, green->x[i], green->y[i], 1, gain.v[i], target))
            continue;
        if (!MoveChannel(band, blue.x[i], blue.y[i], 2, gain.v[i], target))
            continue;
        const float sum = LoadFloat(target) + LoadFloat(target + 4) + LoadFloat(target + 8);
        StoreFloat(target, 3, sum > 0.0F ? 1.0F : 0.0F);
    }
}

/// Corners of three channels.
struct ColorCorners {
    Corners red, green, blue;
};

/// Samples each color of a pixel at its position. @p load returns the combined neighbors at an offset from the corners.
template <typename Loader>
VITRELUX_INLINE FourFloats SampleJoined(const FloatWarp::Pixels &source, FourFloats fx, FourFloats fy, Loader load)
{
    const FourFloats one = All(1.0F), restX = one - fx, restY = one - fy;
    const FourFloats top = Mix(load(0), load(source.stepX), restX, fx);
    const FourFloats bottom = Mix(load(source.stepY), load(source.stepX + source.stepY), restX, fx);
    return Mix(top, bottom, restY, fy);
}

VITRELUX_INLINE FourFloats SampleColors(const FloatWarp::Pixels &source, const ColorCorners &at, int i)
{
    const FourFloats fx = Each(at.red.fx[i], at.green.fx[i], at.blue.fx[i], 0.0F);
    const FourFloats fy = Each(at.red.fy[i], at.green.fy[i], at.blue.fy[i], 0.0F);
    const unsigned char *red = source.base + at.red.offset[i], *green = source.base + at.green.offset[i],
                        *blue = source.base + at.blue.offset[i];
    return SampleJoined(source, fx, fy, [&](std::int64_t step) VITRELUX_INLINED {
        return Join(Load(red + step), Load(green + step), Load(blue + step));
    });
}

/// Like SampleColors, but green isn't moved: it is copied from @p same.
VITRELUX_INLINE FourFloats SampleRedAndBlue(const FloatWarp::Pixels &source, const ColorCorners &at, int i,
                                            FourFloats same)
{
    const FourFloats fx = Each(at.red.fx[i], 0.0F, at.blue.fx[i], 0.0F);
    const FourFloats fy = Each(at.red.fy[i], 0.0F, at.blue.fy[i], 0.0F);
    const unsigned char *red = source.base + at.red.offset[i], *blue = source.base + at.blue.offset[i];
    const FourFloats moved = SampleJoined(source, fx, fy, [&](std::int64_t step) VITRELUX_INLINED {
        return Join(Load(red + step), Load(red + step), Load(blue + step));
    });
    return Join(moved, same, moved);
}

VITRELUX_INLINE void ThreeChannelsBlock(const FloatWarp::Band &band, const Block &block, const Positions &red,
                                        const Positions *green, const Positions &blue, const Values &gain)
{
    const FloatWarp::Pixels source = band.source;
    if (!AllBetweenFour(source, red, block.count) || !AllBetweenFour(source, blue, block.count)
        || (green && !AllBetweenFour(source, *green, block.count)))
        return ThreeChannelsWithCare(band, block, red, green, blue, gain);
    ColorCorners corners;
    FindCorners(source, red, block.count, &corners.red);
    FindCorners(source, blue, block.count, &corners.blue);
    if (green)
        FindCorners(source, *green, block.count, &corners.green);
    Prefetch(source, corners.red, block.count);
    for (int i = 0; i < block.count; ++i) {
        const FourFloats sample = green ? SampleColors(source, corners, i)
                                        : SampleRedAndBlue(source, corners, i, Load(block.same + i * kPixelBytes));
        Store(block.target + i * kPixelBytes, WithAlphaOfSum(Limited(All(gain.v[i]) * sample)));
    }
}

/// Computes the positions of a block's pixels in the models' frame.
VITRELUX_INLINE void Start(const FloatWarp::Band &band, int x, int y, Positions *at)
{
    const bool turned = band.frame == FloatWarp::Frame::Turned;
    for (int i = 0; i < kBlockPixels; ++i) {
        at->x[i] = static_cast<float>(turned ? y : x + i);
        at->y[i] = static_cast<float>(turned ? band.width - 1 - x - i : y);
    }
}

/// Renders a block. @p Set has two functions compiled for its instructions: Warp(model, in, out) and Rows(band).
template <typename Set>
VITRELUX_INLINE void RenderBlock(const FloatWarp::Band &band, const Block &block, const Positions &start)
{
    Positions main, red, blue;
    Values gain;
    switch (band.path) {
    case FloatWarp::Path::Nothing:
        return Preset(band, block);
    case FloatWarp::Path::GainOnly:
        GainBlock(band.vignette, start, &gain);
        return GainOnlyBlock(block, gain);
    case FloatWarp::Path::OneWarp:
        Set::Warp(band.main, start, &main);
        GainBlock(band.vignette, main, &gain);
        return OneWarpBlock(band, block, main, gain);
    case FloatWarp::Path::RedAndBlue:
        Set::Warp(band.red, start, &red);
        Set::Warp(band.blue, start, &blue);
        GainBlock(band.vignette, red, &gain);
        return ThreeChannelsBlock(band, block, red, nullptr, blue, gain);
    case FloatWarp::Path::ThreeWarps:
        Set::Warp(band.main, start, &main);
        Set::Warp(band.red, main, &red);
        Set::Warp(band.blue, main, &blue);
        GainBlock(band.vignette, main, &gain);
        return ThreeChannelsBlock(band, block, red, &main, blue, gain);
    }
}

/// Renders whole rows: narrower strips keep more of the source in the caches but are slower, because their rows are too
/// short for the hardware prefetcher.
template <typename Set> VITRELUX_INLINE void RenderRows(const FloatWarp::Band &band)
{
    for (int row = 0; row < band.rows; ++row) {
        for (int x = 0; x < band.width; x += kBlockPixels) {
            const std::int64_t column = std::int64_t(x) * kPixelBytes;
            const Block block = {band.same + row * band.sameStride + column,
                                 band.target + row * band.targetStride + column,
                                 std::min(kBlockPixels, band.width - x)};
            Positions start;
            Start(band, x, band.firstRow + row, &start);
            RenderBlock<Set>(band, block, start);
        }
    }
}

} // namespace
