// Gain of FittedWarp: converts samples to linear light by formula or table, multiplies and stores them. Compiled once
// per instruction set.
#pragma once

#include "FittedWarpPlaces_p.h"

#include <limits>
#include <type_traits>

namespace {

/// Clamps to 0..1; NaN becomes 0.
template <typename Floats> VITRELUX_INLINE Floats Limited(Floats value)
{
    const Floats zero = {}, one = zero + 1.0F;
    value = value > zero ? value : zero;
    return value < one ? value : one;
}

#if VITRELUX_FITTED_VECTORS
/// Same as above in two instructions, which compilers don't generate for the general version.
template <> VITRELUX_INLINE Float4 Limited(Float4 value)
{
    return _mm_min_ps(_mm_max_ps(value, _mm_setzero_ps()), _mm_set1_ps(1.0F));
}
#endif

/// Maps colors through one table per channel. Values are at least 0, or NaN.
VITRELUX_INLINE Float4 Through(const TransferCurve::Table *const (&tables)[3], Float4 value)
{
    using Int4 = std::int32_t __attribute__((vector_size(16)));
    const TransferCurve::Table &shape = *tables[0]; // the same for all three
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

/// Gain by tables: multiplies the light of stored values; alpha is unchanged.
struct Light {
    explicit Light(const TransferCurve &light)
        : toLight{&light.LightTable(0), &light.LightTable(1), &light.LightTable(2)},
          toStored{&light.StoredTable(0), &light.StoredTable(1), &light.StoredTable(2)}
    {
    }

    VITRELUX_INLINE Float4 Amplified(Float4 sample, float gain) const
    {
        const Float4 stored = Magnitude(sample);
        Float4 lit = Through(toStored, Through(toLight, stored) * Same(gain));
        if (gain >= 1.0F) // where a curve is flat, inverting it doesn't restore the value
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
#if VITRELUX_FITTED_VECTORS
    if constexpr (sizeof mask == sizeof(__m128))
        return _mm_movemask_ps(LoadVector<__m128>(&mask)) != 0;
#endif
    using Longs = std::int64_t __attribute__((vector_size(16)));
    Longs parts[sizeof mask / sizeof(Longs)], any = {};
    std::memcpy(parts, &mask, sizeof mask);
    for (const Longs &part : parts)
        any |= part;
    return (any[0] | any[1]) != 0;
}

template <typename Floats, int... kLane>
VITRELUX_INLINE Floats ForPixels(Floats values, Floats alpha, std::integer_sequence<int, kLane...>)
{
    return __builtin_shufflevector(values, alpha, (kLane % 4 == 3 ? kLanesOf<Floats> : kLane / 4)...);
}

/// Returns one value per pixel in its three color lanes, and @p alpha in its fourth. Reads a whole vector.
template <typename Floats> VITRELUX_INLINE Floats ForPixels(const float *values, float alpha)
{
    return ForPixels(LoadVector<Floats>(values), Floats{} + alpha, LanesOf<Floats>());
}

/// Gain by formula, for gains of at least 1.
template <typename Floats> struct FormulaLight {
    VITRELUX_INLINE explicit FormulaLight(const TransferCurve::Formula &formula)
    {
        const Floats zero = {}, noToe = zero - std::numeric_limits<float>::infinity();
        offset = ForPixels(zero + static_cast<float>(formula.offset), zero, LanesOf<Floats>());
        toe = ForPixels(zero + static_cast<float>(formula.toe), noToe, LanesOf<Floats>());
    }

    /// Returns the pixels of a vector, multiplied and clamped. Sets @p simple to false if a gain lifts a value out of
    /// the linear toe: the result is then invalid, because it requires a power.
    VITRELUX_INLINE Floats Amplified(Floats stored, const float *gain, const float *root, bool *simple) const
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

/// Multiplies the light of the samples by the block's gains, by formula, and stores them.
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
        Float4 lit = formulaOfOne.Amplified(samples[i], gains.gain + i, gains.root + i, &simple);
        if (!simple)
            lit = Limited(tables.Amplified(samples[i], gains.gain[i]));
        std::memcpy(block.target + i * kPixelBytes, &lit, sizeof lit);
    };
    int hard[kBlockPixels], hardCount = 0, i = 0;
    for (; i + kPixels <= block.count; i += kPixels) {
        bool simple;
        const Floats lit = formula.Amplified(LoadVector<Floats>(samples + i), gains.gain + i, gains.root + i, &simple);
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

/// Multiplies linear samples by the block's gains and stores them.
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
    // At most eight lanes: for masks of longer vectors, compilers emit code that is ten times slower.
    using Float8 = float __attribute__((vector_size(32)));
    using Masked = std::conditional_t<(sizeof(Floats) > sizeof(Float8)), Float8, Floats>;
    if (band.places.HasRoots() && !AnyBelowOne(gain, block.count))
        return StoreByFormula<Masked>(band, block, samples, gains);
    const Light light(band.light);
    for (int i = 0; i < block.count; ++i)
        Store(band, block.target + i * kPixelBytes, light.Amplified(samples[i], gain[i]));
}

} // namespace
