// A picture with photographic texture, so that JPEG, deflate and cache misses cost as much as with real photos.
#pragma once

#include "KImage.h"

#include <cmath>
#include <cstdint>

/// Returns the noise at lattice point (x, y) of an octave, 0 to 1.
inline float LatticeNoise(std::uint32_t x, std::uint32_t y, std::uint32_t octave)
{
    std::uint32_t h = x * 0x9E3779B1u ^ y * 0x85EBCA77u ^ octave * 0xC2B2AE3Du; // primes from xxHash
    h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
    h = (h ^ (h >> 12)) * 0x297A2D39u;
    return static_cast<float>((h ^ (h >> 15)) >> 8) * 0x1p-24F;
}

/// Interpolates LatticeNoise between lattice points 2^octave pixels apart.
inline float SmoothNoise(int x, int y, std::uint32_t octave)
{
    const auto left = static_cast<std::uint32_t>(x) >> octave, top = static_cast<std::uint32_t>(y) >> octave;
    const float scale = 1.0F / static_cast<float>(1u << octave);
    const auto ease = [scale](std::uint32_t rest) {
        const float t = static_cast<float>(rest) * scale;
        return t * t * (3.0F - 2.0F * t);
    };
    const float fx = ease(static_cast<std::uint32_t>(x) - (left << octave));
    const float fy = ease(static_cast<std::uint32_t>(y) - (top << octave));
    const float above = LatticeNoise(left, top, octave) * (1 - fx) + LatticeNoise(left + 1, top, octave) * fx;
    const float below = LatticeNoise(left, top + 1, octave) * (1 - fx) + LatticeNoise(left + 1, top + 1, octave) * fx;
    return above * (1 - fy) + below * fy;
}

/// Returns a brightness, mostly from 0 to 1: noise octaves whose weight falls with frequency, as in nature; edges where
/// coarse noise crosses a threshold; and sensor noise.
inline float PhotographAt(int x, int y)
{
    float value = 0.0F, weight = 0.30F;
    for (std::uint32_t octave = 10; octave >= 1; --octave, weight *= 0.72F)
        value += weight * (SmoothNoise(x, y, octave) - 0.5F);
    const float edge = SmoothNoise(x, y, 8) + 0.3F * SmoothNoise(x, y, 5) > 0.66F ? 0.18F : -0.05F;
    const float grain = 0.06F * (LatticeNoise(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), 0) - 0.5F);
    return 0.45F + value + edge + grain;
}

/// Fills RGB rows with samples from 0 to @p white.
template <typename Sample> void FillPhotograph(KImage *image, float white)
{
#pragma omp parallel for schedule(static)
    for (int y = 0; y < image->height(); ++y) {
        auto *row = reinterpret_cast<Sample *>(image->getData(0, y));
        for (int x = 0; x < image->width(); ++x) {
            const float value = PhotographAt(x, y), tint = SmoothNoise(x, y, 9) - 0.5F;
            const float colors[] = {value + 0.2F * tint, value, value - 0.25F * tint};
            for (int c = 0; c < 3; ++c)
                row[3 * x + c] = static_cast<Sample>(std::fmin(std::fmax(colors[c], 0.0F), 1.0F) * white);
        }
    }
}

/// Allocates and fills an RGB picture of about @p megapixels, 8 or 16 bits, 3 : 2 or, if @p portrait, 2 : 3.
inline void MakePhotograph(KImage *image, double megapixels, int bits = 8, bool portrait = false)
{
    const int shortSide = static_cast<int>(std::lround(std::sqrt(megapixels * 1e6 / 1.5))),
              longSide = shortSide * 3 / 2;
    image->AllocBitmap(portrait ? shortSide : longSide, portrait ? longSide : shortSide, GFL_RGB, bits, /*clear=*/false,
                       nullptr, 0);
    bits == 8 ? FillPhotograph<std::uint8_t>(image, 255.0F) : FillPhotograph<std::uint16_t>(image, 65535.0F);
}
