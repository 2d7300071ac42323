// Shared by all image primitives: pixel types, steps, sizes, status values, row iteration and rounding.
//
// Rules for the whole layer:
// - Pixels are interleaved; `C` is the number of channels of a pixel. Sizes and rectangles count pixels, steps count
//   bytes from one row to the next and are 64-bit, so images beyond 2 and 4 GiB work. A step may be negative.
// - Row starts and steps are multiples of the component's size.
// - Only the pixels of the region are written, never the gap between two rows.
// - For a null pointer or a size below 1, functions return an error status and read and write nothing.
// - Functions have no state and start no threads: any thread may call any of them on rows that don't overlap.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

using Ipp8u = std::uint8_t;
using Ipp16u = std::uint16_t;
using Ipp16s = std::int16_t;
using Ipp32f = float;

namespace primitives {

enum class Status : int {
    Ok = 0,
    NullPointer = -1,
    BadSize = -2,
    BadArgument = -3,
    NoMemory = -4,
    Singular = -5, // a matrix without an inverse
};

using Step = std::int64_t;

struct Size {
    int width;
    int height;
};

struct Rect {
    int x;
    int y;
    int width;
    int height;
};

constexpr Status CheckSize(Size size)
{
    return size.width < 1 || size.height < 1 ? Status::BadSize : Status::Ok;
}

/// Returns row @p y of an image that starts at @p base.
template <typename T> T *RowAt(T *base, Step step, std::int64_t y)
{
    using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
    return reinterpret_cast<T *>(reinterpret_cast<Byte *>(base) + y * step);
}

/// Calls row(srcRow, dstRow) for each row of the region.
template <typename S, typename D, typename Row>
Status ForRows(const S *src, Step srcStep, D *dst, Step dstStep, Size size, Row row)
{
    if (!src || !dst)
        return Status::NullPointer;
    for (int y = 0; y < size.height && size.width > 0; ++y)
        row(RowAt(src, srcStep, y), RowAt(dst, dstStep, y));
    return CheckSize(size);
}

/// Calls row(aRow, bRow, dstRow) for each row of the region.
template <typename S, typename D, typename Row>
Status ForRows(const S *a, Step aStep, const S *b, Step bStep, D *dst, Step dstStep, Size size, Row row)
{
    if (!a || !b || !dst)
        return Status::NullPointer;
    for (int y = 0; y < size.height && size.width > 0; ++y)
        row(RowAt(a, aStep, y), RowAt(b, bStep, y), RowAt(dst, dstStep, y));
    return CheckSize(size);
}

/// Calls sample(i) for 0 to count - 1. Promises the compiler that the calls are independent: a target either is one of
/// the sources or doesn't overlap them. Without that, possible aliasing would prevent vectorization.
template <typename Sample> void ForSamples(std::int64_t count, Sample sample)
{
#ifndef __clang__
#pragma GCC ivdep
#endif
    for (std::int64_t i = 0; i < count; ++i)
        sample(i);
}

/// Returns the number of components in a row of @p size; 64-bit, because four channels of 2^31 pixels don't fit in an
/// int.
template <int C> constexpr std::int64_t RowSamples(Size size)
{
    return std::int64_t(C) * size.width;
}

/// Clamps @p value to the range of an unsigned type of up to 16 bits; NaN becomes 0.
template <typename D> constexpr float Limit(float value)
{
    static_assert(sizeof(D) <= 2 && std::is_unsigned_v<D>);
    constexpr float kMax = std::numeric_limits<D>::max();
    const float notBelow = value > 0.0f ? value : 0.0f;
    return notBelow < kMax ? notBelow : kMax;
}

/// Converts a computed value to a component; all such conversions use this function or Truncate. Integers are rounded
/// to nearest and clamped to the range of the type, and NaN becomes 0. Floats are unchanged.
template <typename D> constexpr D Saturate(float value)
{
    if constexpr (std::is_floating_point_v<D>) {
        return value;
    } else {
        return static_cast<D>(static_cast<int>(Limit<D>(value) + 0.5f));
    }
}

/// Like Saturate, but truncates toward zero.
template <typename D> constexpr D Truncate(float value)
{
    if constexpr (std::is_floating_point_v<D>)
        return value;
    else
        return static_cast<D>(static_cast<int>(Limit<D>(value)));
}

/// Clamps an integer to the range of a type.
template <typename D, typename V> constexpr std::enable_if_t<std::is_integral_v<V>, D> Saturate(V value)
{
    constexpr V kMin = std::numeric_limits<D>::min();
    constexpr V kMax = std::numeric_limits<D>::max();
    return static_cast<D>(value < kMin ? kMin : value > kMax ? kMax : value);
}

} // namespace primitives
