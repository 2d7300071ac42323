// Blocks of pixels and their places, for FittedWarp.
//
// Everything here and in the headers that include it is inlined into functions that are compiled once per instruction
// set, and must not be called from code for other processors. Vectors are the compiler's vector types, which it maps to
// whatever the target has; each lane gives the same bits everywhere.
#pragma once

#include "FittedPlaces.h"
#include "FittedWarp.h"

#include <cmath>
#include <cstdint>
#include <cstring>

#define VITRELUX_INLINE [[gnu::always_inline]] inline
#define VITRELUX_INLINED __attribute__((always_inline)) // for lambdas

/// Arguments of one call of Render, as the loops need them. Rows are counted from the picture's first row.
struct FittedWarp::Band {
    const CorrectionTwin &twin;
    FittedPlaces &places;
    const TransferCurve &light;
    Source form;
    bool mayBeEmpty;
    const unsigned char *source; // where the picture's first pixel would be if it were in memory
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

/// A run of pixels in a row.
struct Block {
    int x, y, count;
    unsigned char *target;
};

/// Positions relative to the pixel of the block that they belong to.
struct Places {
    alignas(64) float x[kBlockPixels];
    alignas(64) float y[kBlockPixels];
};

/// Factors of light, and their roots if FittedPlaces::HasRoots.
struct Gains {
    alignas(64) float gain[kBlockPixels];
    alignas(64) float root[kBlockPixels];
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

/// Interpolates between the upper and lower corners of cells, @p share of the way down. Reads whole vectors of corners.
template <typename Floats, int kSide>
VITRELUX_INLINE void Interpolate(const float *above, const float *below, float share, float *out)
{
    constexpr int kCells = kBlockPixels / kSide, kLanes = sizeof(Floats) / sizeof(float);
    float corner[kCells + FittedPlaces::kPadding];
    for (int i = 0; i <= kCells; i += kLanes) {
        const Floats from = LoadVector<Floats>(above + i), to = LoadVector<Floats>(below + i);
        const Floats mixed = from + (to - from) * share;
        std::memcpy(corner + i, &mixed, sizeof mixed);
    }
    float steps[kBlockPixels];
    for (int j = 0; j < kSide; ++j)
        steps[j] = static_cast<float>(j);
    for (int i = 0; i < kCells; ++i) {
        const float left = corner[i], slope = (corner[i + 1] - left) * (1.0F / kSide);
        for (int j = 0; kSide % kLanes == 0 && j < kSide; j += kLanes) {
            const Floats values = left + slope * LoadVector<Floats>(steps + j);
            std::memcpy(out + i * kSide + j, &values, sizeof values);
        }
        for (int j = 0; kSide % kLanes != 0 && j < kSide; ++j)
            out[i * kSide + j] = left + slope * steps[j];
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

/// Gets each pixel's places from the twin; NaN where a map folds.
inline void FindExactly(const CorrectionTwin &twin, const FittedPlaces &cells, const Block &block, BlockPlaces *places)
{
    for (int i = 0; i < kBlockPixels; ++i) {
        const double x = block.x + i, y = block.y;
        const SourcePlaces at = twin.At(x, y);
        const SourcePlaces::Point *const points[kColors] = {&at.green, &at.red, &at.blue};
        for (int color = kGreen; color < kColors; ++color) {
            places->of[color].x[i] = at.folded ? NAN : static_cast<float>(points[color]->x - x);
            places->of[color].y[i] = static_cast<float>(points[color]->y - y);
        }
        places->gains.gain[i] = static_cast<float>(at.gain);
        places->gains.root[i] = cells.RootOf(at.gain);
    }
}

/// Finds the places of a block. @p Floats is a full-width vector of the instruction set.
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

/// Places as the pixel above and to the left, and the weights of the next column and row.
struct Neighbors {
    alignas(64) std::int32_t x[kBlockPixels], y[kBlockPixels];
    alignas(64) float fx[kBlockPixels], fy[kBlockPixels];
};

/// Rounds down; @p rest receives the remainder. Values beyond +-2^23 are clamped, and NaN becomes one of these bounds.
VITRELUX_INLINE std::int32_t Floor(float value, float *rest)
{
    constexpr float kFar = 8388608.0F;     // no picture is as large
    value = value > -kFar ? value : -kFar; // also for NaN
    value = value < kFar ? value : kFar;
    auto whole = static_cast<std::int32_t>(value);
    whole -= static_cast<float>(whole) > value;
    *rest = value - static_cast<float>(whole);
    return whole;
}

VITRELUX_INLINE void FindNeighbors(const Block &block, const Places &places, Neighbors *neighbors)
{
    for (int i = 0; i < kBlockPixels; ++i) {
        neighbors->x[i] = Floor(places.x[i], &neighbors->fx[i]) + block.x + i;
        neighbors->y[i] = Floor(places.y[i], &neighbors->fy[i]) + block.y;
    }
}

/// Whether the first @p count places have all pixels from @p reach before to @p reach + 1 after them in memory.
VITRELUX_INLINE bool AllHeld(const FittedWarp::Band &band, const Neighbors &at, int count, int reach)
{
    const int left = reach, right = band.width - 2 - reach, top = band.heldFirst + reach,
              bottom = band.heldEnd - 2 - reach;
    int beyond = 0;
    for (int i = 0; i < count; ++i)
        beyond |= (at.x[i] < left) | (at.x[i] > right) | (at.y[i] < top) | (at.y[i] > bottom);
    return beyond == 0;
}

/// Whether the place between pixel @p whole and the next is outside a side of @p length pixels.
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
