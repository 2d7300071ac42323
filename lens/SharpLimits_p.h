// Limits of sharp samples: how far they may exceed the pixels around them.
//
// A sharp kernel overshoots at edges. A sample may exceed its four nearest pixels only next to an extremum along a row
// or a column, because a wave can peak only there:
// - between two pixels: half of the slope on the far side of each is continued for one pixel, and the sample may reach
//   the smaller of the two results;
// - next to a pixel that exceeds both of its neighbors: the sample may exceed it by half of the smaller difference.
// At an edge, one of these slopes is 0, and the sample stays between the pixels. The row's and the column's allowances
// are added. They don't depend on the position between the pixels, so they are computed once per pixel.
#pragma once

#include "FittedWarpPlaces_p.h"

#include <type_traits>
#include <utility>
#include <vector>

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

/// Amounts by which samples between the middle two of four values in a line may exceed the larger and fall below the
/// smaller.
template <typename Vector> struct Allowance {
    Vector up, down;
};

template <typename Vector> VITRELUX_INLINE Allowance<Vector> AllowanceOf(Vector v0, Vector v1, Vector v2, Vector v3)
{
    const Vector before = v1 - v0, between = v2 - v1, after = v3 - v2, zero = {};
    const Vector left = v1 + Half(before), right = v2 - Half(after);
    const Vector least = Least(v1, v2), greatest = Greatest(v1, v2);
    // Clamp before subtracting, so that differences fit in 16 bits.
    const Vector up = Greatest(Least(left, right), greatest) - greatest;
    const Vector down = least - Least(Greatest(left, right), least);
    const Vector top = Greatest(Least(before, zero - between), Least(between, zero - after));
    const Vector dip = Greatest(Least(zero - before, between), Least(zero - between, after));
    return {Greatest(up, Half(top)), Greatest(down, Half(dip))};
}

template <typename Vector> struct Limits {
    Vector lowest, highest;
};

/// Limits of samples in a box, row by row. The allowance of each line of four values is kept, because two cells use it.
/// Pixels of a row are @p kStep values apart, with other colors between them. 16-bit values are halved so that
/// differences fit; their limits are halved, too.
template <typename Value, int kStep> class AllowanceRows {
public:
    /// Starts with the row at @p row, in a box of @p width columns.
    template <typename Vector> VITRELUX_INLINE void Start(const Value *row, int stride, int width)
    {
        for (std::vector<Value> *values : {&m_aboveUp, &m_aboveDown, &m_belowUp, &m_belowDown, &m_up, &m_down})
            if (values->size() < static_cast<size_t>(stride))
                values->resize(static_cast<size_t>(stride));
        FindAlongRow<Vector>(row, width);
    }

    /// Calls store(x, limits) with the limits of samples between the row at @p row and the next one, for the values x
    /// of columns 1 to @p width - 3 and up to a vector beyond. Rows must be passed in order.
    template <typename Vector, typename Store>
    VITRELUX_INLINE void Advance(const Value *row, int stride, int width, Store store)
    {
        constexpr int kLanes = sizeof(Vector) / sizeof(Value);
        std::swap(m_aboveUp, m_belowUp);
        std::swap(m_aboveDown, m_belowDown);
        FindAlongRow<Vector>(row + stride, width);
        for (int x = kStep; x < (width - 1) * kStep; x += kLanes) {
            const Value *at = row + x;
            Keep(AllowanceOf<Vector>(LoadVector<Vector>(at - stride), LoadVector<Vector>(at),
                                     LoadVector<Vector>(at + stride), LoadVector<Vector>(at + 2 * stride)),
                 x, &m_up, &m_down);
        }
        for (int x = kStep; x < (width - 2) * kStep; x += kLanes) {
            const Value *at = row + x;
            const Vector a = LoadVector<Vector>(at), b = LoadVector<Vector>(at + kStep),
                         c = LoadVector<Vector>(at + stride), d = LoadVector<Vector>(at + stride + kStep);
            const Vector least = Least(Least(a, b), Least(c, d)), greatest = Greatest(Greatest(a, b), Greatest(c, d));
            Vector up = Greatest(Kept<Vector>(m_aboveUp, x), Kept<Vector>(m_belowUp, x))
                + Greatest(Kept<Vector>(m_up, x), Kept<Vector>(m_up, x + kStep)); // at most 2^15 - 2 if halved
            Vector down = Greatest(Kept<Vector>(m_aboveDown, x), Kept<Vector>(m_belowDown, x))
                + Greatest(Kept<Vector>(m_down, x), Kept<Vector>(m_down, x + kStep));
            if constexpr (!kIsFloat<Vector>) {
                constexpr Value kLowest = -16384, kHighest = 16383; // halved
                up = Least<Vector>(up, kHighest - greatest);
                down = Least<Vector>(down, least - kLowest);
            }
            store(x, Limits<Vector>{least - down, greatest + up});
        }
    }

private:
    template <typename Vector> VITRELUX_INLINE static Vector Kept(const std::vector<Value> &values, int x)
    {
        return LoadVector<Vector>(values.data() + x);
    }

    template <typename Vector>
    VITRELUX_INLINE static void Keep(const Allowance<Vector> &allowance, int x, std::vector<Value> *up,
                                     std::vector<Value> *down)
    {
        std::memcpy(up->data() + x, &allowance.up, sizeof allowance.up);
        std::memcpy(down->data() + x, &allowance.down, sizeof allowance.down);
    }

    template <typename Vector> VITRELUX_INLINE void FindAlongRow(const Value *row, int width)
    {
        constexpr int kLanes = sizeof(Vector) / sizeof(Value);
        for (int x = kStep; x < (width - 2) * kStep; x += kLanes) {
            const Value *at = row + x;
            Keep(AllowanceOf<Vector>(LoadVector<Vector>(at - kStep), LoadVector<Vector>(at),
                                     LoadVector<Vector>(at + kStep), LoadVector<Vector>(at + 2 * kStep)),
                 x, &m_belowUp, &m_belowDown);
        }
    }

    std::vector<Value> m_aboveUp, m_aboveDown, m_belowUp, m_belowDown; // along rows
    std::vector<Value> m_up, m_down;                                   // along columns
};

} // namespace
