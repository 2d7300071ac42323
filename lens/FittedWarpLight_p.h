// Gains of FittedWarp: converts samples to linear light by a formula or by tables, multiplies and stores them. Compiled
// once per instruction set.
#pragma once

#include "FittedWarpPlaces_p.h"

#include <limits>

namespace {

VITRELUX_INLINE Float4 Same(float value)
{
    return Float4{value, value, value, value};
}

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

/// Multiplies the light of stored values; alpha is unchanged.
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

/// Returns one value per pixel in its three color lanes, and @p alpha in its fourth.
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

    /// Returns the pixels of a vector, multiplied and limited. Sets @p simple to false if a value passes the toe, which
    /// takes a power.
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

} // namespace
