// The loops of FittedWarp, compiled once per instruction set.
#pragma once

#include "FittedWarpPlaces_p.h"

#include <algorithm>
#include <memory>

namespace {

// --- Bilinear ---

VITRELUX_INLINE Float4 Load(const unsigned char *pixel)
{
    Float4 value;
    std::memcpy(&value, pixel, sizeof value);
    return value;
}

VITRELUX_INLINE Float4 Same(float value)
{
    return Float4{value, value, value, value};
}

/// Returns the colors times alpha, and alpha.
VITRELUX_INLINE Float4 Premultiplied(Float4 pixel)
{
    return pixel * Float4{pixel[3], pixel[3], pixel[3], 1.0F};
}

/// Loads a pixel as a term of a weighted sum.
template <bool kAlpha> VITRELUX_INLINE Float4 LoadTerm(const unsigned char *pixel)
{
    return kAlpha ? Premultiplied(Load(pixel)) : Load(pixel);
}

/// Converts a weighted sum to a pixel: divides the colors by alpha, or sets alpha to 1 if there is none.
template <bool kAlpha> VITRELUX_INLINE Float4 Finished(Float4 sum)
{
    if (!kAlpha)
        return Float4{sum[0], sum[1], sum[2], 1.0F};
    const float scale = sum[3] > 0.0F ? 1.0F / sum[3] : 0.0F;
    return sum * Float4{scale, scale, scale, 1.0F};
}

/// Mixes four pixels; @p at(right, down) returns the address of the one at these steps, 0 or 1.
template <bool kAlpha, typename Pixel> VITRELUX_INLINE Float4 Mix(float fx, float fy, Pixel at)
{
    const Float4 x = Same(fx), restX = Same(1.0F - fx), y = Same(fy), restY = Same(1.0F - fy);
    const Float4 top = LoadTerm<kAlpha>(at(0, 0)) * restX + LoadTerm<kAlpha>(at(1, 0)) * x;
    const Float4 bottom = LoadTerm<kAlpha>(at(0, 1)) * restX + LoadTerm<kAlpha>(at(1, 1)) * x;
    return Finished<kAlpha>(top * restY + bottom * y);
}

template <bool kAlpha> VITRELUX_INLINE Float4 SampleHeld(const FittedWarp::Band &band, const Neighbors &at, int i)
{
    const unsigned char *corner = band.source + at.y[i] * band.sourceStride + std::int64_t(at.x[i]) * kPixelBytes;
    return Mix<kAlpha>(at.fx[i], at.fy[i], [&](int right, int down) VITRELUX_INLINED {
        return corner + right * kPixelBytes + down * band.sourceStride;
    });
}

/// Samples near the picture's edges, which repeat. Returns false if a row isn't in memory.
template <bool kAlpha>
inline bool SampleAnywhere(const FittedWarp::Band &band, const Neighbors &at, int i, Float4 *sample)
{
    const int rowOf[2] = {std::clamp(at.y[i], 0, band.height - 1), std::clamp(at.y[i] + 1, 0, band.height - 1)};
    if (rowOf[0] < band.heldFirst || rowOf[1] >= band.heldEnd)
        return false;
    *sample = Mix<kAlpha>(at.fx[i], at.fy[i], [&](int right, int down) {
        const int x = std::clamp(at.x[i] + right, 0, band.width - 1);
        return band.source + rowOf[down] * band.sourceStride + std::int64_t(x) * kPixelBytes;
    });
    return true;
}

/// Joins the first lane of @p red, the second and fourth of @p green and the third of @p blue.
VITRELUX_INLINE Float4 Join(Float4 red, Float4 green, Float4 blue)
{
    return Float4{red[0], green[1], blue[2], green[3]};
}

/// Neighbors of a block's places; only green's unless colors are split.
using ColorNeighbors = Neighbors[kColors];

/// Samples each color at its place; all neighbors must be in memory.
template <bool kAlpha> VITRELUX_INLINE Float4 SampleSplit(const FittedWarp::Band &band, const ColorNeighbors &at, int i)
{
    if constexpr (kAlpha)
        return Join(SampleHeld<true>(band, at[kRed], i), SampleHeld<true>(band, at[kGreen], i),
                    SampleHeld<true>(band, at[kBlue], i));
    const auto corner = [&](const Neighbors &color) VITRELUX_INLINED {
        return band.source + color.y[i] * band.sourceStride + std::int64_t(color.x[i]) * kPixelBytes;
    };
    const unsigned char *red = corner(at[kRed]), *green = corner(at[kGreen]), *blue = corner(at[kBlue]);
    const auto load = [&](std::int64_t step)
                          VITRELUX_INLINED { return Join(Load(red + step), Load(green + step), Load(blue + step)); };
    const Float4 x = {at[kRed].fx[i], at[kGreen].fx[i], at[kBlue].fx[i], 0.0F}, restX = 1.0F - x;
    const Float4 y = {at[kRed].fy[i], at[kGreen].fy[i], at[kBlue].fy[i], 0.0F}, restY = 1.0F - y;
    const std::int64_t down = band.sourceStride;
    const Float4 top = load(0) * restX + load(kPixelBytes) * x;
    const Float4 bottom = load(down) * restX + load(down + kPixelBytes) * x;
    return Finished<false>(top * restY + bottom * y);
}

/// Samples pixel by pixel, for edges and empty pixels. Returns false if a row isn't in memory.
template <bool kAlpha, bool kSplit>
VITRELUX_INLINE bool SampleCarefully(const FittedWarp::Band &band, const ColorNeighbors &at, int count, Float4 *samples)
{
    for (int i = 0; i < count; ++i) {
        samples[i] = Same(0.0F);
        if (IsEmpty(band, at[kGreen], i) || (kSplit && (IsEmpty(band, at[kRed], i) || IsEmpty(band, at[kBlue], i))))
            continue;
        Float4 green, red, blue;
        if (!SampleAnywhere<kAlpha>(band, at[kGreen], i, &green))
            return false;
        samples[i] = green;
        if constexpr (kSplit) {
            if (!SampleAnywhere<kAlpha>(band, at[kRed], i, &red) || !SampleAnywhere<kAlpha>(band, at[kBlue], i, &blue))
                return false;
            samples[i] = Join(red, green, blue);
        }
    }
    return true;
}

/// Prefetches source rows for the next rows of the result: the processor doesn't predict curved lines.
VITRELUX_INLINE void Prefetch(const FittedWarp::Band &band, const Neighbors &at, int count)
{
    constexpr int kLinePixels = 4, kRowsAhead = 3;
    for (int i = 0; i < count; i += kLinePixels)
        __builtin_prefetch(band.source + (at.y[i] + kRowsAhead) * band.sourceStride
                           + std::int64_t(at.x[i]) * kPixelBytes);
}

// --- Light ---

template <typename Floats> VITRELUX_INLINE Floats Limited(Floats value)
{
    const Floats zero = {}, one = zero + 1.0F;
    value = value > zero ? value : zero;
    return value < one ? value : one;
}

/// Maps colors through one table per channel. Arguments are at least 0 or NaN.
VITRELUX_INLINE Float4 Through(const TransferCurve::Table *const (&tables)[3], Float4 value)
{
    using Int4 = std::int32_t __attribute__((vector_size(16)));
    const TransferCurve::Table &shape = *tables[0]; // the same for all
    const Float4 least = Same(shape.least), greatest = Same(shape.greatest);
    Float4 held = value > least ? value : least;
    held = held < greatest ? held : greatest;
    Int4 bits;
    std::memcpy(&bits, &held, sizeof bits);
    const Int4 index = (bits >> shape.shift) - shape.first;
    TransferCurve::Table::Segment segments[3];
    for (int channel = 0; channel < 3; ++channel)
        segments[channel] = tables[channel]->segments.data()[index[channel]];
    return Float4{segments[0].start, segments[1].start, segments[2].start, 0.0F}
    + Float4{segments[0].slope, segments[1].slope, segments[2].slope, 0.0F} * value;
}

VITRELUX_INLINE Float4 Magnitude(Float4 value)
{
    return value < Same(0.0F) ? -value : value;
}

/// Multiplier of the light of stored values; alpha stays.
struct Light {
    explicit Light(const TransferCurve &light)
        : toLight{&light.LightTable(0), &light.LightTable(1), &light.LightTable(2)},
          toStored{&light.StoredTable(0), &light.StoredTable(1), &light.StoredTable(2)}
    {
    }

    VITRELUX_INLINE Float4 Grown(Float4 sample, float gain) const
    {
        const Float4 stored = Magnitude(sample);
        Float4 lit = Through(toStored, Through(toLight, stored) * Same(gain));
        if (gain >= 1.0F) // where a curve is level, its inverse is not the value
            lit = lit > stored ? lit : stored;
        lit = sample < Same(0.0F) ? -lit : lit;
        return Float4{lit[0], lit[1], lit[2], sample[3]};
    }

    const TransferCurve::Table *toLight[3], *toStored[3];
};

VITRELUX_INLINE void Store(const FittedWarp::Band &band, unsigned char *target, Float4 lit)
{
    if (!band.form.isFloat)
        lit = Limited(lit);
    std::memcpy(target, &lit, sizeof lit);
}

template <typename Mask> VITRELUX_INLINE bool IsAny(const Mask &mask)
{
    using Longs = std::int64_t __attribute__((vector_size(16)));
    Longs parts[sizeof mask / sizeof(Longs)], any = {};
    std::memcpy(parts, &mask, sizeof mask);
    for (const Longs &part : parts)
        any |= part;
    return (any[0] | any[1]) != 0;
}

/// @p values for the colors of the pixels of a vector, @p alpha for their fourth lanes.
template <typename Floats> VITRELUX_INLINE Floats ForPixels(const float *values, float alpha)
{
    if constexpr (sizeof(Floats) == sizeof(Float4))
        return Floats{values[0], values[0], values[0], alpha};
    else
        return Floats{values[0], values[0], values[0], alpha, values[1], values[1], values[1], alpha};
}

/// The same by a formula instead of tables, for gains from 1 on.
template <typename Floats> struct FormulaLight {
    VITRELUX_INLINE explicit FormulaLight(const TransferCurve::Formula &formula)
    {
        const float values[] = {static_cast<float>(formula.offset), static_cast<float>(formula.offset)};
        const float toes[] = {static_cast<float>(formula.toe), static_cast<float>(formula.toe)};
        offset = ForPixels<Floats>(values, 0.0F);
        toe = ForPixels<Floats>(toes, -std::numeric_limits<float>::infinity());
    }

    /// Limited pixels of a vector. Not @p simple if one of their values passes the toe, which takes a power.
    VITRELUX_INLINE Floats Grown(Floats stored, const float *gain, const float *root, bool *simple) const
    {
        const Floats onLine = stored * ForPixels<Floats>(gain, 1.0F);
        const Floats onCurve = (stored + offset) * ForPixels<Floats>(root, 1.0F) - offset;
        const auto isLow = stored < toe;
        const auto passes = isLow & (onLine > toe);
        *simple = !IsAny(passes);
        return Limited(isLow ? onLine : onCurve);
    }

    Floats offset, toe;
};

/// Multiplies the light of a block by its gains.
template <typename Floats>
VITRELUX_INLINE void StoreByFormula(const FittedWarp::Band &band, const Block &block, const Float4 *samples,
                                    const Gains &gains)
{
    const FormulaLight<Floats> formula(*band.light.ByFormula());
    const FormulaLight<Float4> formulaOfOne(*band.light.ByFormula());
    const Light tables(band.light);
    constexpr int kPixels = sizeof(Floats) / kPixelBytes;
    const auto storeOne = [&](int i) VITRELUX_INLINED {
        bool simple;
        Float4 lit = formulaOfOne.Grown(samples[i], gains.gain + i, gains.root + i, &simple);
        if (!simple)
            lit = Limited(tables.Grown(samples[i], gains.gain[i]));
        std::memcpy(block.target + i * kPixelBytes, &lit, sizeof lit);
    };
    int hard[kBlockPixels], hardCount = 0, i = 0;
    for (; i + kPixels <= block.count; i += kPixels) {
        bool simple;
        const Floats lit = formula.Grown(LoadVector<Floats>(samples + i), gains.gain + i, gains.root + i, &simple);
        std::memcpy(block.target + i * kPixelBytes, &lit, sizeof lit);
        hard[hardCount] = i;
        hardCount += int(!simple);
    }
    for (; i < block.count; ++i)
        storeOne(i);
    for (int j = 0; j < hardCount; ++j)
        for (int pixel = 0; pixel < kPixels; ++pixel)
            storeOne(hard[j] + pixel);
}

/// Multiplies stored values by a block's gains.
template <typename Floats, bool kLimited>
VITRELUX_INLINE void StoreLinear(const Block &block, const Float4 *samples, const float *gain)
{
    constexpr int kPixels = sizeof(Floats) / kPixelBytes;
    unsigned char *const target = block.target;
    const int count = block.count;
    int i = 0;
    for (; i + kPixels <= count; i += kPixels) {
        const Floats lit = LoadVector<Floats>(samples + i) * ForPixels<Floats>(gain + i, 1.0F);
        const Floats stored = kLimited ? Limited(lit) : lit;
        std::memcpy(target + i * kPixelBytes, &stored, sizeof stored);
    }
    for (; i < count; ++i) {
        const Float4 lit = samples[i] * ForPixels<Float4>(gain + i, 1.0F);
        const Float4 stored = kLimited ? Limited(lit) : lit;
        std::memcpy(target + i * kPixelBytes, &stored, sizeof stored);
    }
}

VITRELUX_INLINE bool AnyBelowOne(const float *gain, int count)
{
    int below = 0;
    for (int i = 0; i < count; ++i)
        below |= gain[i] < 1.0F;
    return below != 0;
}

/// Multiplies the light of the samples by the block's gains and stores them.
template <typename Floats>
VITRELUX_INLINE void StoreLit(const FittedWarp::Band &band, const Block &block, const Float4 *samples,
                              const Gains &gains)
{
    const float *const gain = gains.gain;
    if (band.light.IsLinear())
        return band.form.isFloat ? StoreLinear<Floats, false>(block, samples, gain)
                                 : StoreLinear<Floats, true>(block, samples, gain);
    if (band.places.HasRoots() && !AnyBelowOne(gain, block.count))
        return StoreByFormula<Floats>(band, block, samples, gains);
    const Light light(band.light);
    for (int i = 0; i < block.count; ++i)
        Store(band, block.target + i * kPixelBytes, light.Grown(samples[i], gain[i]));
}

// --- Rows ---

constexpr int kUnitRows = 64;

/// Renders the band by @p Kind, kUnitRows rows at a time. Returns false if a row isn't in memory.
template <typename Kind> VITRELUX_INLINE bool RenderRows(const FittedWarp::Band &band)
{
    const auto scratch = std::make_unique<typename Kind::Scratch>();
    for (int row = 0; row < band.rows; row += kUnitRows) {
        const int rows = std::min(kUnitRows, band.rows - row);
        band.places.Hold(band.firstRow + row, rows);
        if (!Kind::Render(band, row, rows, scratch.get()))
            return false;
    }
    return true;
}

/// Returns the block that starts @p x pixels and @p row rows into the band.
VITRELUX_INLINE Block BlockAt(const FittedWarp::Band &band, int x, int row)
{
    return {x, band.firstRow + row, std::min(kBlockPixels, band.columns - x),
            band.target + row * band.targetStride + std::int64_t(x) * kPixelBytes};
}

/// Bilinear sampling, block by block.
template <typename Set, bool kAlpha, bool kSplit> struct Bilinear {
    struct Scratch { };

    /// Returns false if a row isn't in memory.
    VITRELUX_INLINE static bool Sample(const FittedWarp::Band &band, const Block &block, const BlockPlaces &places,
                                       Float4 *samples)
    {
        ColorNeighbors at;
        bool allHeld = true;
        for (int color = kGreen; color < (kSplit ? kColors : kGreen + 1); ++color) {
            FindNeighbors(block, places.of[color], &at[color]);
            allHeld &= AllHeld(band, at[color], block.count, /*reach=*/0);
        }
        if (!allHeld)
            return SampleCarefully<kAlpha, kSplit>(band, at, block.count, samples);
        Prefetch(band, at[kGreen], block.count);
        for (int i = 0; i < block.count; ++i)
            samples[i] = kSplit ? SampleSplit<kAlpha>(band, at, i) : SampleHeld<kAlpha>(band, at[kGreen], i);
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
