// Positions of sharp samples: pixels, and phases between them.
#pragma once

#include "FittedWarpPlaces_p.h"
#include "SharpKernel.h"

namespace {

/// Sampling positions of a block as pixels and phases.
struct SharpPlaces {
    alignas(64) std::int32_t x[kBlockPixels], y[kBlockPixels]; // pixel at or before the position; later, x is an offset
    alignas(64) std::int32_t phaseX[kBlockPixels], phaseY[kBlockPixels]; // times SharpKernel::kPadded
};

/// Converts a relative position to phases, rounded.
template <typename Floats> VITRELUX_INLINE std::int32_t InPhases(float relative)
{
    static_assert(FittedPlaces::kFar * SharpKernel::kPhases < 2147483648.0F);
    return Floor<Floats>(relative * SharpKernel::kPhases + 0.5F);
}

/// Returns 1 if the position at @p phase (times SharpKernel::kPadded) beyond pixel @p whole is outside @p length
/// pixels.
VITRELUX_INLINE int IsOutside(std::int32_t whole, std::int32_t phase, int length)
{
    constexpr int kPixel = SharpKernel::kPhases * SharpKernel::kPadded;
    constexpr auto kBorder = static_cast<std::int32_t>(CorrectionTwin::kBorderPixels * kPixel);
    const int before = int(whole < -1) | (int(whole == -1) & int(phase < kPixel - kBorder));
    return before | int(whole >= length) | (int(whole == length - 1) & int(phase > kBorder));
}

/// Clamps to at most two pixels before or one after the picture: positions beyond have the same neighbors or stay
/// empty.
VITRELUX_INLINE std::int32_t Reached(std::int32_t whole, int length)
{
    whole = whole > -2 ? whole : -2;
    return whole < length ? whole : length;
}

template <typename Floats, bool kCareful>
VITRELUX_INLINE void Split(const FittedWarp::Band &band, const Block &block, const Places &places, SharpPlaces *to,
                           unsigned char *isEmpty)
{
    for (int i = 0; i < kBlockPixels; ++i) {
        const std::int32_t x = InPhases<Floats>(places.x[i]), y = InPhases<Floats>(places.y[i]);
        to->x[i] = (x >> SharpKernel::kPhaseBits) + block.x + i;
        to->y[i] = (y >> SharpKernel::kPhaseBits) + block.y;
        to->phaseX[i] = (x & (SharpKernel::kPhases - 1)) * SharpKernel::kPadded;
        to->phaseY[i] = (y & (SharpKernel::kPhases - 1)) * SharpKernel::kPadded;
    }
    for (int i = 0; kCareful && i < kBlockPixels; ++i) {
        const int outside =
            IsOutside(to->x[i], to->phaseX[i], band.width) | IsOutside(to->y[i], to->phaseY[i], band.height);
        isEmpty[i] = static_cast<unsigned char>(isEmpty[i] | (outside & int(band.mayBeEmpty)));
        to->x[i] = Reached(to->x[i], band.width);
        to->y[i] = Reached(to->y[i], band.height);
    }
}

} // namespace
