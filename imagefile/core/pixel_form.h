// The nine pixel forms that the layer delivers and accepts, and the conversion of rows between them.
#pragma once

#include "gfl.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace imagefile {

/// Interleaved pixels: 8 or 16 bits (unsigned) or 32 (float); 1 channel (gray), 3 (RGB) or 4 (RGB and straight alpha).
struct PixelForm {
    int bits = 8;
    int channels = 3;

    int BytesPerPixel() const { return bits / 8 * channels; }
    bool operator==(const PixelForm &other) const { return bits == other.bits && channels == other.channels; }
};

/// Returns GFL_GREY, GFL_RGB or GFL_RGBA for 1, 3 or 4 channels.
std::uint16_t TypeOfChannels(int channels);

/// Converts @p width pixels from @p src to @p dst, which must not overlap. Integers are scaled to the full range of the
/// target and rounded. Floats from 0 to 1 map to the full range of an integer target; values outside are clamped, and
/// NaN becomes 0. Colors become gray by the luma of ITU-R BT.601. Pixels of a source without alpha get @p alpha, 0 to
/// 255.
using RowConverter = void (*)(const void *src, void *dst, std::size_t width, std::uint8_t alpha);

/// Returns the converter from any form to any form; for the same form, a plain copy.
RowConverter ChooseConverter(const PixelForm &src, const PixelForm &dst);

/// Returns the maximum value of a sample type: 255, 65,535 or 1.0.
template <class T> constexpr T FullScale()
{
    if constexpr (std::is_floating_point_v<T>)
        return T(1);
    else
        return std::numeric_limits<T>::max();
}

/// Rounds and clamps a value given on T's scale. Floats are unchanged.
template <class T> inline T ToSample(float value)
{
    if constexpr (std::is_floating_point_v<T>)
        return value;
    else
        return value > 0.0f ? static_cast<T>((value < FullScale<T>() ? value : FullScale<T>()) + 0.5f) : T(0);
}

/// Converts one sample from one depth to another.
template <class S, class D> inline D ConvertSample(S value)
{
    if constexpr (std::is_same_v<S, D>)
        return value;
    else if constexpr (std::is_same_v<D, float>)
        return static_cast<float>(value) / FullScale<S>();
    else if constexpr (std::is_same_v<S, float>)
        return ToSample<D>(value * FullScale<D>());
    else if constexpr (sizeof(S) < sizeof(D))
        return static_cast<D>(value * 257); // maps 255 to 65,535
    else
        return static_cast<D>((value * 255u + 32767u) / 65535u); // <= 65,535 * 255 + 32,767 < 2^24
}

} // namespace imagefile
