// Sharp sampling of fitted corrections, in units of pixels that stay in the second cache together with the source
// around them.
#pragma once

#include "FittedWarpBlocks_p.h"
#include "SharpRun_p.h"

#include <limits>

namespace {

constexpr int kUnitBlocks = 2; // side by side

/// The place of channel 0 to 2, red to blue, where colors have places of their own.
constexpr int kPlaceOf[] = {kRed, kGreen, kBlue};

/// A block's places as pixels and phases.
struct SharpPlaces {
    alignas(64) std::int32_t x[kBlockPixels], y[kBlockPixels]; // the pixel at or before the place; later offsets
    alignas(64) std::int16_t phaseX[kBlockPixels], phaseY[kBlockPixels];
};

struct SharpBlock {
    SharpPlaces of[kColors];
    alignas(64) float gain[kBlockPixels];
    bool isEmpty[kBlockPixels];
    bool anyEmpty;
};

/// What a call of Render needs to work with, made once.
template <typename Plane> struct SharpScratch {
    SharpBlock blocks[kUnitRows * kUnitBlocks];
    Plane planes[4];
    const SharpKernel &kernel = SharpKernel::Get();
};

/// Splits a place into a pixel, kept within reach of the picture, and a phase.
VITRELUX_INLINE void Split(std::int32_t whole, float rest, int side, std::int32_t *pixel, std::int16_t *phase)
{
    const int rounded = static_cast<int>(rest * SharpKernel::kPhases + 0.5F);
    whole += rounded >> SharpKernel::kPhaseBits; // rounded up to the next
    whole = whole > -2 ? whole : -2;
    *pixel = whole < side ? whole : side;
    *phase = static_cast<std::int16_t>(rounded & (SharpKernel::kPhases - 1));
}

/// Finds a block's places and which of its pixels stay empty.
template <bool kSplit>
VITRELUX_INLINE void FindSharpBlock(const FittedWarp::Band &band, const Block &block, SharpBlock *found)
{
    BlockPlaces places;
    FindPlaces(band, block, &places);
    std::copy(places.gain, places.gain + kBlockPixels, found->gain);
    std::fill(found->isEmpty, found->isEmpty + kBlockPixels, false);
    for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color) {
        Neighbors at;
        FindNeighbors(block, places.of[color], &at);
        SharpPlaces *const to = &found->of[color];
        for (int i = 0; i < kBlockPixels; ++i) {
            Split(at.x[i], at.fx[i], band.width, &to->x[i], &to->phaseX[i]);
            Split(at.y[i], at.fy[i], band.height, &to->y[i], &to->phaseY[i]);
        }
        if (band.mayBeEmpty)
            for (int i = 0; i < block.count; ++i)
                found->isEmpty[i] |= IsEmpty(band, at, i);
    }
    found->anyEmpty = band.mayBeEmpty
        && std::find(found->isEmpty, found->isEmpty + block.count, true) != found->isEmpty + block.count;
}

/// Widens @p bounds to the pixels that are not empty.
template <bool kSplit> VITRELUX_INLINE void Include(const SharpBlock &block, int count, Bounds *bounds)
{
    Bounds b = *bounds;
    for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color) {
        const SharpPlaces &at = block.of[color];
        for (int i = 0; i < count; ++i) {
            if (block.anyEmpty && block.isEmpty[i])
                continue;
            b.left = std::min(b.left, at.x[i]);
            b.right = std::max(b.right, at.x[i]);
            b.top = std::min(b.top, at.y[i]);
            b.bottom = std::max(b.bottom, at.y[i]);
        }
    }
    *bounds = b;
}

/// Colors of a sum divided by its alphas, which become the greens'.
VITRELUX_INLINE Float4 Unpremultiplied(Float4 sums, Float4 alphas)
{
    Float4 result;
    for (int channel = 0; channel < 3; ++channel)
        result[channel] = alphas[channel] > 0.0F ? sums[channel] / alphas[channel] : 0.0F;
    result[3] = alphas[1];
    return result;
}

/// Integer pictures without alpha.
template <typename Codes, bool kSplit> struct SharpCodes {
    using Scratch = SharpScratch<CodePlane>;
    static constexpr bool kSplits = kSplit;

    VITRELUX_INLINE static bool Fill(const FittedWarp::Band &band, const BoxShape &shape, Scratch *scratch)
    {
        return FillBox<typename Codes::Shorts>(band, shape, scratch->planes);
    }
    VITRELUX_INLINE static void Sample(const SharpRun &run, const Scratch &scratch, Float4 *samples)
    {
        Codes::template Sample<kSplit ? 3 : 1>(run, scratch.planes, scratch.kernel, samples);
    }
};

/// Float pictures, and all with alpha.
template <bool kAlpha, bool kSplit> struct SharpFloats {
    using Scratch = SharpScratch<FloatPlane>;
    using Floats = float __attribute__((vector_size(32)));
    static constexpr bool kSplits = kSplit;

    VITRELUX_INLINE static bool Fill(const FittedWarp::Band &band, const BoxShape &shape, Scratch *scratch)
    {
        return FillBox<Floats, kAlpha>(band, shape, scratch->planes);
    }
    VITRELUX_INLINE static void Sample(const SharpRun &run, const Scratch &scratch, Float4 *samples)
    {
        for (int i = 0; i < run.count; ++i) {
            Float4 sums = {0.0F, 0.0F, 0.0F, 1.0F}, alphas = sums;
            for (int channel = 0; channel < 3; ++channel) {
                const int place = kSplit ? channel : 0;
                sums[channel] = SampleFloats<Floats>(scratch.planes[channel], run, place, i, scratch.kernel);
                if (kAlpha && (kSplit || channel == 0))
                    alphas[channel] = SampleFloats<Floats>(scratch.planes[3], run, place, i, scratch.kernel);
            }
            if (kAlpha && !kSplit)
                alphas[1] = alphas[2] = alphas[0];
            samples[i] = kAlpha ? Unpremultiplied(sums, alphas) : sums;
        }
    }
};

/// Samples and stores a block whose source is in the scratch's planes.
template <typename Kind>
VITRELUX_INLINE void RenderSharpBlock(const FittedWarp::Band &band, const Block &block, const BoxShape &shape,
                                      typename Kind::Scratch *scratch, SharpBlock *found)
{
    const Bounds &bounds = shape.bounds;
    for (int color = kGreen; color < (Kind::kSplits ? kColors : kGreen + 1); ++color) {
        SharpPlaces &at = found->of[color];
        for (int i = 0; i < kBlockPixels; ++i)
            at.x[i] = (at.y[i] - SharpKernel::kBefore - bounds.top) * shape.stride
                + (at.x[i] - SharpKernel::kBefore - bounds.left);
        for (int i = 0; found->anyEmpty && i < block.count; ++i)
            if (found->isEmpty[i])
                at.x[i] = 0;
    }
    SharpRun run = {block.count, shape.stride, {}, {}, {}};
    for (int channel = 0; channel < 3; ++channel) {
        const SharpPlaces &at = found->of[Kind::kSplits ? kPlaceOf[channel] : kGreen];
        run.offset[channel] = at.x;
        run.phaseX[channel] = at.phaseX;
        run.phaseY[channel] = at.phaseY;
    }
    alignas(64) Float4 samples[kBlockPixels];
    Kind::Sample(run, *scratch, samples);
    for (int i = 0; found->anyEmpty && i < block.count; ++i)
        if (found->isEmpty[i])
            samples[i] = Same(0.0F);
    StoreLit(band, block, samples, found->gain);
}

/// Renders a unit from row @p firstRow of the band on. False if a row of the source isn't in memory.
template <typename Kind>
VITRELUX_INLINE bool RenderUnit(const FittedWarp::Band &band, int firstX, int firstRow, int rows,
                                typename Kind::Scratch *scratch)
{
    const int columns = std::min(kUnitBlocks * kBlockPixels, band.columns - firstX);
    const int blocks = (columns - 1) / kBlockPixels + 1;
    constexpr int kNone = std::numeric_limits<int>::max();
    Bounds bounds = {kNone, kNone, -kNone, -kNone};
    for (int row = 0; row < rows; ++row) {
        for (int i = 0; i < blocks; ++i) {
            SharpBlock *const found = &scratch->blocks[row * kUnitBlocks + i];
            const Block block = BlockAt(band, firstX + i * kBlockPixels, firstRow + row);
            FindSharpBlock<Kind::kSplits>(band, block, found);
            Include<Kind::kSplits>(*found, block.count, &bounds);
        }
    }
    if (bounds.left == kNone) {
        for (int row = firstRow; row < firstRow + rows; ++row)
            std::memset(BlockAt(band, firstX, row).target, 0, static_cast<size_t>(columns) * kPixelBytes);
        return true;
    }
    constexpr int kAfter = SharpKernel::kTaps - SharpKernel::kBefore - 1;
    const BoxShape shape({bounds.left - SharpKernel::kBefore, bounds.top - SharpKernel::kBefore, bounds.right + kAfter,
                          bounds.bottom + kAfter});
    if (!Kind::Fill(band, shape, scratch))
        return false;
    for (int row = 0; row < rows; ++row)
        for (int i = 0; i < blocks; ++i)
            RenderSharpBlock<Kind>(band, BlockAt(band, firstX + i * kBlockPixels, firstRow + row), shape, scratch,
                                   &scratch->blocks[row * kUnitBlocks + i]);
    return true;
}

/// Units side by side. False if a row of the source isn't in memory.
template <typename Kind>
VITRELUX_INLINE bool RenderUnits(const FittedWarp::Band &band, int firstRow, int rows, typename Kind::Scratch *scratch)
{
    for (int x = 0; x < band.columns; x += kUnitBlocks * kBlockPixels)
        if (!RenderUnit<Kind>(band, x, firstRow, rows, scratch))
            return false;
    return true;
}

/// A way of sampling as a way of rendering rows.
template <typename Sampling> struct Sharp : Sampling {
    VITRELUX_INLINE static bool Render(const FittedWarp::Band &band, int firstRow, int rows,
                                       typename Sampling::Scratch *scratch)
    {
        return RenderUnits<Sampling>(band, firstRow, rows, scratch);
    }
};

} // namespace
