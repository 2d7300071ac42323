// Bilinear sampling of single pixels for FittedWarp, at one position or one per color, including the edges.
#pragma once

#include "FittedWarpPlaces_p.h"

#include <algorithm>

namespace {

VITRELUX_INLINE Float4 Load(const unsigned char *pixel)
{
    Float4 value;
    std::memcpy(&value, pixel, sizeof value);
    return value;
}

/// Returns premultiplied colors and alpha.
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

/// Interpolates between four pixels; @p at(right, down) returns the address of the pixel at these offsets, 0 or 1.
template <bool kAlpha, typename Pixel> VITRELUX_INLINE Float4 Mix(float fx, float fy, Pixel at)
{
    const Float4 x = Same(fx), restX = Same(1.0F - fx), y = Same(fy), restY = Same(1.0F - fy);
    const Float4 top = LoadTerm<kAlpha>(at(0, 0)) * restX + LoadTerm<kAlpha>(at(1, 0)) * x;
    const Float4 bottom = LoadTerm<kAlpha>(at(0, 1)) * restX + LoadTerm<kAlpha>(at(1, 1)) * x;
    return Finished<kAlpha>(top * restY + bottom * y);
}

template <bool kAlpha> VITRELUX_INLINE Float4 SampleHeld(const FittedWarp::Band &band, const Neighbors &at, int i)
{
    const unsigned char *corner = band.source + at.corner[i];
    return Mix<kAlpha>(at.fx[i], at.fy[i], [&](int right, int down) VITRELUX_INLINED {
        return corner + right * kPixelBytes + down * band.sourceStride;
    });
}

/// Samples near the picture's edges, which are repeated. Returns false if a source row isn't in memory.
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

/// Combines the first lane of @p red, the second of @p green and the third and fourth of @p blue in two instructions.
/// Other combinations of lanes or single values would take up to six.
VITRELUX_INLINE Float4 JoinColors(Float4 red, Float4 green, Float4 blue)
{
    return __builtin_shufflevector(__builtin_shufflevector(red, green, 0, 5, 6, 7), blue, 0, 1, 6, 7);
}

/// Combines the colors with alpha from @p green.
VITRELUX_INLINE Float4 Join(Float4 red, Float4 green, Float4 blue)
{
    return __builtin_shufflevector(JoinColors(red, green, blue), green, 0, 1, 2, 7);
}

/// Samples each color at its position; all neighbors must be in memory.
template <bool kAlpha> VITRELUX_INLINE Float4 SampleSplit(const FittedWarp::Band &band, const ColorNeighbors &at, int i)
{
    if constexpr (kAlpha)
        return Join(SampleHeld<true>(band, at[kRed], i), SampleHeld<true>(band, at[kGreen], i),
                    SampleHeld<true>(band, at[kBlue], i));
    const unsigned char *red = band.source + at[kRed].corner[i], *green = band.source + at[kGreen].corner[i],
                        *blue = band.source + at[kBlue].corner[i];
    const auto load = [&](std::int64_t step) VITRELUX_INLINED {
        return JoinColors(Load(red + step), Load(green + step), Load(blue + step));
    };
    const Float4 x = {at[kRed].fx[i], at[kGreen].fx[i], at[kBlue].fx[i], 0.0F}, restX = 1.0F - x;
    const Float4 y = {at[kRed].fy[i], at[kGreen].fy[i], at[kBlue].fy[i], 0.0F}, restY = 1.0F - y;
    const std::int64_t down = band.sourceStride;
    const Float4 top = load(0) * restX + load(kPixelBytes) * x;
    const Float4 bottom = load(down) * restX + load(down + kPixelBytes) * x;
    return Finished<false>(top * restY + bottom * y);
}

/// Samples pixel by pixel, for edges and empty pixels. Returns false if a source row isn't in memory.
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

} // namespace
