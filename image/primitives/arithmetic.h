// Pixel-wise arithmetic on images and constants, comparisons and thresholds.
//
// The target may be one of the sources. Integer results are divided by 2 to the power of a scale factor, rounded to
// nearest and saturated.
#pragma once

#include "types.h"

namespace primitives {

/// Operations on the first and the second source. The first is the subtrahend or the divisor.
struct AddOp {
    template <typename V> static constexpr V Apply(V first, V second) { return second + first; }
};
struct SubOp {
    template <typename V> static constexpr V Apply(V first, V second) { return second - first; }
};
struct MulOp {
    template <typename V> static constexpr V Apply(V first, V second) { return second * first; }
};
struct DivOp {
    static constexpr float Apply(float first, float second) { return second / first; }
};

/// Returns value / 2^scaleFactor, with halves rounded up.
template <typename V> constexpr V ScaleDown(V value, int scaleFactor)
{
    return scaleFactor > 0 ? static_cast<V>((value + (V(1) << (scaleFactor - 1))) >> scaleFactor) : value;
}

/// Returns whether a scale factor is in range. Within it, ScaleDown overflows neither 32 bits for products of 8-bit
/// samples nor 64 bits for 16-bit samples.
constexpr bool IsScaleFactor(int scaleFactor)
{
    return scaleFactor >= 0 && scaleFactor <= 31;
}

template <typename Op, int C>
Status Combine(const Ipp32f *first, Step firstStep, const Ipp32f *second, Step secondStep, Ipp32f *dst, Step dstStep,
               Size size)
{
    return ForRows(first, firstStep, second, secondStep, dst, dstStep, size,
                   [n = RowSamples<C>(size)](const Ipp32f *a, const Ipp32f *b, Ipp32f *out) {
                       ForSamples(n, [=](std::int64_t i) { out[i] = Op::Apply(a[i], b[i]); });
                   });
}

template <typename Op, typename T, int C>
Status CombineScaled(const T *first, Step firstStep, const T *second, Step secondStep, T *dst, Step dstStep, Size size,
                     int scaleFactor)
{
    // Rounded 8-bit products fit in 32 bits, for which the loop vectorizes; 16-bit products need 64.
    using Wide = std::conditional_t<sizeof(T) == 1, std::int32_t, std::int64_t>;
    if (!IsScaleFactor(scaleFactor))
        return Status::BadArgument;
    const int shift = sizeof(T) == 1 && scaleFactor > 24 ? 24 : scaleFactor; // 255 * 255 / 2^24 is already 0
    return ForRows(first, firstStep, second, secondStep, dst, dstStep, size,
                   [=, n = RowSamples<C>(size)](const T *a, const T *b, T *out) {
                       ForSamples(n, [=](std::int64_t i) {
                           out[i] = Saturate<T>(ScaleDown(Op::Apply(Wide(a[i]), Wide(b[i])), shift));
                       });
                   });
}

/// Combines each channel with its constant.
template <typename Op, int C>
Status CombineConstants(const Ipp32f *src, Step srcStep, const Ipp32f constants[C], Ipp32f *dst, Step dstStep,
                        Size size)
{
    if (!constants)
        return Status::NullPointer;
    Ipp32f k[C];
    for (int c = 0; c < C; ++c)
        k[c] = constants[c];
    return ForRows(src, srcStep, dst, dstStep, size, [&k, width = size.width](const Ipp32f *srcRow, Ipp32f *dstRow) {
        ForSamples(width, [&](std::int64_t x) {
            for (int c = 0; c < C; ++c)
                dstRow[x * C + c] = Op::Apply(k[c], srcRow[x * C + c]);
        });
    });
}

template <typename Op>
Status CombineConstant(const Ipp32f *src, Step srcStep, Ipp32f constant, Ipp32f *dst, Step dstStep, Size size)
{
    return CombineConstants<Op, 1>(src, srcStep, &constant, dst, dstStep, size);
}

/// Multiplies each channel by its constant, then scales down. Constants may exceed the range of the type, so that a
/// factor above 1 brightens; negative ones give 0.
template <typename T, int C>
Status MulConstantsScaled(const T *src, Step srcStep, const int constants[C], T *dst, Step dstStep, Size size,
                          int scaleFactor)
{
    if (!constants)
        return Status::NullPointer;
    if (!IsScaleFactor(scaleFactor))
        return Status::BadArgument;
    std::int64_t k[C];
    for (int c = 0; c < C; ++c)
        k[c] = constants[c];
    return ForRows(src, srcStep, dst, dstStep, size, [&](const T *srcRow, T *dstRow) {
        ForSamples(size.width, [&](std::int64_t x) {
            for (int c = 0; c < C; ++c)
                dstRow[x * C + c] = Saturate<T>(ScaleDown(srcRow[x * C + c] * k[c], scaleFactor));
        });
    });
}

template <typename T>
Status MulConstantScaled(const T *src, Step srcStep, int constant, T *dst, Step dstStep, Size size, int scaleFactor)
{
    return MulConstantsScaled<T, 1>(src, srcStep, &constant, dst, dstStep, size, scaleFactor);
}

/// The values are part of the interface.
enum class Comparison { Less = 0, LessEqual = 1, Equal = 2, GreaterEqual = 3, Greater = 4 };

/// Writes a mask: 255 where the pixel compares true with @p constant, otherwise 0. NaN always gives 0.
template <typename T>
Status CompareConstant(const T *src, Step srcStep, T constant, Ipp8u *mask, Step maskStep, Size size, Comparison how)
{
    const auto fill = [&](auto holds) {
        return ForRows(src, srcStep, mask, maskStep, size, [&](const T *srcRow, Ipp8u *maskRow) {
            for (std::int64_t x = 0; x < size.width; ++x)
                maskRow[x] = holds(srcRow[x]) ? 255 : 0;
        });
    };
    switch (how) {
    case Comparison::Less:
        return fill([=](T v) { return v < constant; });
    case Comparison::LessEqual:
        return fill([=](T v) { return v <= constant; });
    case Comparison::Equal:
        return fill([=](T v) { return v == constant; });
    case Comparison::GreaterEqual:
        return fill([=](T v) { return v >= constant; });
    case Comparison::Greater:
        return fill([=](T v) { return v > constant; });
    }
    return Status::BadArgument;
}

/// Sets pixels below (Less) or above (Greater) @p threshold to @p value; copies the others.
template <typename T>
Status ThresholdValue(const T *src, Step srcStep, T *dst, Step dstStep, Size size, T threshold, T value, Comparison how)
{
    if (how != Comparison::Less && how != Comparison::Greater)
        return Status::BadArgument;
    const bool below = how == Comparison::Less;
    return ForRows(src, srcStep, dst, dstStep, size, [=, width = size.width](const T *srcRow, T *dstRow) {
        ForSamples(width, [&](std::int64_t x) {
            const T v = srcRow[x];
            dstRow[x] = (below ? v < threshold : v > threshold) ? value : v;
        });
    });
}

} // namespace primitives
