// Copies, fills and reorders pixels and channels.
#pragma once

#include "types.h"
#include "vector_rows.h"

#include <cstring>

namespace primitives {

/// Copies rows of plain bytes.
inline Status CopyBytes(const void *src, Step srcStep, void *dst, Step dstStep, std::int64_t rowBytes, int height)
{
    if (!src || !dst)
        return Status::NullPointer;
    if (rowBytes < 1 || height < 1)
        return Status::BadSize;
    const auto *from = static_cast<const unsigned char *>(src);
    auto *to = static_cast<unsigned char *>(dst);
    if (srcStep == rowBytes && dstStep == rowBytes) // one block without gaps; a long copy bypasses the cache
        std::memcpy(to, from, static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height));
    else
        ForRows(from, srcStep, to, dstStep, {1, height},
                [rowBytes](const unsigned char *srcRow, unsigned char *dstRow) {
                    std::memcpy(dstRow, srcRow, static_cast<std::size_t>(rowBytes));
                });
    return Status::Ok;
}

template <typename T, int C> Status Copy(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    return CopyBytes(src, srcStep, dst, dstStep, RowSamples<C>(size) * std::int64_t(sizeof(T)), size.height);
}

/// Copies the first @p N of @p S interleaved channels to the first N of @p D; the target's other channels stay. To
/// start at another channel, the caller moves the pointer.
template <typename T, int S, int D, int N>
Status CopyChannels(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    static_assert(N <= S && N <= D);
    return ForRows(src, srcStep, dst, dstStep, size, [width = size.width](const T *srcRow, T *dstRow) {
        for (std::int64_t x = 0; x < width; ++x) {
            for (int c = 0; c < N; ++c)
                dstRow[x * D + c] = srcRow[x * S + c];
        }
    });
}

/// Converts gray (@p S = 1) or RGB (S = 3) to RGBA with the given alpha.
template <typename T, int S> Status CopyOpaque(const T *src, Step srcStep, T *dst, Step dstStep, Size size, T alpha)
{
    return ForRows(src, srcStep, dst, dstStep, size, [alpha, width = size.width](const T *srcRow, T *dstRow) {
        if constexpr (std::is_floating_point_v<T> && S == 3)
            CopyOpaqueFloat3(srcRow, dstRow, width, alpha);
        else
            plain::CopyOpaque<T, S>(srcRow, dstRow, width, alpha);
    });
}

/// Sets the four channels of all pixels to the elements of @p value.
template <typename T> Status Set4(const T value[4], T *dst, Step dstStep, Size size)
{
    if (!value)
        return Status::NullPointer;
    const T v0 = value[0], v1 = value[1], v2 = value[2], v3 = value[3];
    return ForRows(dst, dstStep, dst, dstStep, size, [=, width = size.width](const T *, T *dstRow) {
        for (std::int64_t x = 0; x < width; ++x) {
            dstRow[x * 4] = v0;
            dstRow[x * 4 + 1] = v1;
            dstRow[x * 4 + 2] = v2;
            dstRow[x * 4 + 3] = v3;
        }
    });
}

/// Writes @p value wherever the byte of @p mask is not 0; other pixels stay.
template <typename T> Status SetMasked(T value, T *dst, Step dstStep, Size size, const Ipp8u *mask, Step maskStep)
{
    return ForRows(mask, maskStep, dst, dstStep, size, [=, width = size.width](const Ipp8u *maskRow, T *dstRow) {
        for (std::int64_t x = 0; x < width; ++x)
            dstRow[x] = maskRow[x] ? value : dstRow[x];
    });
}

/// Copies channel order[i] of the source to channel i of the target, for the first @p N of @p C channels; the others
/// stay. An order may name a channel twice. Source and target may be the same image.
template <typename T, int C, int N>
Status SwapChannels(const T *src, Step srcStep, T *dst, Step dstStep, Size size, const int order[N])
{
    if (!order)
        return Status::NullPointer;
    int from[N];
    for (int c = 0; c < N; ++c) {
        if (order[c] < 0 || order[c] >= C)
            return Status::BadArgument;
        from[c] = order[c];
    }
    return ForRows(src, srcStep, dst, dstStep, size, [&from, width = size.width](const T *srcRow, T *dstRow) {
        for (std::int64_t x = 0; x < width; ++x) {
            T pixel[N]; // read completely before the first write, for in-place use
            for (int c = 0; c < N; ++c)
                pixel[c] = srcRow[x * C + from[c]];
            for (int c = 0; c < N; ++c)
                dstRow[x * C + c] = pixel[c];
        }
    });
}

template <typename T, int C, int N> Status SwapChannelsInPlace(T *image, Step step, Size size, const int order[N])
{
    return SwapChannels<T, C, N>(image, step, image, step, size, order);
}

} // namespace primitives
