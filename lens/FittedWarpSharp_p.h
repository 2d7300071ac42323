// Sharp sampling of fitted corrections, in units that fit in the level 2 cache together with their source pixels.
#pragma once

#include "FittedWarpBlocks_p.h"
#include "SharpPlaces_p.h"
#include "SharpTogether_p.h"

#include <limits>
#include <new>
#include <optional>

namespace {

constexpr int kUnitColumns = 4 * kBlockPixels;

/// Maps the channels red, green and blue to their sampling positions, if these differ.
constexpr int kPlaceOf[] = {kRed, kGreen, kBlue};

struct SharpBlock {
    BlockPlaces places;
    SharpPlaces of[kColors];
    unsigned char isEmpty[kBlockPixels];
    bool anyEmpty;
};

/// Working memory of one call to Render.
template <typename Plane, typename Value, int kStep> struct SharpScratch : FittedWarp::IdleMemory::Piece {
    bool IsModest() const override
    {
        constexpr size_t kModestSamples = size_t(1) << 20; // ten times the usual number; they take 12 MB
        size_t samples = 0;
        for (const Plane &plane : planes)
            samples += plane.values.size();
        return samples <= kModestSamples;
    }

    SharpBlock block;
    Plane planes[4];
    AllowanceRows<Value, kStep> allowances;
    const SharpKernel &kernel = SharpKernel::Get();
};

/// Computes a block's sampling positions and its empty pixels. @p careful: some positions may be outside the picture.
template <typename Kind>
VITRELUX_INLINE void FindSharpBlock(const FittedWarp::Band &band, const Block &block, bool careful, SharpBlock *found)
{
    FindPlaces<typename Kind::Floats>(band, block, &found->places);
    std::memset(found->isEmpty, 0, sizeof found->isEmpty);
    for (int color = kGreen; color < (Kind::kSplits ? kColors : kGreen + 1); ++color) {
        if (careful)
            Split<typename Kind::Floats, true>(band, block, found->places.of[color], &found->of[color], found->isEmpty);
        else
            Split<typename Kind::Floats, false>(band, block, found->places.of[color], &found->of[color],
                                                found->isEmpty);
    }
    found->anyEmpty = careful && std::memchr(found->isEmpty, 1, static_cast<size_t>(block.count));
}

/// Widens @p bounds to include a position.
VITRELUX_INLINE void Include(float x, float y, Bounds *bounds)
{
    // Include one pixel more on each side than positions between the corners can reach, because phases are rounded.
    const int left = static_cast<int>(std::floor(x)) - 1, top = static_cast<int>(std::floor(y)) - 1;
    bounds->left = std::min(bounds->left, left);
    bounds->right = std::max(bounds->right, left + 2);
    bounds->top = std::min(bounds->top, top);
    bounds->bottom = std::max(bounds->bottom, top + 2);
}

/// Widens @p bounds to include the sampling positions of a block's non-empty pixels. Returns whether any pixel is
/// empty.
template <typename Kind>
VITRELUX_INLINE bool IncludeAll(const FittedWarp::Band &band, const Block &block, SharpBlock *found, Bounds *bounds)
{
    FindSharpBlock<Kind>(band, block, /*careful=*/true, found);
    for (int i = 0; i < block.count; ++i)
        for (int color = kGreen; color < (Kind::kSplits ? kColors : kGreen + 1) && !found->isEmpty[i]; ++color)
            Include(static_cast<float>(found->of[color].x[i]), static_cast<float>(found->of[color].y[i]), bounds);
    return found->anyEmpty;
}

/// Part of a band, in pixels relative to the band.
struct Unit {
    int x, row, columns, rows;
};

/// Widens @p bounds to include the sampling positions of a unit's pixels, which lie between those of its cells'
/// corners.
template <bool kSplit>
VITRELUX_INLINE void IncludeCorners(const FittedWarp::Band &band, const Unit &unit, Bounds *bounds)
{
    const FittedPlaces &cells = band.places;
    const int side = cells.CellSidePixels(), endCell = (unit.x + unit.columns - 1) / side + 1;
    const int firstY = band.firstRow + unit.row;
    for (int y = firstY / side * side; y < firstY + unit.rows - 1 + side; y += side) {
        for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color) {
            const float *atX = cells.Corners(FittedPlaces::kGreenX + 2 * color, y),
                        *atY = cells.Corners(FittedPlaces::kGreenY + 2 * color, y);
            for (int cell = unit.x / side; cell <= endCell; ++cell)
                Include(static_cast<float>(cell * side) + atX[cell], static_cast<float>(y) + atY[cell], bounds);
        }
    }
}

inline bool IsRough(const FittedWarp::Band &band, const Unit &unit)
{
    const int side = band.places.CellSidePixels(), last = unit.x + unit.columns - 1;
    for (int row = unit.row; row < unit.row + unit.rows; ++row)
        if (band.places.IsRough(band.firstRow + row, unit.x / side, (last | (kBlockPixels - 1)) / side + 1))
            return true;
    return false;
}

/// Returns the bounds of the sampling positions of a unit's pixels; nullopt if all pixels are empty.
/// @param anyEmpty  Set to true if a map ends in the unit, which makes pixels empty without affecting the bounds.
template <typename Kind>
VITRELUX_INLINE std::optional<Bounds> BoundsOf(const FittedWarp::Band &band, const Unit &unit, SharpBlock *scratch,
                                               bool *anyEmpty)
{
    constexpr int kNone = std::numeric_limits<int>::max();
    Bounds bounds = {kNone, kNone, -kNone, -kNone};
    if (!IsRough(band, unit))
        IncludeCorners<Kind::kSplits>(band, unit, &bounds);
    else
        for (int row = unit.row; row < unit.row + unit.rows; ++row)
            for (int x = unit.x; x < unit.x + unit.columns; x += kBlockPixels)
                *anyEmpty |= IncludeAll<Kind>(band, BlockAt(band, x, row), scratch, &bounds);
    if (bounds.left == kNone)
        return std::nullopt;
    return bounds;
}

/// Divides the colors of a sum by their alphas; the result's alpha is green's.
VITRELUX_INLINE Float4 Unpremultiplied(Float4 sums, Float4 alphas)
{
    Float4 result;
    for (int channel = 0; channel < 3; ++channel)
        result[channel] = alphas[channel] > 0.0F ? sums[channel] / alphas[channel] : 0.0F;
    result[3] = alphas[1];
    return result;
}

/// Sharp sampling of integer pictures without alpha.
template <typename Set, bool kSplit> struct SharpCodes {
    using Floats = typename Set::Floats;
    static constexpr bool kSplits = kSplit;
    static constexpr int kStep = kSplit ? 1 : kTogether;
    using Scratch = SharpScratch<CodePlane, std::int16_t, kStep>;
    using Codes = std::conditional_t<kSplit, typename Set::Codes, typename Set::Together>;

    VITRELUX_INLINE static bool Fill(const FittedWarp::Band &band, const BoxShape &shape, Scratch *scratch)
    {
        return FillBox<typename Set::Shorts>(band, shape, scratch->planes, &scratch->allowances);
    }
    VITRELUX_INLINE static void Sample(const SharpRun &run, const Scratch &scratch, Float4 *samples)
    {
        Codes::Sample(run, CodePlanes(scratch.planes, kStep), scratch.kernel, samples);
    }
};

/// Sharp sampling of float pictures and of pictures with alpha.
template <typename Set, bool kAlpha, bool kSplit> struct SharpFloats {
    static constexpr bool kSplits = kSplit;
    static constexpr int kStep = 1;
    using Scratch = SharpScratch<FloatPlane, float, kStep>;
    using Floats = typename Set::Floats;

    VITRELUX_INLINE static bool Fill(const FittedWarp::Band &band, const BoxShape &shape, Scratch *scratch)
    {
        return FillBox<Floats, kAlpha>(band, shape, scratch->planes, &scratch->allowances);
    }
    VITRELUX_INLINE static void Sample(const SharpRun &run, const Scratch &scratch, Float4 *samples)
    {
        for (int i = 0; i < run.count; ++i) {
            Float4 sums = {0.0F, 0.0F, 0.0F, 1.0F}, alphas = sums;
            for (int channel = 0; channel < 3; ++channel) {
                const int place = kSplit ? channel : 0;
                sums[channel] =
                    SampleFloats<typename Set::Taps>(scratch.planes[channel], run, place, i, scratch.kernel);
                if (kAlpha && (kSplit || channel == 0))
                    alphas[channel] =
                        SampleFloats<typename Set::Taps>(scratch.planes[3], run, place, i, scratch.kernel);
            }
            if (kAlpha && !kSplit)
                alphas[1] = alphas[2] = alphas[0];
            samples[i] = kAlpha ? Unpremultiplied(sums, alphas) : sums;
        }
    }
};

/// Prefetches the result row below a block, because storing it would otherwise wait for memory.
VITRELUX_INLINE void PrefetchNextRow(const FittedWarp::Band &band, const Block &block)
{
    constexpr int kLinePixels = 4;
    for (int i = 0; i < block.count; i += kLinePixels)
        __builtin_prefetch(block.target + band.targetStride + i * kPixelBytes, /*write=*/1);
}

/// Samples and stores a block whose source is in the scratch's planes.
template <typename Kind>
VITRELUX_INLINE void RenderSharpBlock(const FittedWarp::Band &band, const Block &block, const BoxShape &shape,
                                      typename Kind::Scratch *scratch)
{
    SharpBlock *const found = &scratch->block;
    const Bounds &bounds = shape.bounds;
    for (int color = kGreen; color < (Kind::kSplits ? kColors : kGreen + 1); ++color) {
        SharpPlaces &at = found->of[color];
        for (int i = 0; i < kBlockPixels; ++i)
            at.x[i] = (at.y[i] - SharpKernel::kBefore - bounds.top) * shape.stride
                + (at.x[i] - SharpKernel::kBefore - bounds.left) * Kind::kStep;
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
    PrefetchNextRow(band, block);
    Kind::Sample(run, *scratch, samples);
    for (int i = 0; found->anyEmpty && i < block.count; ++i)
        if (found->isEmpty[i])
            samples[i] = Same(0.0F);
    StoreLit<typename Kind::Floats>(band, block, samples, found->places.gains);
}

/// Renders a unit. Returns false if a source row isn't in memory.
template <typename Kind>
VITRELUX_INLINE bool RenderUnit(const FittedWarp::Band &band, const Unit &unit, typename Kind::Scratch *scratch)
{
    bool anyEmpty = false;
    const std::optional<Bounds> found = BoundsOf<Kind>(band, unit, &scratch->block, &anyEmpty);
    if (!found) {
        for (int row = unit.row; row < unit.row + unit.rows; ++row)
            std::memset(BlockAt(band, unit.x, row).target, 0, static_cast<size_t>(unit.columns) * kPixelBytes);
        return true;
    }
    constexpr int kBefore = SharpKernel::kBefore, kAfter = SharpKernel::kTaps - kBefore - 1;
    const Bounds bounds = {Reached(found->left, band.width), Reached(found->top, band.height),
                           Reached(found->right, band.width), Reached(found->bottom, band.height)};
    const bool careful = anyEmpty || found->left < 0 || found->top < 0 || found->right >= band.width - 1
        || found->bottom >= band.height - 1;
    const BoxShape shape({bounds.left - kBefore, bounds.top - kBefore, bounds.right + kAfter, bounds.bottom + kAfter},
                         Kind::kStep);
    if (shape.Samples() > size_t(std::numeric_limits<std::int32_t>::max())) // offsets have 32 bits
        throw std::bad_alloc();
    if (!Kind::Fill(band, shape, scratch))
        return false;
    for (int row = unit.row; row < unit.row + unit.rows; ++row) {
        for (int x = unit.x; x < unit.x + unit.columns; x += kBlockPixels) {
            const Block block = BlockAt(band, x, row);
            FindSharpBlock<Kind>(band, block, careful, &scratch->block);
            RenderSharpBlock<Kind>(band, block, shape, scratch);
        }
    }
    return true;
}

/// Adapter of a sampling method to RenderRows. Renders unit by unit; returns false if a source row isn't in memory.
template <typename Sampling> struct Sharp : Sampling {
    VITRELUX_INLINE static bool Render(const FittedWarp::Band &band, int firstRow, int rows,
                                       typename Sampling::Scratch *scratch)
    {
        bool complete = true;
        for (int x = 0; complete && x < band.columns; x += kUnitColumns) {
            const Unit unit = {x, firstRow, std::min(kUnitColumns, band.columns - x), rows};
            complete = RenderUnit<Sampling>(band, unit, scratch);
        }
        return complete;
    }
};

} // namespace
