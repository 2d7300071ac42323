// Blocks of pixels and their sampling positions, for FittedWarp.
//
// Everything here and in the headers that include it is inlined into functions that are compiled once per instruction
// set, and must not be called from code compiled for another. Vectors are the compiler's vector types, which it maps to
// the target's instructions; each lane gives the same bits on every target.
#pragma once

#include "FittedPlaces.h"
#include "FittedWarpMemory_p.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__x86_64__) && !defined(VITRELUX_SCALAR)
#define VITRELUX_FITTED_VECTORS 1
#include <immintrin.h>
#else
#define VITRELUX_FITTED_VECTORS 0
#endif

#define VITRELUX_INLINE [[gnu::always_inline]] inline
#define VITRELUX_INLINED __attribute__((always_inline)) // for lambdas

/// Arguments of one call to Render, in the form that the loops need. Rows are counted from the picture's first row.
struct FittedWarp::Band {
    const CorrectionTwin &twin;
    FittedPlaces &places;
    IdleMemory &idleMemory;
    const TransferCurve &light;
    Source form;
    bool mayBeEmpty;
    const unsigned char *source; // address of the picture's first pixel, as if it were in memory
    std::int64_t sourceStride;   // bytes
    int pixelBytes;              // of the source
    int heldFirst, heldEnd;      // rows in memory
    unsigned char *target;
    std::int64_t targetStride;
    int width, height; // of the source
    int columns, rows; // of the target
    int firstRow;
};

namespace {

constexpr int kBlockPixels = 64;
constexpr int kPixelBytes = 16;

using Float4 = float __attribute__((vector_size(16)));

VITRELUX_INLINE Float4 Same(float value)
{
    return Float4{value, value, value, value};
}

/// Run of pixels in a row.
struct Block {
    int x, y, count;
    unsigned char *target;
};

/// Positions relative to their pixel in the block, at most FittedPlaces::kFar.
struct Places {
    alignas(64) float x[kBlockPixels];
    alignas(64) float y[kBlockPixels];
};

/// Light factors, and their roots if FittedPlaces::HasRoots. Full vectors can be read starting at any pixel.
struct Gains {
    static constexpr int kPadding = 16;

    alignas(64) float gain[kBlockPixels + kPadding];
    alignas(64) float root[kBlockPixels + kPadding];
};

enum Color { kGreen, kRed, kBlue, kColors };

struct BlockPlaces {
    Places of[kColors]; // only green's unless colors are split
    Gains gains;
};

template <typename Vector> VITRELUX_INLINE Vector LoadVector(const void *from)
{
    Vector value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <typename Floats> constexpr int kLanesOf = sizeof(Floats) / sizeof(float);
template <typename Floats> using LanesOf = std::make_integer_sequence<int, kLanesOf<Floats>>;

/// Repeats each value of @p cells kSide times, and returns vector @p kVector of the result.
template <int kSide, int kVector, typename Floats, int... kLane>
VITRELUX_INLINE Floats Repeat(Floats cells, std::integer_sequence<int, kLane...>)
{
    return __builtin_shufflevector(cells, cells, ((kVector * kLanesOf<Floats> + kLane) / kSide)...);
}

template <int kSide, int kVector, typename Floats, int... kLane>
VITRELUX_INLINE void FillVector(Floats left, Floats slope, float *out, std::integer_sequence<int, kLane...> lanes)
{
    constexpr int kFirst = kVector * kLanesOf<Floats>;
    const Floats steps = {static_cast<float>((kFirst + kLane) % kSide)...};
    const Floats values = Repeat<kSide, kVector>(left, lanes) + Repeat<kSide, kVector>(slope, lanes) * steps;
    std::memcpy(out + kFirst, &values, sizeof values);
}

/// Writes the pixel values of as many cells as a vector has lanes, or of all cells of the block if it has fewer.
template <int kSide, typename Floats, int... kVector>
VITRELUX_INLINE void FillCells(Floats left, Floats slope, float *out, std::integer_sequence<int, kVector...>)
{
    (FillVector<kSide, kVector>(left, slope, out, LanesOf<Floats>()), ...);
}

/// Interpolates a row of pixels between the corners of cells, @p share of the way from the upper to the lower ones.
/// Reads whole vectors of corners.
template <typename Floats, int kSide>
VITRELUX_INLINE void Interpolate(const float *above, const float *below, float share, float *out)
{
    constexpr int kCells = kBlockPixels / kSide, kVectors = std::min(kSide, kBlockPixels / kLanesOf<Floats>);
    const auto corner = [&](int i) VITRELUX_INLINED {
        const Floats from = LoadVector<Floats>(above + i), to = LoadVector<Floats>(below + i);
        return from + (to - from) * share;
    };
    for (int i = 0; i < kCells; i += kLanesOf<Floats>) {
        const Floats left = corner(i), slope = (corner(i + 1) - left) * (1.0F / kSide);
        FillCells<kSide>(left, slope, out + i * kSide, std::make_integer_sequence<int, kVectors>());
    }
}

template <typename Floats, int kSide>
VITRELUX_INLINE void FindSmoothly(const FittedPlaces &cells, const Block &block, BlockPlaces *places)
{
    float *const planes[FittedPlaces::kPlanes] = {places->gains.gain,   places->gains.root, places->of[kGreen].x,
                                                  places->of[kGreen].y, places->of[kRed].x, places->of[kRed].y,
                                                  places->of[kBlue].x,  places->of[kBlue].y};
    const float share = static_cast<float>(block.y % kSide) * (1.0F / kSide);
    for (int plane = 0; plane < cells.Planes(); ++plane) {
        if (plane == FittedPlaces::kGainRoot && !cells.HasRoots())
            continue;
        Interpolate<Floats, kSide>(cells.Corners(plane, block.y) + block.x / kSide,
                                   cells.Corners(plane, block.y + kSide) + block.x / kSide, share, planes[plane]);
    }
}

/// Gets each pixel's positions from the twin. Where a map has ended, they are far outside the picture.
inline void FindExactly(const CorrectionTwin &twin, const FittedPlaces &cells, const Block &block, BlockPlaces *places)
{
    for (int i = 0; i < kBlockPixels; ++i) {
        const double x = block.x + i, y = block.y;
        const SourcePlaces at = twin.At(x, y);
        const SourcePlaces::Point *const points[kColors] = {&at.green, &at.red, &at.blue};
        for (int color = kGreen; color < kColors; ++color) {
            places->of[color].x[i] = FittedPlaces::Near(at.folded ? NAN : points[color]->x - x);
            places->of[color].y[i] = FittedPlaces::Near(points[color]->y - y);
        }
        places->gains.gain[i] = static_cast<float>(at.gain);
        places->gains.root[i] = cells.RootOf(at.gain);
    }
}

/// Finds the sampling positions of a block. @p Floats is a full-width vector of the instruction set.
template <typename Floats>
VITRELUX_INLINE void FindPlaces(const FittedWarp::Band &band, const Block &block, BlockPlaces *places)
{
    const FittedPlaces &cells = band.places;
    const int side = cells.CellSidePixels();
    if (cells.IsRough(block.y, block.x / side, (block.x + kBlockPixels) / side))
        return FindExactly(band.twin, cells, block, places);
    switch (side) {
    case 8:
        return FindSmoothly<Floats, 8>(cells, block, places);
    case 4:
        return FindSmoothly<Floats, 4>(cells, block, places);
    case 2:
        return FindSmoothly<Floats, 2>(cells, block, places);
    default:
        return FindSmoothly<Floats, 1>(cells, block, places);
    }
}

/// Sampling positions as their upper left neighbors and the weights of the next column and row.
struct Neighbors {
    alignas(64) std::int32_t x[kBlockPixels], y[kBlockPixels];
    alignas(64) float fx[kBlockPixels], fy[kBlockPixels];
    alignas(64) std::int64_t corner[kBlockPixels]; // byte offset from the picture's first pixel, set by FindCorners
};

/// Rounds down; |value| <= 2^30. All instruction sets except the baseline have an instruction for it; the width of
/// @p Floats identifies the set.
template <typename Floats> VITRELUX_INLINE std::int32_t Floor(float value)
{
    if constexpr (sizeof(Floats) > sizeof(Float4))
        return static_cast<std::int32_t>(std::floor(value));
    const auto whole = static_cast<std::int32_t>(value);
    return whole - static_cast<std::int32_t>(static_cast<float>(whole) > value);
}

template <typename Floats>
VITRELUX_INLINE void FindNeighbors(const Block &block, const Places &places, Neighbors *neighbors)
{
    for (int i = 0; i < kBlockPixels; ++i) {
        const std::int32_t x = Floor<Floats>(places.x[i]), y = Floor<Floats>(places.y[i]);
        neighbors->x[i] = x + block.x + i;
        neighbors->y[i] = y + block.y;
        neighbors->fx[i] = places.x[i] - static_cast<float>(x);
        neighbors->fy[i] = places.y[i] - static_cast<float>(y);
    }
}

/// Neighbors of a block's sampling positions; only green's unless colors are split.
using ColorNeighbors = Neighbors[kColors];

/// Returns whether the four neighbors of the first @p count positions of each color are in memory.
template <bool kSplit> VITRELUX_INLINE bool AllHeld(const FittedWarp::Band &band, const ColorNeighbors &at, int count)
{
    const int right = band.width - 2, top = band.heldFirst, bottom = band.heldEnd - 2;
    const auto held = [&](int pixels) VITRELUX_INLINED {
        std::int32_t beyond = 0; // negative if any neighbor isn't in memory
        for (int i = 0; i < pixels; ++i)
            for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color)
                beyond |=
                    at[color].x[i] | (right - at[color].x[i]) | (at[color].y[i] - top) | (bottom - at[color].y[i]);
        return beyond >= 0;
    };
    return count == kBlockPixels ? held(kBlockPixels) : held(count); // a constant length gives pure vector code
}

/// Computes the offsets of neighbors, all of which must be in memory. Pixels past the block's end get meaningless ones.
VITRELUX_INLINE void FindCorners(const FittedWarp::Band &band, Neighbors *neighbors)
{
    const auto stride = static_cast<std::uint32_t>(band.sourceStride); // one instruction multiplies 32 x 32 to 64 bits
    for (int i = 0; i < kBlockPixels; ++i) {
        const auto x = static_cast<std::uint32_t>(neighbors->x[i]), y = static_cast<std::uint32_t>(neighbors->y[i]);
        neighbors->corner[i] = static_cast<std::int64_t>(std::uint64_t(y) * stride + std::uint64_t(x) * kPixelBytes);
    }
}

/// Returns whether the coordinate @p whole + @p rest, with @p rest from 0 to 1, is outside a side of @p length pixels.
VITRELUX_INLINE bool IsOutside(std::int32_t whole, float rest, int length)
{
    constexpr auto kBorder = static_cast<float>(CorrectionTwin::kBorderPixels);
    return whole < -1 || (whole == -1 && rest < 1.0F - kBorder) || whole >= length
        || (whole == length - 1 && rest > kBorder);
}

VITRELUX_INLINE bool IsEmpty(const FittedWarp::Band &band, const Neighbors &at, int i)
{
    return band.mayBeEmpty && (IsOutside(at.x[i], at.fx[i], band.width) || IsOutside(at.y[i], at.fy[i], band.height));
}

} // namespace
