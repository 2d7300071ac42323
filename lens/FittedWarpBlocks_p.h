// Loops of FittedWarp, compiled once per instruction set.
#pragma once

#include "FittedWarpLight_p.h"
#include "FittedWarpQuads_p.h"

#include <algorithm>
#include <memory>

namespace {

/// Prefetches source pixels for the next rows of the result, because the hardware prefetcher doesn't follow curved
/// lines.
VITRELUX_INLINE void Prefetch(const FittedWarp::Band &band, const Neighbors &at, int count)
{
    constexpr int kLinePixels = 4, kRowsAhead = 3;
    const unsigned char *ahead = band.source + kRowsAhead * band.sourceStride;
    for (int i = 0; i < count; i += kLinePixels)
        __builtin_prefetch(ahead + at.corner[i]);
}

// --- Rows ---

constexpr int kUnitRows = 64;

/// Renders the band with @p Kind, kUnitRows rows at a time. Returns false if a source row isn't in memory.
template <typename Kind> VITRELUX_INLINE bool RenderRows(const FittedWarp::Band &band)
{
    auto scratch = band.idleMemory.Take<typename Kind::Scratch>();
    for (int row = 0; row < band.rows; row += kUnitRows) {
        const int rows = std::min(kUnitRows, band.rows - row);
        band.places.Hold(band.firstRow + row, rows);
        if (!Kind::Render(band, row, rows, scratch.get()))
            return false;
    }
    band.idleMemory.Keep(std::move(scratch));
    return true;
}

/// Returns the block that starts @p x pixels and @p row rows into the band.
VITRELUX_INLINE Block BlockAt(const FittedWarp::Band &band, int x, int row)
{
    return {x, band.firstRow + row, std::min(kBlockPixels, band.columns - x),
            band.target + row * band.targetStride + std::int64_t(x) * kPixelBytes};
}

/// Bilinear sampling, block by block.
template <typename Set, bool kAlpha, bool kSplit> struct BilinearBlocks {
    struct Scratch : FittedWarp::IdleMemory::Piece { };

    /// Samples a block. Returns false if a source row isn't in memory.
    VITRELUX_INLINE static bool Sample(const FittedWarp::Band &band, const Block &block, const BlockPlaces &places,
                                       Float4 *samples)
    {
        ColorNeighbors at;
        for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color)
            FindNeighbors<typename Set::Floats>(block, places.of[color], &at[color]);
        if (!AllHeld<kSplit>(band, at, block.count))
            return SampleCarefully<kAlpha, kSplit>(band, at, block.count, samples);
        for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color)
            FindCorners(band, &at[color]);
        Prefetch(band, at[kGreen], block.count);
        Set::Bilinear::template Sample<kAlpha, kSplit>(band, at, 0, block.count, samples);
        return true;
    }

    VITRELUX_INLINE static bool Render(const FittedWarp::Band &band, int firstRow, int rows, Scratch *)
    {
        alignas(64) Float4 samples[kBlockPixels];
        BlockPlaces places;
        for (int row = firstRow; row < firstRow + rows; ++row) {
            for (int x = 0; x < band.columns; x += kBlockPixels) {
                const Block block = BlockAt(band, x, row);
                FindPlaces<typename Set::Floats>(band, block, &places);
                if (!Sample(band, block, places, samples))
                    return false;
                StoreLit<typename Set::Floats>(band, block, samples, places.gains);
            }
        }
        return true;
    }
};

} // namespace
