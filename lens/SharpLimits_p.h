// How far sharp samples may lie beyond the pixels around them.
//
// A sharp kernel overshoots beside edges. A sample may lie beyond its four nearest pixels only where the values
// themselves turn, since a wave may well peak there, in a row or a column:
// - between two pixels, as far as the slopes on the outer sides of both lead when they are halved;
// - beside a pixel that exceeds both of its neighbors, by a quarter of the lesser difference.
// Next to an edge one of these slopes is 0, and the sample stays between the pixels. What a row allows and what a
// column allows add up. None of it depends on where between the pixels a sample is taken, so it is computed once per
// pixel.
#pragma once

#include "FittedWarpPlaces_p.h"

#include <type_traits>

namespace {

template <typename Vector> VITRELUX_INLINE Vector Least(Vector a, Vector b)
{
    return a < b ? a : b;
}

template <typename Vector> VITRELUX_INLINE Vector Greatest(Vector a, Vector b)
{
    return a > b ? a : b;
}

template <typename Vector> constexpr bool kIsFloat = std::is_floating_point_v<std::decay_t<decltype(Vector{}[0])>>;

template <typename Vector> VITRELUX_INLINE Vector Half(Vector value)
{
    if constexpr (kIsFloat<Vector>)
        return value * 0.5F;
    else
        return value >> 1;
}

template <typename Vector> VITRELUX_INLINE Vector LoadVector(const void *from)
{
    Vector value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// By how much samples between the middle two of four values in a line may exceed the greater one, and fall below the
/// lesser one.
template <typename Vector> struct Allowance {
    Vector up, down;
};

template <typename Vector> VITRELUX_INLINE Allowance<Vector> AllowanceOf(Vector v0, Vector v1, Vector v2, Vector v3)
{
    const Vector before = v1 - v0, between = v2 - v1, after = v3 - v2, zero = {};
    const Vector left = v1 + Half(before), right = v2 - Half(after);
    const Vector least = Least(v1, v2), greatest = Greatest(v1, v2); // taken in before differences, which fit then
    const Vector up = Greatest(Least(left, right), greatest) - greatest;
    const Vector down = least - Least(Greatest(left, right), least);
    const Vector top = Greatest(Least(before, zero - between), Least(between, zero - after));
    const Vector dip = Greatest(Least(zero - before, between), Least(zero - between, after));
    return {Greatest(up, Half(Half(top))), Greatest(down, Half(Half(dip)))};
}

template <typename Vector> VITRELUX_INLINE Allowance<Vector> Either(Allowance<Vector> a, Allowance<Vector> b)
{
    return {Greatest(a.up, b.up), Greatest(a.down, b.down)};
}

template <typename Vector> struct Limits {
    Vector lowest, highest;
};

/// For samples between four pixels each, of which the first ones start at @p value. 16-bit values are signed and the
/// limits half of them, rounded down, so that differences fit.
template <typename Vector, typename Value> VITRELUX_INLINE Limits<Vector> LimitsAt(const Value *value, int stride)
{
    const auto at = [&](int right, int down) VITRELUX_INLINED {
        const Vector loaded = LoadVector<Vector>(value + down * stride + right);
        return kIsFloat<Vector> ? loaded : Half(loaded);
    };
    const Vector a = at(0, 0), b = at(1, 0), c = at(0, 1), d = at(1, 1);
    const auto row =
        Either(AllowanceOf<Vector>(at(-1, 0), a, b, at(2, 0)), AllowanceOf<Vector>(at(-1, 1), c, d, at(2, 1)));
    const auto column =
        Either(AllowanceOf<Vector>(at(0, -1), a, c, at(0, 2)), AllowanceOf<Vector>(at(1, -1), b, d, at(1, 2)));
    const Vector least = Least(Least(a, b), Least(c, d)), greatest = Greatest(Greatest(a, b), Greatest(c, d));
    Vector up = row.up + column.up, down = row.down + column.down; // at most 2^15 - 2 as halves of halves
    if constexpr (!kIsFloat<Vector>) {
        constexpr short kLowest = -16384, kHighest = 16383; // halved
        up = Least<Vector>(up, kHighest - greatest);
        down = Least<Vector>(down, least - kLowest);
    }
    return {least - down, greatest + up};
}

} // namespace
